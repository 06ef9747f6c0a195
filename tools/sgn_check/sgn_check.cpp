// sgn_check REFERENCE.sgn FILE.sgn...: which signs of a set of result files deserve doubt.

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "common/version.h"
#include "common/write_out.h"
#include "flib/io/stop_run.h"
#include "sgn_check/check.h"
#include "sgn_check/options.h"
#include "sgn_check/report.h"

namespace {

namespace exit_status {
constexpr int all_fine = 0;
constexpr int doubtful = 1;
constexpr int failed = 2;
}  // namespace exit_status

/// There is nobody to tell if this fails.
void complain(std::string_view reason) {
    (void)tools::write_out(STDERR_FILENO, std::string("sgn_check: ").append(reason).append("\n"));
}

void show(std::string_view text) {
    if (tools::write_out(STDOUT_FILENO, text)) return;
    throw flib::io_error("standard output", 0, flib::errno_text(errno));
}

bool wants_colour() {
    const char* refusal = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) == 1 && (refusal == nullptr || *refusal == '\0') &&
           terminal != nullptr && std::string_view(terminal) != "dumb";
}

/// Reads `name` to the end of `read`, or complains.
void read_file(const std::string& name, std::vector<sgn_check::result_file>& read,
               std::vector<sgn_check::unreadable_file>& unreadable) {
    try {
        read.push_back({name, numfreq::read_sgn_file(name)});
    } catch (const flib::run_error& error) {
        complain(error.what());
        unreadable.push_back({name, error.what()});
    }
}

int run(const sgn_check::options& options) {
    std::vector<sgn_check::result_file> reference;
    std::vector<sgn_check::result_file> files;
    std::vector<sgn_check::unreadable_file> unreadable;
    read_file(options.reference, reference, unreadable);
    for (const std::string& name : options.files) read_file(name, files, unreadable);

    std::vector<sgn_check::verdict> verdicts;
    if (!reference.empty()) verdicts = check(reference.front(), files, options.limits);
    if (options.form == sgn_check::output::json) {
        show(json(verdicts, unreadable, options.limits));
    } else if (options.form == sgn_check::output::csv) {
        show(csv(verdicts));
    } else if (!verdicts.empty()) {
        show(table(verdicts, wants_colour()));
    }
    if (!unreadable.empty()) return exit_status::failed;
    const bool fine = std::all_of(verdicts.begin(), verdicts.end(),
                                  [](const sgn_check::verdict& each) { return each.fine(); });
    return fine ? exit_status::all_fine : exit_status::doubtful;
}

}  // namespace

int main(int argc, char** argv) {
    // A write that fails is reported like any other failure.
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    const std::vector<std::string_view> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    try {
        const sgn_check::options options = sgn_check::parse_options(arguments);
        if (options.form == sgn_check::output::help) {
            show(sgn_check::help_text());
        } else if (options.form == sgn_check::output::version) {
            show("sgn_check " + std::string(tools::version()) + "\n");
        } else {
            return run(options);
        }
    } catch (const flib::run_error& error) {
        complain(error.what());
        return exit_status::failed;
    } catch (const std::bad_alloc&) {
        complain("not enough memory");
        return exit_status::failed;
    }
    return exit_status::all_fine;
}
