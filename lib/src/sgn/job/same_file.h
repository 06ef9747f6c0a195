// Names that stand for the same file.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace sgn {

/// Whether two names stand for the same file, as far as that can be told: links and other paths are
/// seen through.
inline bool is_same_file(const std::string& a, const std::string& b) {
    std::error_code ignored;
    return a == b || std::filesystem::equivalent(a, b, ignored);
}

}  // namespace sgn
