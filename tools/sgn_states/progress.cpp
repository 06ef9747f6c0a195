#include "sgn_states/progress.h"

#include <unistd.h>

#include <array>
#include <cstdio>

#include "common/write_out.h"

namespace sgn_states {

progress progress_line() {
    if (isatty(STDERR_FILENO) != 1) return [](std::size_t, std::size_t) {};
    return [](std::size_t done, std::size_t all) {
        // Erases the line, and begins it anew.
        std::array<char, 64> line{};
        int length = 0;
        if (done == all) {
            length = std::snprintf(line.data(), line.size(), "\r\033[K");
        } else {
            length = std::snprintf(line.data(), line.size(), "\r\033[K%zu of %zu jobs", done, all);
        }
        static_cast<void>(
            tools::write_out(STDERR_FILENO, {line.data(), static_cast<std::size_t>(length)}));
    };
}

}  // namespace sgn_states
