#include "sgn/set/input_numbers.h"

#include <algorithm>

#include "flib/facts/file_facts.h"
#include "flib/io/stop_run.h"
#include "sgn/set/set_moments.h"

namespace sgn {
namespace {

/// Positions in the high layer, 1-based; empty if the file is not of an ONIOM job.
std::vector<std::int32_t> high_layer_of(const std::string& file) {
    constexpr flib::quantity wanted[] = {flib::quantity::oniom};
    try {
        const flib::file_facts facts = flib::facts_of(file, wanted);
        if (facts.oniom) return facts.oniom->high;
    } catch (const flib::ending&) {
        // It is not there, or cannot be read: the places serve.
    }
    return {};
}

}  // namespace

std::vector<std::int32_t> input_numbers_beside(const std::string& name, std::size_t count) {
    for (const char* const suffix : {".log", ".fchk"}) {
        std::vector<std::int32_t> numbers = high_layer_of(file_beside(name, suffix));
        if (numbers.size() != count) continue;
        std::int32_t place = 0;
        const bool same =
            std::ranges::all_of(numbers, [&](std::int32_t number) { return number == ++place; });
        if (same) numbers.clear();
        return numbers;
    }
    return {};
}

std::int32_t number_of(const atom& of, std::size_t place) {
    return of.input > 0 ? of.input : static_cast<std::int32_t>(place) + 1;
}

std::string place_text(const atom& of, std::size_t place) {
    if (number_of(of, place) == static_cast<std::int32_t>(place) + 1) return {};
    return " (" + std::to_string(place + 1) + " of the high layer)";
}

std::string name_of(const atom& of, std::size_t place) {
    return std::to_string(number_of(of, place)) + " " + flib::printable(of.symbol) +
           place_text(of, place);
}

}  // namespace sgn
