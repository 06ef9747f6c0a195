// Output that bypasses the buffers of the standard streams.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string_view>

namespace tools {

/// Writes all of `text` to the file descriptor. False, with errno set, if that fails.
[[nodiscard]] inline bool write_out(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

}  // namespace tools
