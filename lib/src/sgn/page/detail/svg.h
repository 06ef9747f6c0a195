// Pieces of drawings and of the page around them.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace sgn::page::svg {

using point = std::array<double, 2>;

/// Text as it may stand between tags or in quotes: & < > " ' escaped, control
/// characters and bytes that are not UTF-8 made visible.
std::string escaped(std::string_view text);

/// A coordinate: two decimals, no trailing zeros.
std::string number(double value);

/// From values to places, straight.
struct scale {
    double low = 0;
    double high = 1;
    double at_low = 0;
    double at_high = 1;

    double operator()(double value) const {
        return at_low + (value - low) / (high - low) * (at_high - at_low);
    }
};

/// Round values between two bounds, some `about` of them. `low` is less than
/// `high`.
std::vector<double> ticks(double low, double high, int about);

/// How many decimals tell such values apart.
int decimals_of(const std::vector<double>& ticks);

// Elements of a drawing; `kind` is their class, which decides how they look.
std::string line(point from, point to, std::string_view kind);
std::string path(const std::vector<point>& points, std::string_view kind);
std::string rectangle(point corner, double width, double height, std::string_view kind);
/// With a text that is shown when a pointer rests on it.
std::string circle(point centre, double radius, std::string_view kind, std::string_view hint = {});
/// `anchor`: "start", "middle" or "end"; turned by `degrees` about its place.
std::string text(point place, std::string_view words, std::string_view kind,
                 std::string_view anchor = "start", double degrees = 0);

/// The whole drawing; `label` says what it shows, for those who cannot see it.
std::string drawing(double width, double height, std::string_view kind, std::string_view label,
                    const std::string& contents);

}  // namespace sgn::page::svg
