// JSON texts, written piece by piece.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "common/number_text.h"

namespace tools {

/// `text` as a JSON string, quotes included. Every byte that is not part of a well-formed UTF-8
/// sequence becomes U+FFFD.
std::string json_string(std::string_view text);

/// `value` as a JSON number: the shortest text that reads back to the same bits, always with a
/// point or an exponent; null for a NaN or an infinity, which JSON does not have.
std::string json_real(double value);

/// Builds one JSON text, indented by two blanks per level. Calls come in the order of the text:
///
///     json_writer json;
///     json.begin_object();
///     json.member("natom", 3);
///     json.key("dipole");
///     json.array(dipole);  // on one line
///     json.end_object();
///     json.text();         // ends with a newline
class json_writer {
  public:
    void begin_object() { begin('{'); }
    void end_object() { end('}'); }
    void begin_array() { begin('['); }
    void end_array() { end(']'); }

    /// The name of the member whose value comes next.
    void key(std::string_view name);

    void value(std::string_view text) { item(json_string(text)); }
    void value(const char* text) { value(std::string_view(text)); }
    void value(std::same_as<bool> auto truth) { item(truth ? "true" : "false"); }
    void value(std::floating_point auto number) { item(json_real(number)); }
    void value(std::integral auto number) requires(!std::same_as<decltype(number), bool>) {
        item(std::to_string(number));
    }
    void null() { item("null"); }

    template <class Value>
    void member(std::string_view name, const Value& its_value) {
        key(name);
        value(its_value);
    }

    /// All values of a range as an array on one line.
    template <class Range>
    void array(const Range& values) {
        begin_array();
        ++inline_;
        for (const auto& element : values) value(element);
        end_array();
        --inline_;
    }

    /// What has been written, and a newline.
    std::string text() const { return text_ + '\n'; }

  private:
    void begin(char bracket);
    void end(char bracket);
    void item(std::string_view text);
    void separate();
    void new_line();

    std::string text_;
    std::size_t depth_ = 0;
    int inline_ = 0;      // above 0: no new lines
    bool empty_ = true;   // nothing in the object or array at hand yet
    bool named_ = false;  // a key waits for its value
};

}  // namespace tools
