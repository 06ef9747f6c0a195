// The ways in which a run ends before its time.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
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
    /// What an ending may tell beyond its message.
    struct details {
        std::string file{};
        std::int64_t line = 0;
        std::string reason{};
        std::string keyword{};
    };

    ending(int status, std::vector<std::string> lines, std::string in_one_line, std::string hint,
           details more);

    const details& more() const { return how_->more; }

  private:
    struct contents {
        int status;
        std::vector<std::string> lines;
        std::string in_one_line;
        std::string hint;
        details more;
    };
    std::shared_ptr<const contents> how_;  // so that a copy cannot fail
};

/// Thrown by a routine that must end the run: the exit status, and the message lines for standard
/// output. The lines are fixed; a `hint`, for standard error, may say more than they do. what() has
/// both.
class stop_run : public ending {
  public:
    stop_run(int status, const std::vector<std::string>& lines, const std::string& hint = {});

  protected:
    stop_run(int status, const std::vector<std::string>& lines, details more);
};

/// A reader's keyword is not in its file: what miss_keyword() throws.
class missing_keyword : public stop_run {
  public:
    explicit missing_keyword(std::string_view keyword);

    /// The keyword, without trailing blanks.
    const std::string& keyword() const { return more().keyword; }
};

/// Thrown when a run cannot go on: a one-line diagnostic for standard error, status 2.
class run_error : public ending {
  public:
    explicit run_error(const std::string& diagnostic) : run_error(diagnostic, {}) {}

  protected:
    run_error(const std::string& diagnostic, details more)
        : ending(exit_status::diagnostic, {diagnostic}, diagnostic, {}, std::move(more)) {}
};

/// Thrown by the I/O layer. what() is "FILE: line N: REASON"; without "line N: " when `line`
/// is 0, and with '' for a name that is empty.
class io_error : public run_error {
  public:
    io_error(std::string_view file, std::int64_t line, std::string_view reason);

    /// The name of the file, as it was handed in.
    const std::string& file() const { return more().file; }
    /// The number of the line, from 1; 0 if the reason is that of the whole file.
    std::int64_t line() const { return more().line; }
    const std::string& reason() const { return more().reason; }
    /// what() without the file: "line N: REASON", or the reason alone.
    std::string without_file() const;
};

/// `text` fit for a one-line diagnostic: control characters and bytes that are not UTF-8 written
/// as `\n`, `\t` or `\xNN`.
std::string printable(std::string_view text);

/// `text` between single quotes, printable.
std::string quoted(std::string_view text);

/// The reason behind an errno value, in the words of the C locale.
std::string errno_text(int error_number);

/// Throws missing_keyword: "Can not find keyword KEYWORD stop!", `keyword` without trailing blanks;
/// exit status 1.
[[noreturn]] void miss_keyword(std::string_view keyword);

/// "The method has not been implemented, stop!": the file is of a kind that a reader cannot
/// read; exit status 1.
[[noreturn]] void stop_not_implemented();

}  // namespace flib
