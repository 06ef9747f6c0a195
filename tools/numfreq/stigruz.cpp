// stigruz CHECKPOINT [REFERENCE]: gives the transition dipole of one excited-state job the sign of
// the reference job's.

#include <unistd.h>

#include <array>
#include <csignal>
#include <exception>
#include <new>
#include <string_view>
#include <vector>

#include "flib/io/atomic_file.h"
#include "flib/io/stop_run.h"
#include "flib/io/write_out.h"
#include "numfreq/run_driver.h"

namespace {

/// The last words of a run, cut should they be too long. They need no memory, because there may be
/// none left, and go out in one piece, because other runs may write to the same file.
class last_words {
  public:
    last_words& add(std::string_view text) {
        length_ += text.copy(text_.data() + length_, text_.size() - length_);
        return *this;
    }

    /// Writes as much as can be written.
    void write_to(int descriptor) const {
        // There is nobody to tell of a failure.
        static_cast<void>(flib::write_out(descriptor, {text_.data(), length_}));
    }

  private:
    std::array<char, 4096> text_{};
    std::size_t length_ = 0;
};

int report(std::string_view reason, std::string_view hint = {}) {
    last_words().add("stigruz: ").add(reason).add(hint).add("\n").write_to(STDERR_FILENO);
    return flib::exit_status::diagnostic;
}

constexpr std::string_view no_memory = "not enough memory";

/// All else is caught, so what is left is an exception for which there was no memory.
[[noreturn]] void end_without_exception() {
    _exit(report(no_memory));
}

/// Behind the message of a run that failed: what was taken for a file may have been meant as an
/// option.
void tell_usage(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] != '-' || access(argv[i], F_OK) == 0) continue;
        report("usage: stigruz CHECKPOINT [REFERENCE.sgn]; there are no options (see man stigruz)");
        return;
    }
}

int run(int argc, char** argv) {
    try {
        const std::vector<std::string_view> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
        numfreq::run_driver(arguments);
    } catch (const flib::stop_run& stop) {
        last_words text;
        for (const std::string& line : stop.lines()) text.add(line).add("\n");
        text.write_to(STDOUT_FILENO);
        if (!stop.hint().empty()) report(stop.hint());
        tell_usage(argc, argv);
        return stop.status();
    } catch (const flib::run_error& error) {
        report(error.what(), argc < 2 ? " (usage: stigruz CHECKPOINT [REFERENCE])" : "");
        tell_usage(argc, argv);
        return error.status();
    } catch (const std::bad_alloc&) {
        return report(no_memory);
    } catch (const std::exception& error) {
        return report(error.what());
    }
    return flib::exit_status::complete;
}

}  // namespace

int main(int argc, char** argv) {
    // A write that fails is reported like any other failure.
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    flib::remove_unfinished_on_signals();
    std::set_terminate(end_without_exception);
    return run(argc, argv);
}
