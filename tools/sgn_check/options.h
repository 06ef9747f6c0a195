// The command line of sgn_check.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sgn/check/check.h"

namespace sgn_check {

struct options {
    std::optional<std::string> shown{};  ///< of --help or --version, to be shown instead of a run
    std::optional<std::string> json;     ///< file for JSON, or "-"
    bool csv = false;                    ///< CSV instead of the table
    bool overwrite = false;              ///< also files that are no outputs of these tools
    sgn::thresholds limits;
    std::string reference;
    std::vector<std::string> files;
};

/// The options and names of a command line, without the program's name. Throws flib::run_error if
/// it makes no sense.
options parse_options(std::span<const std::string_view> arguments);

}  // namespace sgn_check
