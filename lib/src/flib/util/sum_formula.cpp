#include "flib/util/sum_formula.h"

#include <cstddef>
#include <map>
#include <string_view>

namespace flib {

std::string sum_formula(std::span<const std::string> symbols) {
    std::map<std::string_view, std::size_t> counts;
    for (const std::string& symbol : symbols) ++counts[symbol];
    std::string text;
    const auto add = [&](std::string_view symbol) {
        const auto found = counts.find(symbol);
        if (found == counts.end()) return;
        text += symbol;
        if (found->second > 1) text += std::to_string(found->second);
        counts.erase(found);
    };
    if (counts.contains("C")) {
        add("C");
        add("H");
    }
    while (!counts.empty()) add(counts.begin()->first);
    return text;
}

}  // namespace flib
