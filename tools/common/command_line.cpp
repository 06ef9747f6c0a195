#include "common/command_line.h"
#include "flib/text/shown_text.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <utility>

#include "common/terminal.h"
#include "common/version.h"
#include "flib/io/fixed_field.h"
#include "flib/io/number.h"
#include "flib/io/stop_run.h"

namespace tools {
namespace {

constexpr std::size_t meaning_column = 26;
constexpr std::size_t help_width = 80;

bool takes_value(const CLI::Option& option) {
    return option.get_items_expected_max() > 0;
}

/// "--json", "--json=FILE" or "-f, --force".
std::string synopsis(const CLI::Option& option) {
    std::string text;
    for (const std::string& name : option.get_snames()) text += "-" + name + ", ";
    for (const std::string& name : option.get_lnames()) text += "--" + name;
    if (takes_value(option)) text += "=" + option.get_type_name();
    return text;
}

std::string option_help(const CLI::Option& option) {
    std::string text = "  " + synopsis(option);
    text.resize(std::max(meaning_column, text.size() + 2), ' ');
    bool first = true;
    for (const std::string& line :
         flib::wrapped(option.get_description(), help_width - meaning_column)) {
        if (!std::exchange(first, false)) text.append(meaning_column, ' ');
        text += line + '\n';
    }
    return text;
}

std::string help_of(const CLI::App& app, const tool_description& tool) {
    std::string text;
    std::string_view forms = tool.usage;
    while (!forms.empty()) {
        const std::string_view form = forms.substr(0, forms.find('\n'));
        text.append(text.empty() ? "usage: " : "       ").append(tool.name);
        text.append(" ").append(form).append("\n");
        forms.remove_prefix(std::min(form.size() + 1, forms.size()));
    }
    text += '\n';
    for (const std::string& line : flib::wrapped(tool.purpose, help_width)) text += line + '\n';
    // Groups appear in the order of their first options; -h and --version come at the very end.
    std::vector<std::string> groups = app.get_groups();
    std::stable_partition(groups.begin(), groups.end(), [&](const std::string& group) {
        return group != app.get_help_ptr()->get_group();
    });
    for (const std::string& group : groups) {
        if (group.empty()) continue;
        const auto of_group = app.get_options(
            [&](const CLI::Option* option) { return option->get_group() == group; });
        std::string general;
        text.append("\n").append(group).append(":\n");
        for (const CLI::Option* option : of_group) {
            const bool last = option == app.get_help_ptr() || option == app.get_version_ptr();
            (last ? general : text) += option_help(*option);
        }
        text += general;
    }
    if (!tool.rest.empty()) text += "\n" + tool.rest;
    if (!text.ends_with('\n')) text += '\n';
    return text;
}

/// Complains about values that CLI11 would take in its own way: `--file= NEXT` would take the next
/// argument, and `--switch=no` be understood.
void check_equals(const CLI::App& app, std::string_view argument) {
    const std::size_t equals = argument.find('=');
    if (!argument.starts_with("--") || equals == std::string_view::npos) return;
    const std::string name(argument.substr(0, equals));
    const CLI::Option* option = app.get_option_no_throw(name);
    if (option == nullptr) return;
    if (!takes_value(*option)) throw flib::run_error(name + " takes no value");
    if (equals + 1 == argument.size()) throw flib::run_error(name + " needs a value");
}

std::string name_of(const CLI::Option& option) {
    const std::vector<std::string>& names = option.get_lnames();
    return names.empty() ? option.get_name() : "--" + names.front();
}

/// The complaint about an option that needs a value and stands at the end.
flib::run_error value_missing(command_line& line, std::span<const std::string_view> arguments) {
    const CLI::App& app = line.app();
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const CLI::Option* option = app.get_option_no_throw(std::string(arguments[i]));
        if (option == nullptr || !takes_value(*option)) continue;
        if (++i < arguments.size()) continue;
        const std::string name = name_of(*option);
        const auto need = line.needs().find(name);
        return flib::run_error(name + " needs " +
                               (need == line.needs().end() ? "a value" : need->second));
    }
    return flib::run_error("an option needs a value (see --help)");
}

/// The complaint about the first two options that exclude each other and are both there.
flib::run_error exclusion(const CLI::App& app) {
    const auto given =
        app.get_options([](const CLI::Option* option) { return option->count() > 0; });
    for (const CLI::Option* one : given) {
        const auto excluded = one->get_excludes();
        for (const CLI::Option* other : given) {
            if (std::ranges::find(excluded, other) == excluded.end()) continue;
            return flib::run_error(name_of(*one) + " and " + name_of(*other) +
                                   " exclude each other");
        }
    }
    return flib::run_error("options exclude each other (see --help)");
}

/// The arguments that CLI11 left over are names, and options that there are not.
std::vector<std::string> names_among(std::vector<std::string> rest) {
    std::vector<std::string> names;
    bool only_names = false;
    for (std::string& argument : rest) {
        if (!only_names && argument == "--") {
            only_names = true;
        } else if (only_names || argument == "-" || !argument.starts_with('-')) {
            names.push_back(std::move(argument));
        } else {
            throw flib::run_error("no option '" + flib::printable(argument) + "' (see --help)");
        }
    }
    return names;
}

}  // namespace

