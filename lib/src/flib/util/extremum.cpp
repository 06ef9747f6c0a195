#include "flib/util/extremum.h"

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

void extremum::look_at(matrix_view<const double> columns, std::int32_t first) {
    // In storage order; a column is looked at again only if its largest element may be the one.
    for (std::int32_t j = 1; j <= columns.columns(); ++j) {
        const std::span<const double> column = columns.column(j);
        const double magnitude = largest_magnitude(column);
        if (magnitude == 0 || magnitude < std::abs(value)) continue;
        const auto found = std::find_if(column.begin(), column.end(),
                                        [&](double x) { return std::abs(x) == magnitude; });
        const auto i = static_cast<std::int32_t>(found - column.begin()) + 1;
        look_at(*found, {i, first + j - 1});
    }
}

void extremum::look_at(double element, const element_location& location) {
    // Among equals the smaller (row, column) is kept, which is what a scan by rows would meet
    // first.
    const double magnitude = std::abs(element);
    const double largest = std::abs(value);
    if (magnitude > largest || (magnitude == largest && location < at)) {
        at = location;
        value = element;
    }
}

}  // namespace flib
