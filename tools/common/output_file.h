// Results that a user asked for by a file name.
#pragma once

#include <string>
#include <string_view>

namespace tools {

/// Writes a result to the file `name`, which appears whole or not at all (an earlier file stays
/// what it was until then), or to standard output if `name` is "-". What
/// killed runs have left beside it is removed. Throws flib::io_error.
void write_result(const std::string& name, std::string_view contents);

}  // namespace tools
