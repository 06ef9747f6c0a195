#include "sgn_states/options.h"

#include <charconv>
#include <utility>

#include "common/command_line.h"
#include "flib/io/stop_run.h"
#include "flib/util/file.h"
#include "sgn/job/job_files.h"

namespace sgn_states {
namespace {

std::int32_t workers_of(const std::string& text) {
    std::int32_t count = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, count);
    if (read.ec == std::errc{} && read.ptr == end && count >= 1) return count;
    throw flib::run_error("--jobs takes a number, 1 or above, not '" + flib::printable(text) + "'");
}

}  // namespace

std::vector<std::string> inputs_of(const options& of) {
    std::vector<std::string> files;
    const auto add = [&](const std::string& checkpoint) {
        const std::string name = flib::name_main(checkpoint);
        files.push_back(checkpoint);
        files.push_back(name + std::string(sgn::suffix::log));
        files.push_back(name + std::string(sgn::suffix::amplitudes));
    };
    add(of.reference);
    for (const std::string& job : of.jobs) add(job);
    return files;
}

std::vector<tools::planned_output> outputs_of(const options& of) {
    std::vector<tools::planned_output> outputs;
    if (of.csv) outputs.push_back({"--csv", "-", {}});
    if (of.json) outputs.push_back({"--json", *of.json, sgn::output_kind::json});
    return outputs;
}

options parse_options(std::span<const std::string_view> arguments) {
    constexpr const char* usage = "[OPTIONS] REFERENCE.fchk JOB.fchk...";
    options result;
    tools::command_line app(
        {.name = "sgn_states",
         .usage = usage,
         .purpose = "Follows every excited state of a reference job into other jobs: which "
                    "root continues it, with which overlap and which sign of the transition "
                    "dipole. NAME.log and NAME.cis of each job are in the working directory.",
         .rest = "Forces are those of the log: they belong to the state that the job was run "
                 "for.\n\n"
                 "Status: 0 all states the same and clear, 1 something deserves doubt, 2 a "
                 "job cannot\nbe read.\n"});
    constexpr const char* doubt = "Where doubt begins";
    tools::add_number(app, "--mixed-below", result.follow.limits.mixed_below, 0,
                      "smallest squared overlap of a clear state")
        .group(doubt);
    tools::add_number(app, "--lost-below", result.follow.limits.lost_below, 0,
                      "smallest squared overlap of a state that is not lost")
        .group(doubt);
    tools::add_value(
        app, "--states", "LIST",
        [&](const std::string& list) { result.states = tools::parse_ranges("--states", list); },
        "states of the reference, such as 1-3,5 (all)");
    tools::add_switch(app, "--write", result.follow.write,
                      "write the result file NAME_sK.sgn of every state K and job");
    tools::add_output(app, "--json", result.json, "write JSON, to standard output if FILE is -");
    tools::add_switch(app, "--csv", result.csv, "write CSV instead of the table");
    tools::add_switch(app, "--force", result.overwrite,
                      "overwrite files that these tools did not write");
    tools::add_value(
        app, "-j,--jobs", "N",
        [&](const std::string& text) { result.follow.workers = workers_of(text); },
        "jobs at a time (1)");

    tools::parsed_line line = tools::parse_line(app, arguments);
    result.shown = std::move(line.shown);
    if (result.shown) return result;
    // Before the names are counted: one may have been taken for that of an output.
    if (!line.names.empty()) result.reference = line.names.front();
    for (std::size_t i = 1; i < line.names.size(); ++i) result.jobs.push_back(line.names[i]);
    tools::require_harmless(outputs_of(result), inputs_of(result), result.overwrite);
    if (result.jobs.empty()) {
        throw flib::run_error("needs a reference and jobs to follow it into (usage: sgn_states " +
                              std::string(usage) + ")");
    }
    return result;
}

}  // namespace sgn_states
