// Results as JSON against a fixture; numbers may differ as far as compilers let them.
#pragma once

#include <cmath>
#include <filesystem>
#include <string>

#include <nlohmann/json.hpp>

#include "support/support.h"

namespace support {

/// Where `made` first differs from `expected`, and how; nothing if it does not. Numbers are equal
/// within 1e-9 and a ten-millionth of their size.
inline std::string difference(const nlohmann::json& made, const nlohmann::json& expected,
                              const std::string& at = {}) {
    if (made.is_number() && expected.is_number()) {
        const double value = expected;
        if (std::abs(made.get<double>() - value) <= 1e-9 + 1e-7 * std::abs(value)) return {};
    } else if (made.is_structured() && made.type() == expected.type() &&
               made.size() == expected.size()) {
        for (const auto& [key, value] : expected.items()) {
            const auto inner = nlohmann::json::json_pointer("/" + key);
            if (!made.contains(inner)) return at + "/" + key + ": is missing";
            const std::string found = difference(made[inner], value, at + "/" + key);
            if (!found.empty()) return found;
        }
        return {};
    } else if (made == expected) {
        return {};
    }
    return at + ": " + made.dump().substr(0, 200) + " instead of " + expected.dump().substr(0, 200);
}

/// The same for a file of tests/data. What was made is left in the directory for temporary files.
inline std::string difference_from(const std::string& fixture, const std::string& made) {
    const std::string found = difference(nlohmann::json::parse(made),
                                         nlohmann::json::parse(contents_of(data_file(fixture))));
    if (found.empty()) return {};
    const auto file =
        std::filesystem::temp_directory_path() / std::filesystem::path(fixture).filename();
    write_file(file, made);
    return found + " (all that was made: " + file.string() + ")";
}

}  // namespace support
