// Lists of numbers as command lines take them: "1-3,7".
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tools {

/// Numbers from `first` to `last`, both included.
struct number_range {
    std::int32_t first = 0;
    std::int32_t last = 0;

    friend bool operator==(const number_range&, const number_range&) = default;
};

/// The ranges of a list, as they stand in it. Throws flib::run_error, which names `option`, if it
/// is no list of numbers from 1 on.
std::vector<number_range> parse_ranges(const std::string& option, std::string_view list);

/// All numbers of the ranges, ascending, each once; those above `most` are left out.
std::vector<std::int32_t> numbers_in(const std::vector<number_range>& ranges, std::int32_t most);

/// The largest number of the ranges; 0 without any.
std::int32_t largest_in(const std::vector<number_range>& ranges);

}  // namespace tools
