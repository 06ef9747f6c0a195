// Comma-separated values (RFC 4180).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tools {

/// A real as a field: the shortest text that reads back to the same bits; empty for a NaN or an
/// infinity.
std::string csv_real(double value);

/// One line of these fields, quoted where they must be.
std::string csv_line(const std::vector<std::string>& fields);

}  // namespace tools
