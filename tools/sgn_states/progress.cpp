#include "sgn_states/progress.h"

#include <unistd.h>

#include <string>

#include "common/write_out.h"

namespace sgn_states {

progress progress_line() {
    if (isatty(STDERR_FILENO) != 1) return [](std::size_t, std::size_t) {};
    return [](std::size_t done, std::size_t all) {
        // Erases the line, and begins it anew.
        std::string line("\r\033[K");
        if (done != all) line += std::to_string(done) + " of " + std::to_string(all) + " jobs";
        static_cast<void>(tools::write_out(STDERR_FILENO, line));
    };
}

}  // namespace sgn_states
