#include "sgn/result/sgn_file.h"

#include <string>
#include <string_view>

#include "flib/io/fixed_field.h"
#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/search/search_word.h"
#include "flib/util/units.h"

namespace sgn {
namespace {

using flib::fixed_field;
using flib::integer_field;
using flib::scientific_field;

namespace name {
constexpr std::string_view sign = "Transden_sign";
constexpr std::string_view maxloc = "tden_maxloc";
constexpr std::string_view maxval = "tden_maxval";
constexpr std::string_view tdip = "Corrected_tdip";
}  // namespace name

/// Records that hold nothing but a text.
namespace heading {
constexpr std::string_view parameters = "INFORMATION";
constexpr std::string_view geometry_above =
    "Center  Atomic  Atomic    Atomic            Coordinates (Angstroms)";
constexpr std::string_view geometry =
    "Number  Symbol   NAT       mass           X           Y           Z";
constexpr std::string_view dipole =
    "Ground to excited state transition electric dipole moments (Au)";
constexpr std::string_view forces = "Center Atomic Forces (Hartrees/Bohr)";
}  // namespace heading

constexpr int integer_width = 20;
constexpr int center_width = 6;
constexpr int symbol_width = 6;
constexpr int nat_width = 7;
constexpr int mass_width = 15;
constexpr std::string_view mass_gap = "    ";
constexpr int coordinate_width = 12;
constexpr int real_width = 20;

std::string real_field(double value) {
    return scientific_field(value, real_width, 10);
}

constexpr int name_width = 15;

/// A name, blanks and "= ": 17 characters for the names of the parameter block.
std::string label(std::string_view name) {
    std::string text(name);
    text.resize(std::size_t{name_width}, ' ');
    return text + "= ";
}

/// Every record but the first begins with one blank.
void write(std::int32_t fid, std::string_view text) {
    flib::write_record(fid, std::string(" ").append(text));
}

void write_count(std::int32_t fid, std::string_view name, std::int32_t value) {
    write(fid, label(name) + integer_field(value, integer_width));
}

/// Finds the record `name` and takes its values, after the name and the "=".
template <class... Values>
void read_values(std::int32_t fid, std::string_view name, Values&... values) {
    flib::line_buffer line;
    if (!flib::search_word_del_space(fid, name, line)) flib::miss_keyword(name);
    flib::read_items(flib::held_record{fid, line.padded()}, flib::discard{2}, values...);
}

/// An error at the record read last.
[[noreturn]] void fail(std::int32_t fid, std::string_view message) {
    throw flib::error_at_last_record(fid, message);
}

/// Reads the record that holds `text` and nothing else.
void require_heading(std::int32_t fid, std::string_view text) {
    flib::line_buffer line;
    flib::require_record(fid, line);
    if (flib::trim_left(line.trimmed()) != text) fail(fid, "expected " + flib::quoted(text));
}

/// Reads the next record, which must reach to its last column: a number that was cut short there
/// would still be one.
flib::line_buffer whole_record(std::int32_t fid, int columns) {
    flib::line_buffer line;
    flib::require_record(fid, line);
    if (line.trimmed().size() < static_cast<std::size_t>(columns))
        fail(fid, "the line is cut short");
    return line;
}

/// Reads the record of atom `i`, its number in front.
template <class... Values>
void read_atom(std::int32_t fid, std::int32_t i, int columns, Values&&... values) {
    const flib::line_buffer line = whole_record(fid, 1 + columns);
    std::int32_t number = 0;
    flib::read_items(flib::held_record{fid, line.padded()}, number, values...);
    if (number != i) fail(fid, "expected atom " + std::to_string(i));
}

sgn_parameters read_whole_parameters(std::int32_t fid) {
    std::int32_t sign = 0;
    read_values(fid, name::sign, sign);
    if (sign < -1 || sign > 1) fail(fid, "expected a sign: 1, -1 or 0");
    sgn_parameters parameters = read_sgn_parameters(fid);
    parameters.sign = sign;
    return parameters;
}

void read_body(std::int32_t fid, sgn_contents& contents) {
    constexpr int geometry_width = center_width + symbol_width + nat_width + mass_width +
                                   static_cast<int>(mass_gap.size()) + 3 * coordinate_width;
    const std::int32_t natom = contents.parameters.natom;
    require_heading(fid, heading::geometry_above);
    require_heading(fid, heading::geometry);
    // The arrays grow with what is really there, whatever natom says.
    for (std::int32_t i = 1; i <= natom; ++i) {
        auto& x = contents.x.emplace_back();
        read_atom(fid, i, geometry_width, contents.symbol.emplace_back(),
                  contents.nat.emplace_back(), contents.mass.emplace_back(), std::span<double>(x));
    }
    require_heading(fid, heading::dipole);
    const flib::line_buffer dipole = whole_record(fid, 1 + name_width + 2 + 3 * real_width);
    flib::line_buffer found;
    flib::read_items(flib::held_record{fid, dipole.padded()}, found, flib::discard{1},
                     std::span<double>(contents.corrected_tdip));
    if (!(found == name::tdip)) fail(fid, "expected " + flib::quoted(name::tdip));
    require_heading(fid, heading::forces);
    for (std::int32_t i = 1; i <= natom; ++i) {
        auto& force = contents.frc.emplace_back();
        read_atom(fid, i, center_width + 3 * real_width, std::span<double>(force));
    }
    flib::line_buffer rest;
    while (flib::read_record(fid, rest)) {
        if (!rest.trimmed().empty()) fail(fid, "there is more here than a result file holds");
    }
}

}  // namespace

void write_sgn_parameters(std::int32_t fid, const sgn_parameters& parameters) {
    flib::write_record(fid, heading::parameters);
    write_count(fid, name::sign, parameters.sign);
    for (const auto& [name, value] : sgn_counts) write_count(fid, name, parameters.*value);
    write(fid, label(name::maxloc) + integer_field(parameters.tden_maxloc[0], integer_width) +
                   integer_field(parameters.tden_maxloc[1], integer_width));
    write(fid, label(name::maxval) + real_field(parameters.tden_maxval));
}

void write_sgn_body(std::int32_t fid, const sgn_body& body) {
    const auto natom = static_cast<std::int32_t>(body.nat.size());
    const auto require = [&](std::string_view what, std::size_t found, std::int32_t expected) {
        if (found == static_cast<std::size_t>(expected)) return;
        throw flib::run_error("the result cannot be written: there are " + std::to_string(found) +
                              " " + std::string(what) + " instead of " + std::to_string(expected));
    };
    require("symbols", body.symbol.size(), natom);
    require("masses", body.mass.size(), natom);
    require("coordinates", body.x.all().size(), 3 * natom);
    require("forces", body.frc.all().size(), 3 * natom);
    for (const auto& vectors : {body.x, body.frc}) {
        if (natom > 0) require("components", static_cast<std::size_t>(vectors.rows()), 3);
    }
    write(fid, heading::geometry_above);
    write(fid, heading::geometry);
    for (std::int32_t i = 1; i <= natom; ++i) {
        const auto at = static_cast<std::size_t>(i) - 1;
        std::string row = integer_field(i, center_width);
        row += flib::text_field(body.symbol[at].padded(), symbol_width);
        row += integer_field(body.nat[at], nat_width);
        row += fixed_field(body.mass[at], mass_width, 8);
        row += mass_gap;
        for (const double x : body.x.column(i))
            row += fixed_field(x * flib::bohr_radius, coordinate_width, 6);
        write(fid, row);
    }
    write(fid, heading::dipole);
    std::string dipole = label(name::tdip);
    for (const double component : body.corrected_tdip) dipole += real_field(component);
    write(fid, dipole);
    write(fid, heading::forces);
    for (std::int32_t i = 1; i <= natom; ++i) {
        std::string row = integer_field(i, center_width);
        for (const double force : body.frc.column(i)) row += real_field(force);
        write(fid, row);
    }
}

sgn_parameters read_sgn_parameters(std::int32_t fid) {
    sgn_parameters parameters;
    // The search only goes forward, so they must stand in this order.
    for (const auto& [name, value] : sgn_counts) read_values(fid, name, parameters.*value);
    read_values(fid, name::maxloc, parameters.tden_maxloc[0], parameters.tden_maxloc[1]);
    read_values(fid, name::maxval, parameters.tden_maxval);
    return parameters;
}

namespace {

bool begins_as_result(std::int32_t fid) {
    flib::line_buffer first;
    return flib::read_record(fid, first) && first == heading::parameters;
}

}  // namespace

bool is_sgn_file(std::string_view fname) {
    return begins_as_result(flib::input_unit(fname));
}

sgn_contents read_sgn_file(std::string_view fname) {
    const flib::input_unit fid(fname);
    if (!begins_as_result(fid)) {
        throw flib::io_error(
            flib::trim_right(fname), 0,
            "is not a result file: it does not begin with " + flib::quoted(heading::parameters));
    }
    sgn_contents contents;
    try {
        contents.parameters = read_whole_parameters(fid);
    } catch (const flib::stop_run& stop) {
        throw flib::io_error(flib::trim_right(fname), 0, stop.what());
    }
    read_body(fid, contents);
    return contents;
}

}  // namespace sgn
