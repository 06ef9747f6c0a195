// Numbers as text, in fields of fixed width or as wide as they are.
//
// All that are written are written here. A value that does not fit the width of its field fills it
// with asterisks; a width of 0 is as wide as it takes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace flib {

/// `text` right-aligned in `width` columns.
std::string text_field(std::string_view text, int width);

/// An integer right-aligned in `width` columns.
std::string integer_field(std::int64_t value, int width);

/// Fixed-point notation, as printf writes %WIDTH.DECIMALSf.
std::string fixed_field(double value, int width, int decimals);

/// Scientific notation, as printf writes %WIDTH.DECIMALSE.
std::string scientific_field(double value, int width, int decimals);

/// Fixed-point notation, as wide as it takes; what rounds to zero has no sign. A value of more than
/// 24 characters is shown as asterisks.
std::string decimal(double value, int decimals);

/// The shortest text that reads back as `value`: "0.1".
std::string shortest_real(double value);

/// In as few of `digits` significant digits as it takes, as printf writes %.DIGITSg.
std::string significant(double value, int digits);

/// In `digits` digits, at least, of base 16: "0A".
std::string hexadecimal(std::uint64_t value, int digits);

}  // namespace flib
