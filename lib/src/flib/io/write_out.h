// Writing to a file descriptor.
#pragma once

#include <string_view>

namespace flib {

/// Writes all of `text` to `descriptor`, past the buffers of the standard streams. False, with
/// errno set, if that fails.
[[nodiscard]] bool write_out(int descriptor, std::string_view text) noexcept;

}  // namespace flib
