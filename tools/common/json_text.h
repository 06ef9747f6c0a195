// JSON as the tools write it.
#pragma once

#include <string>

#include <nlohmann/json.hpp>

namespace tools {

/// An object keeps its members in the order in which they were added.
using json_value = nlohmann::ordered_json;

/// `value` and a newline: two blanks per level, an array of numbers on one line. Reals read back to
/// the same bits; a NaN or an infinity, which JSON does not have, is null. Bytes of a string that
/// are not UTF-8 become U+FFFD.
std::string json_text(const json_value& value);

}  // namespace tools
