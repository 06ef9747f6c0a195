#include "sgn_displace/options.h"

#include "common/command_line.h"
#include "common/number_ranges.h"
#include "flib/io/stop_run.h"

namespace sgn_displace {
namespace {

const tools::tool_description description{
    .name = "sgn_displace",
    .usage = "[OPTIONS] JOB.gjf",
    .purpose =
        "Makes of one Gaussian input, an excited-state job with Cartesian coordinates, the "
        "inputs of a set: JOB_ref.gjf and, for every atom and axis, JOB_01xp.gjf and "
        "JOB_01xm.gjf with the atom moved by + and - the step.",
    .rest = "Status: 0 all files were written, 2 none was.\n"};

}  // namespace

options parse_options(std::span<const std::string_view> arguments) {
    options result;
    tools::command_line app(description);
    const auto keep = [](auto& target) {
        return [&target](const std::string& value) { target = value; };
    };
    const tools::option step =
        tools::add_value(app, "--step", "LENGTH", keep(result.step),
                         "how far atoms are moved, Angstrom (" + result.step + ")");
    tools::add_value(app, "--steps", "LIST", keep(result.steps),
                     "several, like 0.01,0.02: derivatives are extrapolated from all of them");
    tools::add_value(app, "--atoms", "LIST", keep(result.atoms),
                     "only these, like 1-3,7 (all; of an ONIOM job the high layer)");
    tools::add_switch(app, "--one-sided", result.one_sided, "only + displacements");
    tools::add_value(app, "--directory", "DIR", keep(result.directory),
                     "where the files go (the working directory)");
    tools::add_switch(app, "--force", result.overwrite,
                      "overwrite files that are there; write more than 2000");
    tools::add_switch(app, "--list", result.only_list,
                      "write nothing, show the names of the files");
    tools::parsed_line line = tools::parse_line(app, arguments);
    result.shown = line.shown;
    if (result.shown) return result;
    if (line.names.size() != 1) {
        throw flib::run_error("needs one input file (usage: " + description.name + " " +
                              description.usage + ")");
    }
    result.input = line.names.front();
    if (result.steps && step.given()) {
        throw flib::run_error("--step and --steps make no sense together");
    }
    if (result.steps && result.one_sided) {
        throw flib::run_error(
            "--one-sided makes no sense with --steps: only pairs are extrapolated");
    }
    if (result.directory.empty()) throw flib::run_error("--directory needs a value");
    return result;
}

std::vector<std::size_t> parse_atom_list(std::string_view text, std::size_t natom) {
    const auto ranges = tools::parse_ranges("--atoms", text);
    const std::int32_t largest = tools::largest_in(ranges);
    if (static_cast<std::size_t>(largest) > natom) {
        throw flib::run_error("--atoms: there is no atom " + std::to_string(largest) +
                              ", the input has " + std::to_string(natom));
    }
    const std::vector<std::int32_t> atoms = tools::numbers_in(ranges, largest);
    return {atoms.begin(), atoms.end()};
}

}  // namespace sgn_displace
