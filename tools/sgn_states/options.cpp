#include "sgn_states/options.h"

#include <charconv>
#include <iterator>
#include <utility>

#include "common/command_line.h"
#include "flib/io/stop_run.h"

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
    tools::add_file(app, "--json", result.json, "write JSON, to standard output if FILE is -");
    tools::add_switch(app, "--csv", result.csv, "write CSV instead of the table");
    tools::add_value(
        app, "-j,--jobs", "N",
        [&](const std::string& text) { result.follow.workers = workers_of(text); },
        "jobs at a time (1)");

    tools::parsed_line line = tools::parse_line(app, arguments);
    result.shown = std::move(line.shown);
    if (result.shown) return result;
    if (line.names.size() < 2) {
        throw flib::run_error("needs a reference and jobs to follow it into (usage: sgn_states " +
                              std::string(usage) + ")");
    }
    if (result.csv && result.json == "-") {
        throw flib::run_error("--csv and --json=- both write to standard output");
    }
    result.reference = std::move(line.names.front());
    result.jobs.assign(std::next(line.names.begin()), line.names.end());
    return result;
}

}  // namespace sgn_states
