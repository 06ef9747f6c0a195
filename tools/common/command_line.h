// Command lines as all the tools beside stigruz take them.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Its header takes seconds to compile, so that it is seen by one source alone.
namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace tools {

/// What --help says of a tool beside its options.
struct tool_description {
    std::string name;     ///< "sgn_check"
    std::string usage;    ///< what follows the name, one line per form: "[OPTIONS] FILE.sgn..."
    std::string purpose;  ///< a paragraph
    std::string rest{};   ///< after the options: exit statuses, as written
};

/// An option of a command line, as long as that lives.
class option {
  public:
    explicit option(CLI::Option* its) : its_(its) {}

    /// Help lists it under this heading.
    const option& group(const std::string& heading) const;
    /// The two are not given together.
    const option& excludes(const option& other) const;
    /// Whether it stands on the line.
    bool given() const;

  private:
    CLI::Option* its_;
};

/// What a tool takes: -h, --help and --version, and the options that are added by the functions
/// below, in the order in which help lists them.
class command_line {
  public:
    explicit command_line(const tool_description& tool);
    ~command_line();

    CLI::App& app() const { return *app_; }
    /// What options need, where that is more than a value: by "--name".
    std::map<std::string, std::string>& needs() { return needs_; }

  private:
    std::unique_ptr<CLI::App> app_;
    std::map<std::string, std::string> needs_;
};

/// An option without a value; `names` as help lists them: "--json", or "-f,--force".
option add_switch(command_line& line, const std::string& names, bool& given,
                  const std::string& meaning);

/// An option with one value, shown as `--name=KIND` in help; the last one counts. `take` gets the
/// value and may throw flib::run_error.
option add_value(command_line& line, const std::string& names, const std::string& kind,
                 std::function<void(const std::string&)> take, const std::string& meaning);

/// The same for the name of a file to be read.
option add_input(command_line& line, const std::string& names, std::optional<std::string>& file,
                 const std::string& meaning);

/// The same for the name of a file to be written, or "-", standard output.
option add_output(command_line& line, const std::string& names, std::optional<std::string>& file,
                  const std::string& meaning);

/// The same for a finite number, `least` or above; help tells the value that it has by now as the
/// default.
option add_number(command_line& line, const std::string& names, double& number, double least,
                  const std::string& meaning);

/// A command line that has been understood.
struct parsed_line {
    std::optional<std::string> shown{};  ///< of --help or --version, to be shown instead of a run
    std::vector<std::string> names{};    ///< the arguments that are no options, in their order
};

/// Takes the options, which may stand anywhere on the line, until "--". Throws flib::run_error,
/// with one line that says what is wrong, for an option that the tool does not have, a value that
/// is missing or makes no sense, or options that exclude each other.
parsed_line parse_line(command_line& line, std::span<const std::string_view> arguments);

}  // namespace tools
