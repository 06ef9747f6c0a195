#include "common/number_ranges.h"

#include <algorithm>
#include <charconv>

#include "flib/io/stop_run.h"

namespace tools {
namespace {

/// Whether `text` is a number from 1 on, and nothing else.
bool read_number(std::string_view text, std::int32_t& number) {
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc{} && read.ptr == end && number >= 1;
}

}  // namespace

std::vector<number_range> parse_ranges(const std::string& option, std::string_view list) {
    const auto number_of = [&](std::string_view text) {
        std::int32_t number = 0;
        if (read_number(text, number)) return number;
        throw flib::run_error(option + ": expected numbers like 1-3,7, not '" +
                              flib::printable(list) + "'");
    };
    std::vector<number_range> ranges;
    std::string_view rest = list;
    while (true) {
        const std::size_t comma = rest.find(',');
        const std::string_view item = rest.substr(0, comma);
        const std::size_t dash = item.find('-');
        number_range& range = ranges.emplace_back();
        range.first = number_of(item.substr(0, dash));
        range.last =
            dash == std::string_view::npos ? range.first : number_of(item.substr(dash + 1));
        if (range.last < range.first) {
            throw flib::run_error(option + ": '" + flib::printable(item) +
                                  "' ends before it begins");
        }
        if (comma == std::string_view::npos) return ranges;
        rest.remove_prefix(comma + 1);
    }
}

std::vector<std::int32_t> numbers_in(const std::vector<number_range>& ranges, std::int32_t most) {
    std::vector<std::int32_t> numbers;
    for (std::int32_t number = 1; number <= std::min(most, largest_in(ranges)); ++number) {
        const auto holds = [&](const number_range& range) {
            return range.first <= number && number <= range.last;
        };
        if (std::ranges::any_of(ranges, holds)) numbers.push_back(number);
    }
    return numbers;
}

std::int32_t largest_in(const std::vector<number_range>& ranges) {
    std::int32_t largest = 0;
    for (const number_range& range : ranges) largest = std::max(largest, range.last);
    return largest;
}

}  // namespace tools
