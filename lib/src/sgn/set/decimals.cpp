#include "sgn/set/decimals.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace sgn {
namespace {

/// As many as a result file gives of a number below 1.
constexpr std::array powers_of_ten{1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10};
static_assert(powers_of_ten.size() == most_decimals + 1);

/// So many different values do not end in zeros by chance.
constexpr std::size_t enough = 8;

bool has_decimals(double magnitude, int decimals) {
    const double shifted = magnitude * powers_of_ten[static_cast<std::size_t>(decimals)];
    return std::abs(shifted - std::round(shifted)) <= 1e-10 * shifted + 1e-12;
}

}  // namespace

void decimals_seen::look_at(double value) {
    const double magnitude = std::abs(value);
    if (magnitude == 0) return;
    if (magnitudes_.size() < enough) magnitudes_.insert(magnitude);
    while (needed_ < most_decimals && !has_decimals(magnitude, needed_)) ++needed_;
}

int decimals_seen::decimals() const {
    return magnitudes_.size() < enough ? std::max(usual_, needed_) : needed_;
}

double rounding_error(int decimals) {
    // Of a uniform distribution whose width is one unit of the last decimal.
    return 1 / (2 * std::numbers::sqrt3 * powers_of_ten[static_cast<std::size_t>(decimals)]);
}

}  // namespace sgn
