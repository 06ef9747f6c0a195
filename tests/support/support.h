// What the tests share: scratch directories, files, the endings of a run, running a tool.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace support {

/// A fixture file below tests/data.
std::string data_file(std::string_view name);

/// The fields of a line, which are separated by " | ". In them \n, \r and \t stand for characters,
/// \{N TEXT} for N times TEXT.
std::vector<std::string> fields_of(std::string_view line);

/// The rows of a table below tests/data: one a line, all with as many fields as the first. Empty
/// lines are left out, and those that start with #, but for rows below the first.
std::vector<std::vector<std::string>> table_of(std::string_view fixture);

/// The words of a text; quotes keep blanks together ("a b", "").
std::vector<std::string> words_of(std::string_view text);

std::string contents_of(const std::filesystem::path& path);
void write_file(const std::filesystem::path& path, std::string_view contents);

/// `text` with every `from`, of which there must be one, replaced by `to`.
std::string replaced(std::string text, std::string_view from, std::string_view to);

/// `text` with every `from` replaced by `to`, or as it is if `from` is empty. With END for `from`
/// it ends before the first `to`.
std::string edited(const std::string& text, const std::string& from, const std::string& to);

/// An empty directory, removed with everything in it when this goes.
class scratch_directory {
  public:
    scratch_directory();
    ~scratch_directory();
    scratch_directory(const scratch_directory&) = delete;
    scratch_directory& operator=(const scratch_directory&) = delete;

    const std::filesystem::path& path() const { return path_; }
    /// The path of the file `name`, which is written with `contents` first.
    std::string file(std::string_view name, std::string_view contents) const;
    /// Names of the files in it, in order.
    std::vector<std::string> names() const;

  private:
    std::filesystem::path path_;
};

/// An empty directory that is the working one as long as this lives.
class working_directory {
  public:
    working_directory() { std::filesystem::current_path(directory_.path()); }
    ~working_directory() { std::filesystem::current_path(home_); }
    working_directory(const working_directory&) = delete;
    working_directory& operator=(const working_directory&) = delete;

  private:
    scratch_directory directory_;
    std::filesystem::path home_ = std::filesystem::current_path();
};

/// How a call ended: with the message lines and status of a stop_run, or with the one line of a
/// run_error (status 2).
struct ending {
    int status = 0;
    std::string text;  // lines joined by newlines; of a run_error, its what()
    bool stopped = false;

    friend bool operator==(const ending&, const ending&) = default;
};

/// Calls `routine`; nullopt if it returns.
std::optional<ending> ending_of(const std::function<void()>& routine);

/// What `routine` returns; if it ends the run, "exit STATUS: MESSAGE", where "FILE: " before the
/// message is left out.
std::string answer_of(const std::string& file, const std::function<std::string()>& routine);

/// A tool to be run.
struct command {
    std::string tool;  // its name in the directory of the tools, or a whole path
    std::vector<std::string> arguments;
    std::filesystem::path directory;  // where it runs
    std::string input{};              // its standard input
    std::string terminal{};           // the kind of a terminal of 80 columns, for input and output
};

struct outcome {
    int status = 0;  // exit status, or minus the signal that ended it
    std::string output;
    std::string errors;
};

outcome run(const command& what);

/// Whether there are terminals to run a tool on.
bool has_terminals();

}  // namespace support
