// sgn_states REFERENCE.fchk JOB.fchk...: every state of a reference, followed into other jobs.

#include <unistd.h>

#include <string>

#include "common/output_file.h"
#include "common/program.h"
#include "common/terminal.h"
#include "sgn_states/options.h"
#include "sgn_states/progress.h"
#include "sgn_states/report.h"
#include "sgn_states/run.h"

namespace {

int follow_states(std::span<const std::string_view> arguments) {
    const sgn_states::options how = sgn_states::parse_options(arguments);
    if (how.shown) {
        tools::show(*how.shown);
        return tools::exit_status::fine;
    }
    const sgn_states::set_result result = sgn_states::run(how, sgn_states::progress_line());
    for (const sgn_states::job_result& each : result.jobs) {
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

int main(int argc, char** argv) {
    return tools::run_tool("sgn_states", argc, argv, follow_states);
}
