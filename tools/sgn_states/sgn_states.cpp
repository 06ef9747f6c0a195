// sgn_states REFERENCE.fchk JOB.fchk...: every state of a reference, followed into other jobs.

#include <unistd.h>

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "common/output_file.h"
#include "common/outputs.h"
#include "common/program.h"
#include "common/progress.h"
#include "common/terminal.h"
#include "flib/io/atomic_file.h"
#include "flib/io/stop_run.h"
#include "flib/text/fixed_text.h"
#include "flib/util/file.h"
#include "sgn/states/follow_jobs.h"
#include "sgn/states/state_file.h"
#include "sgn_states/options.h"
#include "sgn_states/report.h"

namespace {

std::vector<std::int32_t> wanted_states(const sgn_states::options& how, const sgn::job& reference) {
    const std::int32_t known = reference.states;
    if (how.states.empty()) return tools::numbers_in({{1, known}}, known);
    if (const std::int32_t state = tools::largest_in(how.states); state > known) {
        throw flib::run_error("--states: there is no state " + std::to_string(state) + ", " +
                              flib::printable(reference.files.checkpoint) + " has " +
                              std::to_string(known));
    }
    return tools::numbers_in(how.states, known);
}

/// Result files of states must not take the place of anything that would be missed. What killed
/// runs have left of them is removed.
void prepare_places(const sgn_states::options& how, const sgn::reference_set& reference) {
    std::vector<tools::planned_output> outputs = outputs_of(how);
    std::set<std::string> names{reference.reference.files.name};
    for (const std::string& job : how.jobs) names.insert(flib::name_main(job));
    for (const std::string& name : names) {
        for (const sgn::reference_state& state : reference.states) {
            outputs.push_back({"--write", sgn::state_file_name(name, state.state),
                               sgn::output_kind::result_file});
        }
    }
    tools::require_harmless(outputs, inputs_of(how), how.overwrite);
    std::set<std::string_view> files;
    for (const tools::planned_output& each : outputs) files.insert(each.file);
    flib::remove_left_over(".", [&](std::string_view name) { return files.contains(name); });
}

sgn_states::set_result follow_all(const sgn_states::options& how) {
    sgn::job reference = sgn::read_job(how.reference);
    take_full_coordinates(reference);
    const std::vector<std::int32_t> wanted = wanted_states(how, reference);
    sgn_states::set_result result{.reference = prepare(std::move(reference), wanted)};
    if (how.follow.write) prepare_places(how, result.reference);
    tools::progress progress(STDERR_FILENO, how.jobs.size());
    const auto tell = [&](std::size_t done, std::size_t) { progress.at(done, "jobs done:"); };
    result.jobs = follow_jobs(result.reference, how.jobs, how.follow, tell);
    if (how.follow.write) {
        const std::string reason = why_not_full_digits(result.reference, result.jobs);
        if (!reason.empty()) {
            tools::complain("sgn_states", reason + "; the dipoles are those of the logs");
        }
    }
    return result;
}

int follow_states(std::span<const std::string_view> arguments) {
    const sgn_states::options how = sgn_states::parse_options(arguments);
    if (how.shown) {
        tools::show(*how.shown);
        return tools::exit_status::fine;
    }
    const sgn_states::set_result result = follow_all(how);
    for (const sgn::job_result& each : result.jobs) {
        if (each.failure) tools::complain("sgn_states", each.reason());
    }
    if (how.csv) {
        tools::show(sgn_states::csv(result));
    } else if (how.json != "-") {
        tools::show(sgn_states::table(result, how, tools::terminal_at(STDOUT_FILENO)));
    }
    if (how.json) tools::write_result(*how.json, sgn_states::json(result, how));
    return sgn_states::status_of(result);
}

}  // namespace

namespace sgn_states {

int run_program(int argc, char** argv) {
    return tools::run_tool("sgn_states", argc, argv, follow_states);
}

}  // namespace sgn_states
