// JSON as the tools write it.
#pragma once

#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace tools {

struct json_member;

/// A value to be written. Reals read back to the same bits; a NaN or an infinity, which JSON does
/// not have, is null. Bytes of a string that are not UTF-8 become U+FFFD. The library that writes
/// them takes seconds to compile, so that one source alone sees its header.
class json_value {
  public:
    json_value() = default;  ///< null
    json_value(std::nullptr_t) {}
    json_value(bool value) : is_(value ? "true" : "false") {}
    json_value(double value) : is_(value) {}
    template <std::integral Number>
    json_value(Number value) : is_(std::to_string(value)) {}
    template <std::convertible_to<std::string_view> Text>
    json_value(const Text& text) : is_(quoted(text)) {}
    /// An array of all values of a container.
    template <class Values>
    requires(!std::convertible_to<Values, std::string_view> &&
             requires(const Values& values) { values.begin() != values.end(); })
        json_value(const Values& values)
        : is_(elements{}) {
        for (const auto& each : values) push_back(each);
    }
    /// An object of these members.
    json_value(std::initializer_list<json_member> members);
    static json_value array(std::initializer_list<json_value> elements = {});
    static json_value object() { return {std::initializer_list<json_member>{}}; }

    /// Adds an element to an array, which null becomes.
    void push_back(json_value element);
    /// A member of an object, which null becomes; added as the last one if there is none. A
    /// reference is good until the next member is added.
    json_value& operator[](std::string_view name);

  private:
    friend std::string json_text(const json_value& value);

    using elements = std::vector<json_value>;
    using members = std::vector<std::pair<std::string, json_value>>;

    static std::string quoted(std::string_view text);
    void append_to(std::string& text, std::size_t depth) const;

    /// A text stands as it is written.
    std::variant<std::string, double, elements, members> is_ = "null";
};

struct json_member {
    std::string_view name;
    json_value value;
};

/// `value` and a newline: two blanks per level, an array of numbers or strings on one line, the
/// members of an object in the order in which they were added.
std::string json_text(const json_value& value);

}  // namespace tools
