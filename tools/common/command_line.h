// Command lines as all the tools beside stigruz take them.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

namespace tools {

/// What --help says of a tool beside its options.
struct tool_description {
    std::string name;     ///< "sgn_check"
    std::string usage;    ///< what follows the name, one line per form: "[OPTIONS] FILE.sgn..."
    std::string purpose;  ///< a paragraph
    std::string rest{};   ///< after the options: exit statuses, as written
};

/// Prepares `app`: -h, --help and --version, and how the help looks. Options of the tool are added
/// by the functions below, in the order and groups (CLI::Option::group) in which help lists them.
void describe(CLI::App& app, const tool_description& tool);

/// An option without a value; `names` as CLI11 has them: "--json", or "-f,--force".
CLI::Option* add_switch(CLI::App& app, const std::string& names, bool& given,
                        const std::string& meaning);

/// An option with one value, shown as `--name=KIND` in help; the last one counts. `take` gets the
/// value and may throw flib::run_error.
CLI::Option* add_value(CLI::App& app, const std::string& names, const std::string& kind,
                       std::function<void(const std::string&)> take, const std::string& meaning);

/// The same for the name of a file, or "-".
CLI::Option* add_file(CLI::App& app, const std::string& names, std::optional<std::string>& file,
                      const std::string& meaning);

/// The same for a finite number, `least` or above; help tells the value that it has by now as the
/// default.
CLI::Option* add_number(CLI::App& app, const std::string& names, double& number, double least,
                        const std::string& meaning);

/// A command line that has been understood.
struct parsed_line {
    std::optional<std::string> shown{};  ///< of --help or --version, to be shown instead of a run
    std::vector<std::string> names{};    ///< the arguments that are no options, in their order
};

/// Takes the options, which may stand anywhere on the line, until "--". Throws flib::run_error,
/// with one line that says what is wrong, for an option that the tool does not have, a value that
/// is missing or makes no sense, or options that exclude each other.
parsed_line parse_line(CLI::App& app, std::span<const std::string_view> arguments);

}  // namespace tools
