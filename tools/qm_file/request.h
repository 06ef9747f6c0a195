// What a command line of qm_file asks for.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "flib/qm_file/file_facts.h"

namespace qm_file {

/// A quantity as it is asked for by name.
struct named_quantity {
    std::string_view name;
    std::string_view in_words;
    std::vector<flib::quantity> parts;
};

/// All of them, in the order of the help text.
std::span<const named_quantity> named_quantities();

struct request {
    std::optional<std::string> shown{};    ///< of --help or --version: the whole answer
    std::optional<std::string> json{};     ///< file for JSON, or "-"
    bool xyz = false;                      ///< geometries alone, instead of text
    const named_quantity* only = nullptr;  ///< null: everything
    std::vector<std::string> files{};
    std::optional<std::string> routine{};  ///< of a probe, which has one file
    std::vector<std::int32_t> inputs{};    ///< of that routine
};

/// Throws flib::run_error, in one line, for a command line that makes no sense.
request request_of(std::span<const std::string_view> arguments);

}  // namespace qm_file
