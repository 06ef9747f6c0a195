// The command line of sgn_states.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/number_ranges.h"
#include "common/outputs.h"
#include "sgn/states/follow_jobs.h"

namespace sgn_states {

struct options {
    std::optional<std::string> shown{};  ///< of --help or --version, to be shown instead of a run
    sgn::follow_options follow;
    std::vector<tools::number_range> states;  ///< of the reference; empty: all
    std::optional<std::string> json;          ///< file for JSON, or "-"
    bool csv = false;                         ///< CSV instead of the table
    bool overwrite = false;                   ///< also files that are no outputs of these tools
    std::string reference;
    std::vector<std::string> jobs;
};

/// The files that are read of all jobs: checkpoints, logs and dumps.
std::vector<std::string> inputs_of(const options& of);

/// What is written beside result files.
std::vector<tools::planned_output> outputs_of(const options& of);

/// The options and names of a command line, without the program's name. Throws flib::run_error if
/// it makes no sense.
options parse_options(std::span<const std::string_view> arguments);

}  // namespace sgn_states
