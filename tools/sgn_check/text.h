// Numbers as people read them.
#pragma once

#include <string>

#include "flib/io/fixed_field.h"
#include "flib/text/fixed_text.h"

namespace sgn_check {

/// Fixed-point notation, as wide as it takes; what rounds to zero has no sign.
inline std::string decimal(double value, int decimals) {
    constexpr int widest = 24;
    const std::string field = flib::fixed_field(value, widest, decimals);
    std::string text(flib::trim_left(field));
    if (text.starts_with('-') && text.find_first_not_of("-0.") == std::string::npos) {
        text.erase(0, 1);
    }
    return text;
}

}  // namespace sgn_check
