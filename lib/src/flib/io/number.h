// Numbers as free-format items.
#pragma once

#include <cstdint>
#include <string_view>

namespace flib {

enum class number_error { none, not_a_number, too_large };

/// Reads the whole of `item` as an integer: an optional sign and digits. `value` is left alone
/// unless the result is `none`; `too_large` stands for a value outside 32 bits.
number_error parse_integer(std::string_view item, std::int32_t& value);

/// Reads the whole of `item` as a real, correctly rounded: an optional sign, digits with at most
/// one point, then optionally an exponent: one of EeDdQq, an optional sign and digits, or a sign
/// and digits without a letter (1.23-100); or nan, inf, infinity in any case. Underflow gives a
/// signed zero or a subnormal. `value` is left alone unless the result is `none`.
number_error parse_real(std::string_view item, double& value);

/// Reads a real in one of the usual forms at `begin` and returns the place behind it, or null if
/// the text there takes the long way of parse_real(). The same bits as parse_real() gives.
const char* scan_usual_real(const char* begin, const char* end, double& value);

}  // namespace flib
