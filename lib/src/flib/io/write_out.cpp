#include "flib/io/write_out.h"

#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace flib {

bool write_out(int descriptor, std::string_view text) noexcept {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written == 0) errno = ENOSPC;  // nothing more can be written
        if (written <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

}  // namespace flib
