#include "sgn_check/options.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>

#include "common/json.h"
#include "flib/io/number.h"
#include "flib/io/stop_run.h"

namespace sgn_check {
namespace {

struct threshold_option {
    std::string_view name;
    double thresholds::*value;
    std::string_view meaning;
};

constexpr std::array<threshold_option, 5> threshold_options{{
    {"--min-ratio", &thresholds::min_ratio, "smallest element, against the reference's"},
    {"--max-rotation", &thresholds::max_rotation, "largest rotation of the frame, degrees"},
    {"--max-turn", &thresholds::max_turn, "largest turn of the dipole, degrees"},
    {"--min-dipole", &thresholds::min_dipole, "smallest dipole whose turn is judged, au"},
    {"--max-asymmetry", &thresholds::max_asymmetry, "largest |d(+) + d(-) - 2 d(0)|, au"},
}};

struct switch_option {
    std::string_view name;
    std::optional<output> form;  // without: no pairs
    std::string_view meaning;
};

constexpr std::array<switch_option, 5> switch_options{{
    {"--no-pairs", std::nullopt, "displacements do not come in +- pairs"},
    {"--json", output::json, "write JSON"},
    {"--csv", output::csv, "write CSV"},
    {"--help", output::help, "show this text"},
    {"--version", output::version, "show the version"},
}};

double threshold_of(std::string_view name, std::string_view text) {
    double value = 0;
    if (flib::parse_real(text, value) == flib::number_error::none && std::isfinite(value) &&
        value >= 0) {
        return value;
    }
    throw flib::run_error(std::string(name) + " takes a number, 0 or above, not '" +
                          flib::printable(text) + "'");
}

constexpr bool is_only_shown(output form) {
    return form == output::help || form == output::version;
}

void apply(const switch_option& option, options& result) {
    if (!option.form) {
        result.limits.pairs = false;
        return;
    }
    if (!is_only_shown(result.form)) result.form = *option.form;
}

}  // namespace

options parse_options(std::span<const std::string_view> arguments) {
    options result;
    std::vector<std::string> names;
    bool only_names = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        if (only_names || !argument.starts_with('-') || argument == "-") {
            names.emplace_back(argument);
            continue;
        }
        if (argument == "--") {
            only_names = true;
            continue;
        }
        const std::size_t equals = argument.find('=');
        const std::string_view name = argument.substr(0, equals);
        const auto* threshold =
            std::find_if(threshold_options.begin(), threshold_options.end(),
                         [&](const threshold_option& option) { return option.name == name; });
        if (threshold != threshold_options.end()) {
            if (equals == std::string_view::npos && i + 1 == arguments.size()) {
                throw flib::run_error(std::string(name) + " needs a value");
            }
            const std::string_view text =
                equals == std::string_view::npos ? arguments[++i] : argument.substr(equals + 1);
            result.limits.*threshold->value = threshold_of(name, text);
            continue;
        }
        const auto* found =
            std::find_if(switch_options.begin(), switch_options.end(),
                         [&](const switch_option& option) { return option.name == argument; });
        if (found == switch_options.end()) {
            throw flib::run_error("no option '" + flib::printable(argument) + "' (see --help)");
        }
        apply(*found, result);
    }
    if (is_only_shown(result.form)) return result;
    if (names.size() < 2) {
        throw flib::run_error(
            "needs a reference and files to check (usage: sgn_check [OPTIONS] REFERENCE.sgn "
            "FILE.sgn...)");
    }
    result.reference = names.front();
    result.files.assign(names.begin() + 1, names.end());
    return result;
}

std::string help_text() {
    constexpr std::size_t meaning_column = 26;
    std::string text =
        "usage: sgn_check [OPTIONS] REFERENCE.sgn FILE.sgn...\n"
        "\n"
        "Tells which result files of stigruz deserve doubt: those whose sign, geometry or\n"
        "transition dipole does not fit the reference's.\n"
        "\n"
        "Where doubt begins:\n";
    const auto add = [&](std::string left, std::string_view meaning) {
        left.resize(std::max(meaning_column, left.size() + 1), ' ');
        text.append(left).append(meaning);
    };
    const thresholds defaults;
    for (const threshold_option& option : threshold_options) {
        add("  " + std::string(option.name) + "=NUMBER", option.meaning);
        text.append(" (").append(tools::shortest_real(defaults.*option.value)).append(")\n");
    }
    text += "\nOther options:\n";
    for (const switch_option& option : switch_options) {
        add("  " + std::string(option.name), option.meaning);
        text += '\n';
    }
    return text +
           "\n"
           "Status: 0 all fine, 1 something deserves doubt, 2 a file can not be read.\n";
}

}  // namespace sgn_check
