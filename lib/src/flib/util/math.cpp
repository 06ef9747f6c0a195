#include "flib/util/math.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

namespace flib {

namespace {

/// The largest magnitude in a column, 0 if there is none; NaN never is.
double largest_magnitude(std::span<const double> column) {
    // Several running maxima, side by side in vectors: one alone would wait for itself.
    constexpr std::size_t lanes = 16;
    std::array<double, lanes> largest{};
    const std::size_t whole = column.size() - column.size() % lanes;
    for (std::size_t i = 0; i < whole; i += lanes) {
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            const double magnitude = std::abs(column[i + lane]);
            largest[lane] = magnitude > largest[lane] ? magnitude : largest[lane];
        }
    }
    for (const double x : column.subspan(whole)) {
        largest[0] = std::abs(x) > largest[0] ? std::abs(x) : largest[0];
    }
    return *std::max_element(largest.begin(), largest.end());
}

}  // namespace

void mat_abs_maxval_d(std::int32_t n, matrix_view<const double> a, element_location& loc) {
    // One pass in storage order, in which a column is looked at again only if its largest element
    // may be the one. Among equals the smaller (row, column) is kept, which is what a scan by rows
    // would meet first.
    loc = {0, 0};
    double largest = 0;
    for (std::int32_t j = 1; j <= n; ++j) {
        const std::span<const double> column = a.column(j).first(static_cast<std::size_t>(n));
        const double magnitude = largest_magnitude(column);
        if (magnitude == 0 || magnitude < largest) continue;
        const auto at = std::find_if(column.begin(), column.end(),
                                     [&](double x) { return std::abs(x) == magnitude; });
        const auto i = static_cast<std::int32_t>(at - column.begin()) + 1;
        if (magnitude > largest || i < loc[0]) {
            largest = magnitude;
            loc = {i, j};
        }
    }
}

std::int32_t same_sign_d(double a, double b) {
    const double p = a * b;
    if (p > 0) return 1;
    if (p < 0) return -1;
    return 0;
}

}  // namespace flib
