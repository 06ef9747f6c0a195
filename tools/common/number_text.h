// Numbers as people read them, and as other programs do.
#pragma once

#include <string>

namespace tools {

/// Fixed-point notation, as wide as it takes; what rounds to zero has no sign. A value of more than
/// 24 characters is shown as asterisks.
std::string decimal(double value, int decimals);

/// The shortest text that reads back to the same bits.
std::string shortest_real(double value);

}  // namespace tools
