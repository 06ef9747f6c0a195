#include "qm_file/probe.h"

#include <bit>
#include <vector>

#include "flib/excited/qm_file_ci_xpy.h"
#include "flib/excited/qm_file_mo_coeff_nbasis_nbsuse.h"
#include "flib/excited/qm_file_nbasis_nbsuse.h"
#include "flib/excited/qm_file_nci.h"
#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "flib/qm_file/qm_file_coord.h"
#include "flib/qm_file/qm_file_force_tdip.h"
#include "flib/qm_file/qm_file_mass.h"
#include "flib/qm_file/qm_file_nat.h"
#include "flib/qm_file/qm_file_natom.h"
#include "flib/qm_file/qm_file_oniom.h"
#include "flib/qm_file/qm_file_type.h"
#include "flib/text/string.h"
#include "flib/util/gjf.h"

namespace qm_file {
namespace {

using inputs_of = std::span<const std::int32_t>;

constexpr std::int32_t preset_integer = -7;
constexpr double preset_real = -7.0;

/// The lines of a probe.
class value_lines {
  public:
    void add(std::string_view name, std::int32_t value) { line(name, std::to_string(value)); }
    void add_logical(std::string_view name, bool value) { line(name, value ? "T" : "F"); }
    void add(std::string_view name, std::string_view value) {
        line(name, std::string(1, '"').append(flib::trim_right(value)).append("\""));
    }
    void add(std::string_view name, double value) {
        const auto bits = std::bit_cast<std::uint64_t>(value);
        line(name,
             flib::significant(value, 17) + ' ' + flib::strlowcase(flib::hexadecimal(bits, 16)));
    }

    /// An array in storage order, with the indices that its `extents` give.
    template <class Value>
    void add_array(std::string_view name, const std::vector<Value>& values, inputs_of extents) {
        std::vector<std::int32_t> index(extents.size(), 1);
        for (const Value& value : values) {
            std::string indexed(name);
            for (const std::int32_t i : index) indexed.append(" ").append(std::to_string(i));
            add(indexed, value);
            for (std::size_t k = 0; k < index.size() && ++index[k] > extents[k]; ++k) index[k] = 1;
        }
    }

    std::string text() const { return text_; }

  private:
    void line(std::string_view name, std::string_view value) {
        text_.append(name).append(" = ").append(value).append("\n");
    }

    std::string text_;
};

std::size_t element_count(inputs_of extents) {
    std::size_t count = 1;
    for (const std::int32_t extent : extents) {
        count *= static_cast<std::size_t>(std::max(extent, 0));
    }
    return count;
}

/// An array preset and shown with the same extents.
template <class Value>
struct output_array {
    output_array(std::string_view its_name, std::vector<std::int32_t> its_extents, Value preset)
        : name(its_name), extents(std::move(its_extents)), values(element_count(extents), preset) {}

    flib::matrix_view<Value> matrix() { return {values.data(), extents[0], extents[1]}; }
    void show(value_lines& lines) const { lines.add_array(name, values, extents); }

    std::string_view name;
    std::vector<std::int32_t> extents;
    std::vector<Value> values;
};

using reals = output_array<double>;
using integers = output_array<std::int32_t>;

/// Integer outputs by name, all preset.
struct integer_outputs {
    explicit integer_outputs(std::vector<std::string_view> its_names)
        : names(std::move(its_names)), values(names.size(), preset_integer) {}
    std::int32_t& operator[](std::size_t i) { return values[i]; }
    void show(value_lines& lines) const {
        for (std::size_t i = 0; i < names.size(); ++i) lines.add(names[i], values[i]);
    }

