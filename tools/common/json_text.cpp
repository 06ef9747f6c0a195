#include "common/json_text.h"

#include <algorithm>
#include <cstddef>

namespace tools {
namespace {

std::string scalar_text(const json_value& value) {
    return value.dump(-1, ' ', false, json_value::error_handler_t::replace);
}

bool is_row(const json_value& value) {
    return value.is_array() && std::none_of(value.begin(), value.end(), [](const json_value& each) {
               return each.is_structured();
           });
}

void new_line(std::string& text, std::size_t depth) {
    text += '\n';
    text.append(2 * depth, ' ');
}

void append(std::string& text, const json_value& value, std::size_t depth) {
    if (!value.is_structured() || value.empty()) {
        text += scalar_text(value);
        return;
    }
    const bool row = is_row(value);
    text += value.is_object() ? '{' : '[';
    bool first = true;
    for (const auto& [key, element] : value.items()) {
        if (!first) text += row ? ", " : ",";
        first = false;
        if (!row) new_line(text, depth + 1);
        if (value.is_object()) text += scalar_text(key) + ": ";
        append(text, element, depth + 1);
    }
    if (!row) new_line(text, depth);
    text += value.is_object() ? '}' : ']';
}

}  // namespace

std::string json_text(const json_value& value) {
    std::string text;
    append(text, value, 0);
    return text + '\n';
}

}  // namespace tools
