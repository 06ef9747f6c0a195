#include "common/program.h"

#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <exception>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "flib/io/atomic_file.h"
#include "flib/io/stop_run.h"
#include "flib/io/write_out.h"

namespace tools {
namespace {

/// A piece of what writev writes, which does not change it.
iovec piece(std::string_view text) {
    return {const_cast<char*>(text.data()), text.size()};
}

}  // namespace

void complain(std::string_view tool, std::string_view reason) noexcept {
    const std::array pieces{piece(tool), piece(": "), piece(reason), piece("\n")};
    while (writev(STDERR_FILENO, pieces.data(), static_cast<int>(pieces.size())) < 0 &&
           errno == EINTR) {
    }
}

void show(std::string_view text) {
    if (flib::write_out(STDOUT_FILENO, text) || errno == EPIPE) return;
    throw flib::io_error("standard output", 0, flib::errno_text(errno));
}

int run_tool(std::string_view tool, int argc, char** argv,
             const std::function<int(std::span<const std::string_view>)>& body) noexcept {
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    flib::remove_unfinished_on_signals();
    try {
        const std::vector<std::string_view> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
        return body(arguments);
    } catch (const std::bad_alloc&) {
        complain(tool, "not enough memory");
    } catch (const std::length_error&) {
        complain(tool, "not enough memory");
    } catch (const std::exception& error) {
        complain(tool, error.what());
    }
    return exit_status::failed;
}

}  // namespace tools
