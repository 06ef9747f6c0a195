// The ways in which a run ends before its time.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
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

/// What all routines of the library throw when they cannot do what they were asked: a
/// `stop_run`, or a `run_error` (of which `io_error` is the most frequent kind). The one other
/// exception that leaves them is std::bad_alloc.
class ending : public std::exception {
  public:
    /// The exit status that a program owes to its caller.
    int status() const { return how_->status; }
    /// The message, line by line, exactly as it must appear.
    const std::vector<std::string>& lines() const { return how_->lines; }
    /// What may help, in one line, beyond a fixed message; mostly empty.
    const std::string& hint() const { return how_->hint; }
    /// The message in one line.
    const char* what() const noexcept override { return how_->in_one_line.c_str(); }

  protected:
    ending(int status, std::vector<std::string> lines, std::string in_one_line,
           std::string hint = {});

  private:
    struct contents {
        int status;
        std::vector<std::string> lines;
        std::string in_one_line;
        std::string hint;
    };
    std::shared_ptr<const contents> how_;  // so that a copy cannot fail
};

/// Thrown by a routine that must end the run: the exit status, and the message lines for standard
/// output. The lines are fixed; a `hint`, for standard error, may say more than they do. what() has
/// both.
class stop_run : public ending {
  public:
    stop_run(int status, const std::vector<std::string>& lines, const std::string& hint = {});
};

/// Thrown when a run cannot go on: a one-line diagnostic for standard error, status 2.
class run_error : public ending {
  public:
    explicit run_error(const std::string& diagnostic)
        : ending(exit_status::diagnostic, {diagnostic}, diagnostic) {}
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

/// `text` between single quotes, printable.
std::string quoted(std::string_view text);

/// The reason behind an errno value, in the words of the C locale.
std::string errno_text(int error_number);

/// "Can not find keyword KEYWORD stop!", `keyword` without trailing blanks; exit status 1.
[[noreturn]] void miss_keyword(std::string_view keyword);

/// "The method has not been implemented, stop!": the file is of a kind that a reader cannot
/// read; exit status 1.
[[noreturn]] void stop_not_implemented();

}  // namespace flib
