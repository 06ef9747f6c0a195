#include "common/number_text.h"

#include <array>
#include <charconv>

namespace tools {

std::string shortest_real(double value) {
    std::array<char, 32> digits;
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    return {digits.data(), written.ptr};
}

}  // namespace tools
