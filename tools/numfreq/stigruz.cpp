// stigruz CHECKPOINT [REFERENCE]: gives the transition dipole of one excited-state job the sign of
// the reference job's.

#include <unistd.h>

#include <csignal>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "flib/io/stop_run.h"
#include "numfreq/run_driver.h"

namespace {

/// Writes as much of `text` as can be written; there is nobody to tell of a failure.
void write_out(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(descriptor, text.data(), text.size());
        if (written <= 0) return;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

int report(std::string_view reason, bool usage) {
    std::string line = "stigruz: ";
    line += reason;
    if (usage) line += " (usage: stigruz CHECKPOINT [REFERENCE])";
    line += '\n';
    write_out(STDERR_FILENO, line);
    return flib::exit_status::diagnostic;
}

}  // namespace

int main(int argc, char** argv) {
    // A write that fails is reported like any other failure.
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    const std::vector<std::string_view> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    try {
        numfreq::run_driver(arguments);
    } catch (const flib::stop_run& stop) {
        std::string text;
        for (const std::string& line : stop.lines) text += line + "\n";
        write_out(STDOUT_FILENO, text);
        return stop.status;
    } catch (const flib::run_error& error) {
        return report(error.what(), arguments.empty());
    } catch (const std::bad_alloc&) {
        return report("not enough memory", false);
    }
    return flib::exit_status::complete;
}