const option& option::group(const std::string& heading) const {
    its_->group(heading);
    return *this;
}

const option& option::excludes(const option& other) const {
    its_->excludes(other.its_);
    return *this;
}

bool option::given() const {
    return its_->count() > 0;
}

command_line::~command_line() = default;

command_line::command_line(const tool_description& tool) : app_(std::make_unique<CLI::App>()) {
    CLI::App& app = *app_;
    app.name(tool.name);
    app.description(tool.purpose);
    app.allow_extras();
    app.set_help_flag("-h,--help", "show this text");
    app.set_version_flag("--version", tool.name + " " + std::string(version()), "show the version");
    app.formatter_fn([tool](const CLI::App* of, const std::string&, CLI::AppFormatMode) {
        return help_of(*of, tool);
    });
}

option add_switch(command_line& line, const std::string& names, bool& given,
                  const std::string& meaning) {
    return option(line.app().add_flag(names, given, meaning));
}

option add_value(command_line& line, const std::string& names, const std::string& kind,
                 std::function<void(const std::string&)> take, const std::string& meaning) {
    CLI::callback_t callback = [take = std::move(take)](const CLI::results_t& values) {
        take(values.front());
        return true;
    };
    CLI::Option* added = line.app().add_option(names, std::move(callback), meaning);
    added->type_name(kind);
    added->type_size(1);
    added->expected(1);
    added->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    return option(added);
}

namespace {

option add_file(command_line& line, const std::string& names, std::optional<std::string>& file,
                const std::string& meaning, const std::string& need) {
    const bool may_be_stream = need.find("'-'") != std::string::npos;
    const auto take = [=, &file](const std::string& value) {
        const bool is_name =
            !value.empty() && (value == "-" ? may_be_stream : !value.starts_with('-'));
        // Rather than write a file of the name of the next option.
        if (!is_name) throw flib::run_error(names + " needs " + need);
        file = value;
    };
    line.needs()[names] = need;
    return add_value(line, names, "FILE", take, meaning);
}

}  // namespace

option add_input(command_line& line, const std::string& names, std::optional<std::string>& file,
                 const std::string& meaning) {
    return add_file(line, names, file, meaning, "the name of a file");
}

option add_output(command_line& line, const std::string& names, std::optional<std::string>& file,
                  const std::string& meaning) {
    return add_file(line, names, file, meaning, "the name of a file, or '-' for standard output");
}

option add_number(command_line& line, const std::string& names, double& number, double least,
                  const std::string& meaning) {
    const auto take = [names, least, &number](const std::string& text) {
        double value = 0;
        if (flib::parse_real(text, value) != flib::number_error::none || !std::isfinite(value) ||
            value < least) {
            throw flib::run_error(names + " takes a number, " + flib::shortest_real(least) +
                                  " or above, not '" + flib::printable(text) + "'");
        }
        number = value;
    };
    return add_value(line, names, "NUMBER", take,
                     meaning + " (" + flib::shortest_real(number) + ")");
}

parsed_line parse_line(command_line& line, std::span<const std::string_view> arguments) {
    CLI::App& app = line.app();
    for (const std::string_view argument : arguments) {
        if (argument == "--") break;
        check_equals(app, argument);
    }
    // CLI11 takes them from the back.
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    try {
        app.parse(reversed);
        return {.names = names_among(app.remaining())};
    } catch (const CLI::CallForHelp&) {
        return {.shown = app.help()};
    } catch (const CLI::CallForVersion&) {
        return {.shown = app.version() + "\n"};
    } catch (const CLI::ArgumentMismatch&) {
        throw value_missing(line, arguments);
    } catch (const CLI::ExcludesError&) {
        throw exclusion(app);
    } catch (const CLI::Error&) {
        throw flib::run_error("the options cannot be understood (see --help)");
    }
}

}  // namespace tools
