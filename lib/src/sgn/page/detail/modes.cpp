// Borrowed intensity as sticks over the wavenumber.
#include "sgn/set/modes.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "flib/io/fixed_field.h"
#include "sgn/page/detail/drawings.h"
#include "sgn/page/detail/svg.h"

namespace sgn::page {
namespace {
namespace modes {

using flib::decimal;
using sgn::normal_mode;

constexpr double width = 1000;
constexpr double left = 72;
constexpr double right = 24;
constexpr double top = 34;
constexpr double bottom = 270;

}  // namespace modes
}  // namespace

bool has_own_intensity(const sgn::report& of) {
    return std::ranges::any_of(
        of.modes, [](const normal_mode& each) { return std::isfinite(each.borrowed); });
}

double borrowed_by(const sgn::report& of, const normal_mode& mode) {
    if (has_own_intensity(of)) return mode.borrowed;
    const double size = sgn::length(mode.dipole_derivative_q);
    return size * size;
}

std::string modes_drawing(const sgn::report& of) {
    using namespace modes;
    double low = 0;
    double high = 100;
    std::vector<double> heights;
    for (const normal_mode& each : of.modes) {
        const double height = borrowed_by(of, each);
        heights.push_back(std::isfinite(height) ? height : 0);
        low = std::min(low, 1.05 * each.wavenumber);
        high = std::max(high, 1.05 * each.wavenumber);
    }
    const double most = std::ranges::max(heights);
    const svg::scale x{low, high, left, width - right};
    const svg::scale y{0, 1.08 * (most > 0 ? most : 1), bottom, top};

    std::string text = svg::rectangle({left, top}, width - left - right, bottom - top, "panel");
    const auto marks = svg::ticks(0, y.high, 5);
    const int decimals = svg::decimals_of(marks);
    for (const double mark : marks) {
        text += svg::line({left, y(mark)}, {width - right, y(mark)}, "grid") +
                svg::text({left - 8, y(mark) + 4}, decimal(mark, decimals), "small", "end");
    }
    for (const double mark : svg::ticks(low, high, 9)) {
        text += svg::line({x(mark), bottom}, {x(mark), bottom + 5}, "axis") +
                svg::text({x(mark), bottom + 20}, decimal(mark, 0), "small", "middle");
    }
    text += svg::text({width - right, bottom + 40}, "wavenumber (1/cm)", "label", "end") +
            svg::text({left, top - 14},
                      has_own_intensity(of) ? "borrowed intensity / intensity of the dipole itself"
                                            : "squared derivative of the dipole (au)",
                      "label");

    std::vector<std::size_t> by_height(of.modes.size());
    std::iota(by_height.begin(), by_height.end(), 0U);
    std::ranges::stable_sort(by_height, std::greater{}, [&](std::size_t i) { return heights[i]; });
    std::vector<double> named;
    std::string names;
    for (const std::size_t i : by_height) {
        const normal_mode& mode = of.modes[i];
        const svg::point tip{x(mode.wavenumber), y(heights[i])};
        const std::string kind = mode.wavenumber < 0 ? " imaginary" : "";
        text += svg::line({tip[0], bottom}, tip, "stick" + kind) +
                svg::circle(tip, 4, "knob" + kind,
                            "mode " + std::to_string(i + 1) + ": " + decimal(mode.wavenumber, 1) +
                                " 1/cm, " + decimal(heights[i], decimals + 2));
        const bool room = std::ranges::none_of(
            named, [&](double other) { return std::abs(other - tip[0]) < 84; });
        if (!room || named.size() >= 9) continue;
        named.push_back(tip[0]);
        names += svg::text({tip[0], tip[1] - 9},
                           std::to_string(i + 1) + ": " + decimal(mode.wavenumber, 0),
                           "small strong", tip[0] > width - right - 50 ? "end" : "middle");
    }
    return svg::drawing(width, bottom + 48, "chart",
                        "Borrowed intensity of the normal modes over their wavenumbers",
                        text + names);
}

}  // namespace sgn::page
