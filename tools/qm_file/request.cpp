#include "qm_file/request.h"

#include <algorithm>

#include "common/command_line.h"
#include "common/outputs.h"
#include "flib/io/number.h"
#include "flib/io/stop_run.h"
#include "qm_file/probe.h"

namespace qm_file {
namespace {

constexpr const char* usage =
    "[--json=OUTPUT | --xyz] FILE...\n"
    "[--json=OUTPUT] QUANTITY FILE...\n"
    "probe ROUTINE FILE [N...]\n"
    "--help | --version";

constexpr const char* purpose =
    "Shows what each file of a quantum-chemistry program holds: the program and its version, the "
    "number of atoms, ONIOM layers, geometry, masses, forces and transition dipoles; for what it "
    "does not hold, the reason. Result files of stigruz are shown too.";

constexpr const char* after_quantities =
    R"(
Alone, coord is in Bohr, force in Hartree/Bohr (then one transition dipole per
state, atomic units), mass in u. nbasis of a Gaussian log reads a label and the
number of independent functions from standard input. Of several files each row
begins with the file's name. A file whose name is that of a quantity is given
as ./NAME.

probe shows the raw outputs of one routine, for bug reports and exact
comparisons:
)";

constexpr const char* statuses =
    R"(
Exit status: 0 if a file gave what was asked for, 1 if none did, 2 if a file
cannot be read or something in it is damaged.
)";

std::string help_rest() {
    std::string text("QUANTITY is one of\n");
    for (const named_quantity& known : named_quantities()) {
        std::string line("  ");
        line.append(known.name).resize(13, ' ');
        text.append(line).append(known.in_words).append("\n");
    }
    return text.append(after_quantities).append(probe_usage()).append(statuses);
}

std::int32_t integer_of(const std::string& text) {
    std::int32_t value = 0;
    if (flib::parse_integer(text, value) == flib::number_error::none) return value;
    throw flib::run_error("'" + flib::printable(text) + "' is not an integer (see --help)");
}

const named_quantity* quantity_of(std::string_view name) {
    const auto all = named_quantities();
    const auto found = std::ranges::find(all, name, &named_quantity::name);
    return found == all.end() ? nullptr : &*found;
}

}  // namespace

std::span<const named_quantity> named_quantities() {
    using flib::quantity;
    static const std::vector<named_quantity> all{
        {"type", "file type", {quantity::kind}},
        {"natom", "atom count", {quantity::natom}},
        {"nat", "atomic numbers", {quantity::numbers}},
        {"coord", "geometry", {quantity::geometry}},
        {"mass", "masses", {quantity::masses}},
        {"force", "forces and transition dipoles", {quantity::forces, quantity::dipoles}},
        {"nbasis", "basis", {quantity::basis}},
        {"nci", "excitation space", {quantity::excitations}},
        {"oniom", "ONIOM layers", {quantity::oniom}},
        {"dump", "dumped record, with the sums over its amplitudes", {quantity::dump}},
        {"moments",
         "energies and transition moments of a formatted checkpoint",
         {quantity::moments}},
    };
    return all;
}

request request_of(std::span<const std::string_view> arguments) {
    request asked;
    bool overwrite = false;
    tools::command_line app({"qm_file", usage, purpose, help_rest()});
    const tools::option as_json = tools::add_output(
        app, "--json", asked.json,
        "write JSON, one array with an object per file, all numbers in full; to standard output "
        "if FILE is -");
    tools::add_switch(app, "--xyz", asked.xyz, "the geometry in XYZ format (Angstrom)")
        .excludes(as_json);
    tools::add_switch(app, "--force", overwrite, "overwrite a file that these tools did not write");
    tools::parsed_line line = tools::parse_line(app, arguments);
    if (line.shown) {
        asked.shown = line.shown;
        return asked;
    }

    std::vector<std::string>& names = line.names;
    if (!names.empty() && names.front() == "probe") {
        if (asked.json || asked.xyz) throw flib::run_error("probe has one form only (see --help)");
        if (names.size() < 3)
            throw flib::run_error("probe needs a routine and a file (see --help)");
        asked.routine = names[1];
        asked.files = {names[2]};
        std::transform(names.begin() + 3, names.end(), std::back_inserter(asked.inputs),
                       integer_of);
        return asked;
    }
    if (!names.empty()) asked.only = quantity_of(names.front());
    if (asked.only != nullptr) names.erase(names.begin());
    if (asked.only != nullptr && asked.xyz) {
        throw flib::run_error("--xyz shows whole geometries only (see --help)");
    }
    // Before that: the file that is missing may have been taken for the output.
    if (asked.json) {
        if (quantity_of(*asked.json) != nullptr) {
            throw flib::run_error(
                "--json needs the name of a file, or '-' for standard output, "
                "before the quantity " +
                *asked.json);
        }
        const tools::planned_output output{"--json", *asked.json, sgn::output_kind::json};
        tools::require_harmless({&output, 1}, names, overwrite);
    }
    if (names.empty()) throw flib::run_error("no file is given (see --help)");
    asked.files = std::move(names);
    return asked;
}

}  // namespace qm_file
