// The ways in which a run ends before its time.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace flib {

/// Exit statuses. Each fatal message of a reader fixes its own: `stopped` or `complete`.
namespace exit_status {
inline constexpr int complete = 0;
inline constexpr int stopped = 1;
inline constexpr int diagnostic = 2;
}  // namespace exit_status

/// Thrown by a routine that must end the run: the exit status, and the message lines for standard
/// output exactly as they must appear there. Only main() catches it.
struct stop_run {
    int status;
    std::vector<std::string> lines;
};

/// Thrown when a run can not go on: a one-line diagnostic for standard error, status 2.
class run_error : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Thrown by the I/O layer. what() is "FILE: line N: MESSAGE"; without "line N: " when `line`
/// is 0, and with '' for a name that is empty.
class io_error : public run_error {
  public:
    io_error(std::string_view file, std::int64_t line, std::string_view message);
};

/// `text` fit for a one-line diagnostic: control characters and bytes that are not UTF-8 written
/// as `\n`, `\t` or `\xNN`.
std::string printable(std::string_view text);

/// The reason behind an errno value, in the words of the C locale.
std::string errno_text(int error_number);

/// "Can not find keyword KEYWORD stop!", `keyword` without trailing blanks; exit status 1.
[[noreturn]] void miss_keyword(std::string_view keyword);

/// "The method has not been implemented, stop!": the file is of a kind that a reader can not
/// read; exit status 1.
[[noreturn]] void stop_not_implemented();

}  // namespace flib
