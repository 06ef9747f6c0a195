#include "common/json.h"

#include <cmath>

#include "common/number_text.h"
#include "flib/text/utf8.h"

namespace tools {

std::string json_string(std::string_view text) {
    constexpr std::string_view hex = "0123456789abcdef";
    std::string quoted = "\"";
    while (!text.empty()) {
        const char c = text.front();
        const auto code = static_cast<unsigned char>(c);
        std::size_t taken = 1;
        if (c == '"' || c == '\\') {
            quoted += {'\\', c};
        } else if (c == '\n') {
            quoted += "\\n";
        } else if (c == '\t') {
            quoted += "\\t";
        } else if (code < 0x20 || code == 0x7F) {
            quoted += {'\\', 'u', '0', '0', hex[code / 16U], hex[code % 16U]};
        } else if (const std::size_t length = flib::utf8_length(text); length > 0) {
            quoted += text.substr(0, length);
            taken = length;
        } else {
            quoted += "\xEF\xBF\xBD";
        }
        text.remove_prefix(taken);
    }
    return quoted + '"';
}

std::string json_real(double value) {
    if (!std::isfinite(value)) return "null";
    std::string number = shortest_real(value);
    if (number.find_first_of(".e") == std::string::npos) number += ".0";
    return number;
}

void json_writer::key(std::string_view name) {
    separate();
    text_ += json_string(name) + ": ";
    named_ = true;
}

void json_writer::begin(char bracket) {
    separate();
    text_ += bracket;
    ++depth_;
    empty_ = true;
}

void json_writer::end(char bracket) {
    --depth_;
    if (!empty_) new_line();
    text_ += bracket;
    empty_ = false;
}

void json_writer::item(std::string_view text) {
    separate();
    text_ += text;
}

/// What stands between the last piece and the next one.
void json_writer::separate() {
    if (named_) {
        named_ = false;
        return;
    }
    if (!empty_) text_ += inline_ > 0 ? ", " : ",";
    if (depth_ > 0 && (!empty_ || inline_ == 0)) new_line();
    empty_ = false;
}

void json_writer::new_line() {
    if (inline_ > 0) return;
    text_ += '\n';
    text_.append(2 * depth_, ' ');
}

}  // namespace tools
