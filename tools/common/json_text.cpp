#include "common/json_text.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace tools {
namespace {

void new_line(std::string& text, std::size_t depth) {
    text += '\n';
    text.append(2 * depth, ' ');
}

}  // namespace

json_value::json_value(std::initializer_list<json_member> list) : is_(members{}) {
    for (const json_member& each : list) {
        std::get<members>(is_).emplace_back(each.name, each.value);
    }
}

json_value json_value::array(std::initializer_list<json_value> list) {
    json_value result;
    result.is_ = elements(list);
    return result;
}

void json_value::push_back(json_value element) {
    if (!std::holds_alternative<elements>(is_)) is_ = elements{};
    std::get<elements>(is_).push_back(std::move(element));
}

json_value& json_value::operator[](std::string_view name) {
    if (!std::holds_alternative<members>(is_)) is_ = members{};
    auto& all = std::get<members>(is_);
    const auto found = std::ranges::find(all, name, &members::value_type::first);
    return found != all.end() ? found->second : all.emplace_back(name, json_value()).second;
}

std::string json_value::quoted(std::string_view text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

void json_value::append_to(std::string& text, std::size_t depth) const {
    if (const auto* written = std::get_if<std::string>(&is_)) {
        text += *written;
    } else if (const auto* number = std::get_if<double>(&is_)) {
        text += nlohmann::json(*number).dump();
    } else if (const auto* array = std::get_if<elements>(&is_)) {
        const bool row = std::ranges::all_of(
            *array, [](const json_value& each) { return each.is_.index() < 2; });
        text += '[';
        for (const json_value& each : *array) {
            if (&each != array->data()) text += row ? ", " : ",";
            if (!row) new_line(text, depth + 1);
            each.append_to(text, depth + 1);
        }
        if (!row) new_line(text, depth);
        text += ']';
    } else {
        const auto& object = std::get<members>(is_);
        text += '{';
        for (const auto& each : object) {
            if (&each != object.data()) text += ',';
            new_line(text, depth + 1);
            text += quoted(each.first) + ": ";
            each.second.append_to(text, depth + 1);
        }
        if (!object.empty()) new_line(text, depth);
        text += '}';
    }
}

std::string json_text(const json_value& value) {
    std::string text;
    value.append_to(text, 0);
    return text + '\n';
}

}  // namespace tools
