// Replacing a file in one step.
#pragma once

#include <string>
#include <string_view>

namespace flib {

/// Puts `contents` in the place of the file `path`, which appears whole or not at all: written
/// beside its final name, flushed to the disk, every step checked, then renamed over it. If `path`
/// is a symbolic link, the file that it points to is replaced, not the link.
///
/// Throws io_error on any failure, and also when the file that stands there is not a regular one
/// or is write-protected; the earlier file is then what it was, and nothing is left beside it.
void replace_file(const std::string& path, std::string_view contents);

}  // namespace flib
