// Output fields of fixed width. A value that does not fit fills its field with asterisks.
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

}  // namespace flib
