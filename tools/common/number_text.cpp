#include "common/number_text.h"

#include <array>
#include <charconv>

#include "flib/io/fixed_field.h"
#include "flib/text/fixed_text.h"

namespace tools {

std::string decimal(double value, int decimals) {
    constexpr int widest = 24;
    const std::string field = flib::fixed_field(value, widest, decimals);
    std::string text(flib::trim_left(field));
    if (text.starts_with('-') && text.find_first_not_of("-0.") == std::string::npos) {
        text.erase(0, 1);
    }
    return text;
}

std::string shortest_real(double value) {
    std::array<char, 32> digits;
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return {digits.data(), written.ptr};
}

}  // namespace tools
