// Borrowed intensity as sticks over the wavenumber.
#include <algorithm>
#include <cmath>

#include "common/number_text.h"
#include "sgn_derive/html_drawings.h"
#include "sgn_derive/svg.h"

namespace sgn_derive {
namespace {

using sgn::normal_mode;

constexpr double width = 1000;
constexpr double left = 72;
constexpr double right = 24;
constexpr double top = 34;
constexpr double bottom = 270;

}  // namespace

bool has_own_intensity(const sgn::report& of) {
    return std::any_of(of.modes.begin(), of.modes.end(),
                       [](const normal_mode& each) { return std::isfinite(each.borrowed); });
}

double borrowed_by(const sgn::report& of, const normal_mode& mode) {
    if (has_own_intensity(of)) return mode.borrowed;
    const double size = sgn::length(mode.dipole_derivative_q);
    return size * size;
}

std::string modes_drawing(const sgn::report& of) {
    double low = 0;
    double high = 100;
    double most = 0;
    std::vector<double> heights;
    for (const normal_mode& each : of.modes) {
        const double height = borrowed_by(of, each);
        heights.push_back(std::isfinite(height) ? height : 0);
        low = std::min(low, 1.05 * each.wavenumber);
        high = std::max(high, 1.05 * each.wavenumber);
        most = std::max(most, heights.back());
    }
    if (!(most > 0)) most = 1;
    const svg::scale x{low, high, left, width - right};
    const svg::scale y{0, 1.08 * most, bottom, top};

    std::string text = svg::rectangle({left, top}, width - left - right, bottom - top, "panel");
    const auto heights_marked = svg::ticks(0, y.high, 5);
    int decimals = svg::decimals_of(heights_marked);
    for (const double mark : heights_marked) {
        text += svg::line({left, y(mark)}, {width - right, y(mark)}, "grid");
        text += svg::text({left - 8, y(mark) + 4}, tools::decimal(mark, decimals), "small", "end");
    }
    for (const double mark : svg::ticks(low, high, 9)) {
        text += svg::line({x(mark), bottom}, {x(mark), bottom + 5}, "axis");
        text += svg::text({x(mark), bottom + 20}, tools::decimal(mark, 0), "small", "middle");
    }
    text += svg::text({width - right, bottom + 40}, "wavenumber (1/cm)", "label", "end");
    text += svg::text({left, top - 14},
                      has_own_intensity(of) ? "borrowed intensity / intensity of the dipole itself"
                                            : "squared derivative of the dipole (au)",
                      "label");

    std::vector<std::size_t> by_height(of.modes.size());
    for (std::size_t i = 0; i < by_height.size(); ++i) by_height[i] = i;
    std::stable_sort(by_height.begin(), by_height.end(),
                     [&](std::size_t a, std::size_t b) { return heights[a] > heights[b]; });
    std::vector<double> named;
    std::string names;
    for (const std::size_t i : by_height) {
        const normal_mode& mode = of.modes[i];
        const double at = x(mode.wavenumber);
        const bool imaginary = mode.wavenumber < 0;
        text +=
            svg::line({at, bottom}, {at, y(heights[i])}, imaginary ? "stick imaginary" : "stick");
        text += svg::circle({at, y(heights[i])}, 4, imaginary ? "knob imaginary" : "knob",
                            "mode " + std::to_string(i + 1) + ": " +
                                tools::decimal(mode.wavenumber, 1) + " 1/cm, " +
                                tools::decimal(heights[i], decimals + 2));
        const bool room = std::none_of(named.begin(), named.end(),
                                       [&](double other) { return std::abs(other - at) < 84; });
        if (!room || named.size() >= 9) continue;
        named.push_back(at);
        const bool near_end = at > width - right - 50;
        names += svg::text({at, y(heights[i]) - 9},
                           std::to_string(i + 1) + ": " + tools::decimal(mode.wavenumber, 0),
                           "small strong", near_end ? "end" : "middle");
    }
    return svg::drawing(width, bottom + 48, "chart",
                        "Borrowed intensity of the normal modes over their wavenumbers",
                        text + names);
}

}  // namespace sgn_derive
