// Replacing a file in one step.
#pragma once

#include <functional>
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

/// For programs, once: from now on a hang-up, interrupt or termination signal removes what
/// replace_file() has not finished, and ends the program as it would have. Signals that are ignored
/// or handled by now stay so.
void remove_unfinished_on_signals() noexcept;

/// Removes what processes that were killed have left beside the file `path`: ".NAME.PID-N", NAME
/// cut to 200 characters, where no process of this machine has the number PID and nothing was
/// written for a minute, since it may be that of another machine's process. What cannot be removed
/// stays, without a word.
void remove_left_over(const std::string& path) noexcept;

/// The same of all files in `directory` for whose NAME `is_meant` is true.
void remove_left_over(const std::string& directory,
                      const std::function<bool(std::string_view name)>& is_meant) noexcept;

}  // namespace flib
