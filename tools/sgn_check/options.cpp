#include "sgn_check/options.h"

#include <utility>

#include "common/command_line.h"
#include "common/outputs.h"
#include "flib/io/stop_run.h"

namespace sgn_check {

options parse_options(std::span<const std::string_view> arguments) {
    constexpr const char* usage = "[OPTIONS] REFERENCE.sgn FILE.sgn...";
    options result;
    sgn::thresholds& limits = result.limits;
    tools::command_line app(
        {.name = "sgn_check",
         .usage = usage,
         .purpose = "Tells which result files of stigruz deserve doubt: those whose sign, "
                    "geometry or transition dipole does not fit the reference's, or the rest "
                    "of the set.",
         .rest = "Status: 0 all fine, 1 something deserves doubt, 2 a file cannot be read.\n"});
    constexpr const char* doubt = "Where doubt begins";
    const auto add_limit = [&](const char* name, double& limit, const char* meaning) {
        tools::add_number(app, name, limit, 0, meaning).group(doubt);
    };
    add_limit("--min-ratio", limits.min_ratio, "smallest element, against the reference's");
    add_limit("--max-rotation", limits.max_rotation,
              "rotation that leaves the sign alone, degrees");
    add_limit("--max-turn", limits.max_turn, "largest turn of the dipole, degrees");
    add_limit("--min-dipole", limits.min_dipole, "smallest dipole whose turn is judged, au");
    add_limit("--max-asymmetry", limits.max_asymmetry, "largest |d(+) + d(-) - 2 d(0)|, au");

    bool no_pairs = false;
    bool no_sum_rules = false;
    tools::add_switch(app, "--no-pairs", no_pairs, "displacements do not come in +- pairs");
    tools::add_switch(app, "--no-sum-rules", no_sum_rules,
                      "do not judge the sum rules: outer field, embedding charges, link atoms");
    tools::add_output(app, "--json", result.json, "write JSON, to standard output if FILE is -");
    tools::add_switch(app, "--csv", result.csv, "write CSV instead of the table");
    tools::add_switch(app, "--force", result.overwrite,
                      "overwrite a file that these tools did not write");

    tools::parsed_line line = tools::parse_line(app, arguments);
    result.shown = std::move(line.shown);
    if (result.shown) return result;
    std::vector<tools::planned_output> outputs;
    if (result.csv) outputs.push_back({"--csv", "-", {}});
    if (result.json) outputs.push_back({"--json", *result.json, sgn::output_kind::json});
    tools::require_harmless(outputs, line.names, result.overwrite);
    if (line.names.size() < 2) {
        throw flib::run_error("needs a reference and files to check (usage: sgn_check " +
                              std::string(usage) + ")");
    }
    limits.pairs = !no_pairs;
    limits.sum_rules = !no_sum_rules;
    result.reference = std::move(line.names.front());
    result.files.assign(std::next(line.names.begin()), line.names.end());
    return result;
}

}  // namespace sgn_check