    std::vector<std::string_view> names;
    std::vector<std::int32_t> values;
};

void probe_type(std::string_view file, inputs_of, std::int32_t& info, value_lines& lines) {
    flib::line_buffer file_type;
    flib::line_buffer version;
    flib::qm_file_type(file, file_type, version, info);
    lines.add("file_type", file_type.padded());
    lines.add("version", version.padded());
}

void probe_natom(std::string_view file, inputs_of, std::int32_t& info, value_lines& lines) {
    integer_outputs out({"natom"});
    flib::qm_file_natom(file, out[0], info);
    out.show(lines);
}

void probe_nat(std::string_view file, inputs_of n, std::int32_t& info, value_lines& lines) {
    integers nat("nat", {n[0]}, preset_integer);
    flib::qm_file_nat(file, n[0], nat.values, info);
    nat.show(lines);
}

void probe_coord(std::string_view file, inputs_of n, std::int32_t& info, value_lines& lines) {
    reals x("x", {3, n[0]}, preset_real);
    flib::qm_file_coord(file, n[0], x.matrix(), info);
    x.show(lines);
}

void probe_mass(std::string_view file, inputs_of n, std::int32_t& info, value_lines& lines) {
    reals mass("mass", {n[0]}, preset_real);
    flib::qm_file_mass(file, n[0], mass.values, info);
    mass.show(lines);
}

void probe_force(std::string_view file, inputs_of n, std::int32_t& info, value_lines& lines) {
    reals force("force", {3, n[0]}, preset_real);
    reals tdip("tdip", {3, n[1]}, preset_real);
    flib::qm_file_force_tdip(file, n[0], n[1], force.matrix(), tdip.matrix(), info);
    force.show(lines);
    tdip.show(lines);
}

void probe_ifoniom(std::string_view file, inputs_of, std::int32_t& info, value_lines& lines) {
    bool ifoniom = false;
    flib::qm_file_ifoniom(file, ifoniom, info);
    lines.add_logical("ifoniom", ifoniom);
}

void probe_oniomcount(std::string_view file, inputs_of, std::int32_t& info, value_lines& lines) {
    integer_outputs out({"nqm", "nqmmm"});
    flib::qm_file_natom_oniom_qm(file, out[0], out[1], info);
    out.show(lines);
}

void probe_oniomindex(std::string_view file, inputs_of n, std::int32_t& info, value_lines& lines) {
    std::int32_t nqmmm = n[1];
    integers idx("idx", {n[0]}, preset_integer);
    flib::qm_file_oniom_index(file, n[0], nqmmm, idx.values, info);
    lines.add("nqmmm", nqmmm);
    idx.show(lines);
}

void probe_nbasis(std::string_view file, inputs_of, std::int32_t& info, value_lines& lines) {
    integer_outputs out({"na", "nb", "nbasis", "nbsuse"});
    flib::qm_file_nbasis_nbsuse(file, out[0], out[1], out[2], out[3], info);
    out.show(lines);
}

void probe_mo(std::string_view file, inputs_of n, std::int32_t& info, value_lines& lines) {
    reals mo("mo", {n[1], n[0]}, preset_real);
    flib::qm_file_mo_coeff_nbasis_nbsuse(file, n[0], n[1], mo.matrix(), info);
    mo.show(lines);
}

void probe_nci(std::string_view file, inputs_of, std::int32_t& info, value_lines& lines) {
    integer_outputs out({"ni", "na", "nci", "nae", "nfc", "nfv"});
    flib::qm_file_nci(file, out[0], out[1], out[2], out[3], out[4], out[5], info);
    out.show(lines);
}

void probe_xpy(std::string_view file, inputs_of n, std::int32_t& info, value_lines& lines) {
    reals xpy("xpy", {n[1], n[0], 2, n[2]}, preset_real);
    flib::qm_file_ci_xpy(file, n[0], n[1], n[2], xpy.values, info);
    xpy.show(lines);
}

void probe_gjf(std::string_view file, inputs_of, std::int32_t& info, value_lines& lines) {
    integer_outputs out({"route", "title", "charge", "atom", "natom"});
    flib::get_gjf_route_linenumber(file, out[0]);
    flib::get_gjf_title_linenumber(file, out[1]);
    flib::get_gjf_charge_linenumber(file, out[2]);
    flib::get_gjf_atom_linenumber(file, out[3]);
    flib::get_gjf_natom(file, out[4]);
    out.show(lines);
    info = preset_integer;  // these have none
}

struct probed_routine {
    std::string_view name;
    std::size_t inputs;
    std::string_view input_names;
    void (*call)(std::string_view file, inputs_of n, std::int32_t& info, value_lines& lines);
};

constexpr probed_routine routines[] = {
    {"type", 0, "", probe_type},
    {"natom", 0, "", probe_natom},
    {"nat", 1, " NATOM", probe_nat},
    {"coord", 1, " NATOM", probe_coord},
    {"mass", 1, " NATOM", probe_mass},
    {"force", 2, " NATOM NS", probe_force},
    {"ifoniom", 0, "", probe_ifoniom},
    {"oniomcount", 0, "", probe_oniomcount},
    {"oniomindex", 2, " NQM NQMMM", probe_oniomindex},
    {"nbasis", 0, "", probe_nbasis},
    {"mo", 2, " NBASIS NBSUSE", probe_mo},
    {"nci", 0, "", probe_nci},
    {"xpy", 3, " NI NA NCI", probe_xpy},
    {"gjf", 0, "", probe_gjf},
};

}  // namespace

std::string probe_usage() {
    std::string text;
    for (const probed_routine& routine : routines) {
        text.append("  qm_file probe ").append(routine.name).append(" FILE");
        text.append(routine.input_names).append("\n");
    }
    return text;
}

std::string probe(std::string_view routine, std::string_view file, inputs_of inputs) {
    for (const probed_routine& known : routines) {
        if (known.name != routine) continue;
        if (known.inputs != inputs.size()) {
            throw flib::run_error("probe " + std::string(routine) + " takes FILE" +
                                  std::string(known.input_names) + " (see --help)");
        }
        std::int32_t info = preset_integer;
        value_lines lines;
        known.call(file, inputs, info, lines);
        if (routine != "gjf") lines.add("info", info);
        return lines.text();
    }
    throw flib::run_error("probe does not know the routine '" + flib::printable(routine) +
                          "' (see --help)");
}

}  // namespace qm_file
