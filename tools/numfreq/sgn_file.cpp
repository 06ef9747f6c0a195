#include "numfreq/sgn_file.h"

#include <string>
#include <string_view>

#include "flib/io/fixed_field.h"
#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/search/search_word.h"
#include "flib/util/units.h"

namespace numfreq {
namespace {

using flib::fixed_field;
using flib::integer_field;
using flib::scientific_field;

namespace name {
constexpr std::string_view sign = "Transden_sign";
constexpr std::string_view natom = "natom";
constexpr std::string_view nmo = "nmo";
constexpr std::string_view mi = "mi";
constexpr std::string_view ma = "ma";
constexpr std::string_view mci = "mci";
constexpr std::string_view nfc = "NFC";
constexpr std::string_view nfv = "NFV";
constexpr std::string_view maxloc = "tden_maxloc";
constexpr std::string_view maxval = "tden_maxval";
constexpr std::string_view tdip = "Corrected_tdip";
}  // namespace name

constexpr int integer_width = 20;
constexpr int center_width = 6;

std::string real_field(double value) {
    return scientific_field(value, 20, 10);
}

/// A name, blanks and "= ": 17 characters for the names of the parameter block.
std::string label(std::string_view name) {
    constexpr std::size_t name_width = 15;
    std::string text(name);
    text.resize(name_width, ' ');
    return text + "= ";
}

/// Every record but the first begins with one blank.
void write(std::int32_t fid, const std::string& text) {
    flib::write_record(fid, " " + text);
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

}  // namespace

void write_sgn_parameters(std::int32_t fid, const sgn_parameters& parameters) {
    flib::write_record(fid, "INFORMATION");
    write_count(fid, name::sign, parameters.sign);
    write_count(fid, name::natom, parameters.natom);
    write_count(fid, name::nmo, parameters.nmo);
    write_count(fid, name::mi, parameters.mi);
    write_count(fid, name::ma, parameters.ma);
    write_count(fid, name::mci, parameters.mci);
    write_count(fid, name::nfc, parameters.nfc);
    write_count(fid, name::nfv, parameters.nfv);
    write(fid, label(name::maxloc) + integer_field(parameters.tden_maxloc[0], integer_width) +
                   integer_field(parameters.tden_maxloc[1], integer_width));
    write(fid, label(name::maxval) + real_field(parameters.tden_maxval));
}

void write_sgn_body(std::int32_t fid, const sgn_body& body) {
    const auto natom = static_cast<std::int32_t>(body.nat.size());
    write(fid, "Center  Atomic  Atomic    Atomic            Coordinates (Angstroms)");
    write(fid, "Number  Symbol   NAT       mass           X           Y           Z");
    for (std::int32_t i = 1; i <= natom; ++i) {
        const auto at = static_cast<std::size_t>(i) - 1;
        std::string row =
            integer_field(i, center_width) + flib::text_field(body.symbol[at].padded(), 6) +
            integer_field(body.nat[at], 7) + fixed_field(body.mass[at], 15, 8) + "    ";
        for (const double x : body.x.column(i)) row += fixed_field(x * flib::bohr_radius, 12, 6);
        write(fid, row);
    }
    write(fid, "Ground to excited state transition electric dipole moments (Au)");
    std::string dipole = label(name::tdip);
    for (const double component : body.corrected_tdip) dipole += real_field(component);
    write(fid, dipole);
    write(fid, "Center Atomic Forces (Hartrees/Bohr)");
    for (std::int32_t i = 1; i <= natom; ++i) {
        std::string row = integer_field(i, center_width);
        for (const double force : body.frc.column(i)) row += real_field(force);
        write(fid, row);
    }
}

sgn_parameters read_sgn_parameters(std::int32_t fid) {
    sgn_parameters parameters;
    // The search only goes forward, so this is the order in which they must stand.
    read_values(fid, name::natom, parameters.natom);
    read_values(fid, name::nmo, parameters.nmo);
    read_values(fid, name::mi, parameters.mi);
    read_values(fid, name::ma, parameters.ma);
    read_values(fid, name::mci, parameters.mci);
    read_values(fid, name::nfc, parameters.nfc);
    read_values(fid, name::nfv, parameters.nfv);
    read_values(fid, name::maxloc, parameters.tden_maxloc[0], parameters.tden_maxloc[1]);
    read_values(fid, name::maxval, parameters.tden_maxval);
    return parameters;
}

}  // namespace numfreq
