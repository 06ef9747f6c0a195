// The command line of sgn_derive.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sgn_derive/text.h"

namespace sgn_derive {

struct options {
    std::optional<std::string> shown;  ///< of --help or --version
    std::string reference;
    std::vector<std::string> files;
    std::optional<std::int32_t> state{};  ///< of the reference, where jobs are given
    bool sum_rules = true;                ///< they are judged
    shown_as shown_derivatives{};         ///< in the report
    std::optional<std::string> json;      ///< files to be written, or "-"
    std::optional<std::string> fchk;
    std::optional<std::string> fchk_template;  ///< read only
    std::optional<std::string> fcc;            ///< NAME of three files
    std::optional<std::string> csv;            ///< of derivatives
    std::optional<std::string> csv_modes;
    std::optional<std::string> molden;
    std::optional<std::string> html;
    std::optional<std::string> judge;  ///< a checkpoint to be judged, instead of a set
    bool overwrite = false;            ///< also files that are no outputs of these tools
};

/// Throws flib::run_error, with one line that says what is wrong.
options parse_options(std::span<const std::string_view> arguments);

}  // namespace sgn_derive
