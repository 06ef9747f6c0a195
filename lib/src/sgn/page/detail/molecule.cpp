// The numbered atoms, seen so that most of the molecule faces the reader.
#include "sgn/set/molecule.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "sgn/page/detail/drawings.h"
#include "sgn/page/detail/svg.h"
#include "sgn/set/input_numbers.h"

namespace sgn::page {
namespace {
namespace molecule {

using sgn::vec3;
using svg::point;

constexpr double width = 460;
constexpr double height = 360;
constexpr double margin = 46;

/// The class that gives an element its colour.
std::string_view kind_of(std::int32_t number) {
    switch (number) {
        case 1:
            return "atom el-h";
        case 6:
            return "atom el-c";
        case 7:
            return "atom el-n";
        case 8:
            return "atom el-o";
        case 9:
        case 17:
            return "atom el-hal";
        case 15:
        case 16:
            return "atom el-s";
        default:
            return "atom el-x";
    }
}

/// Where things are on the paper, and how near they are to the reader.
struct view {
    std::array<vec3, 3> axes;  ///< to the right, up, and towards the reader
    vec3 centre;
    double per_angstrom;

    vec3 turned(const vec3& x) const {
        return {sgn::dot(axes[0], x), sgn::dot(axes[1], x), sgn::dot(axes[2], x)};
    }
    vec3 placed(const vec3& x) const { return turned(sgn::difference(x, centre)); }
    point place(const vec3& placed) const {
        return {width / 2 + per_angstrom * placed[0], height / 2 - per_angstrom * placed[1]};
    }
};

/// Along the axes of the molecule, a little from the side and from above.
view view_of(const std::vector<sgn::atom>& atoms) {
    const double c = std::cos(-0.45);
    const double s = std::sin(-0.45);
    const double up_c = std::cos(0.35);
    const double up_s = std::sin(0.35);
    const auto axes = sgn::principal_axes(atoms);
    const auto along = [&](double by_a, double by_b, double by_n) {
        return sgn::sum(sgn::sum(sgn::scaled(by_a, axes[0]), sgn::scaled(by_b, axes[1])),
                        sgn::scaled(by_n, axes[2]));
    };
    view result{
        {along(c, 0, s), along(up_s * s, up_c, -up_s * c), along(-up_c * s, up_s, up_c * c)},
        sgn::centroid(atoms),
        0};
    vec3 least = result.placed(atoms.front().x);
    vec3 most = least;
    for (const sgn::atom& each : atoms) {
        const vec3 at = result.placed(each.x);
        for (std::size_t k = 0; k < 3; ++k) {
            least[k] = std::min(least[k], at[k]);
            most[k] = std::max(most[k], at[k]);
        }
    }
    for (std::size_t k = 0; k < 3; ++k) {
        const double off = (least[k] + most[k]) / 2;
        result.centre = sgn::sum(result.centre, sgn::scaled(off, result.axes[k]));
    }
    const auto fitting = [&](std::size_t k, double room) {
        return (room - 2 * margin) / std::max(most[k] - least[k], 0.5);
    };
    constexpr double largest = 150;
    result.per_angstrom = std::min({fitting(0, width), fitting(1, height), largest});
    return result;
}

std::string arrow(const point& from, const point& to, std::string_view kind) {
    const double length = std::hypot(to[0] - from[0], to[1] - from[1]);
    if (length < 1) return svg::circle(from, 3, kind);
    const double c = (to[0] - from[0]) / length;
    const double s = (to[1] - from[1]) / length;
    constexpr double head = 9;
    const auto back = [&](double side) {
        return point{to[0] - head * c - 0.5 * side * head * s,
                     to[1] - head * s + 0.5 * side * head * c};
    };
    return svg::line(from, to, kind) + svg::path({back(1), to, back(-1)}, kind);
}

/// From `origin` along a direction that is turned as one sees it, and `down`.
point end_of(const point& origin, double length, const vec3& direction, double down = 0) {
    return {origin[0] + length * direction[0], origin[1] - length * direction[1] + down};
}

/// The directions of the frame, in a corner.
std::string frame_of(const view& from) {
    constexpr double size = 26;
    const point origin{44, height - 40};
    std::string text;
    for (std::size_t k = 0; k < 3; ++k) {
        const vec3 axis{from.axes[0][k], from.axes[1][k], from.axes[2][k]};
        text += svg::line(origin, end_of(origin, size, axis), "axis") +
                svg::text(end_of(origin, 1.4 * size, axis, 4), std::string(1, sgn::axis_names[k]),
                          "small", "middle");
    }
    return text;
}

}  // namespace molecule
}  // namespace

std::string molecule_drawing(const sgn::report& of) {
    using namespace molecule;
    const std::vector<sgn::atom>& atoms = of.set.atoms;
    const view from = view_of(atoms);
    std::vector<vec3> at;
    at.reserve(atoms.size());
    for (const sgn::atom& each : atoms) at.push_back(from.placed(each.x));
    std::vector<std::size_t> order(atoms.size());
    std::iota(order.begin(), order.end(), 0U);
    std::ranges::stable_sort(order, {}, [&](std::size_t i) { return at[i][2]; });

    // Bonds lie behind the nearer of their atoms.
    std::string text = frame_of(from);
    std::vector<bool> drawn(atoms.size());
    for (const std::size_t i : order) {
        for (std::size_t j = 0; j < atoms.size(); ++j) {
            if (!drawn[j] || !are_bonded(atoms[i], atoms[j])) continue;
            text += svg::line(from.place(at[i]), from.place(at[j]), "bond");
        }
        drawn[i] = true;
    }
    std::string circles;
    const double shrink = atoms.size() > 40 ? 0.8 : 1.0;
    for (const std::size_t i : order) {
        const double radius = std::clamp(
            shrink * from.per_angstrom * (0.16 + 0.22 * sgn::covalent_radius(atoms[i].number)), 7.0,
            34.0);
        const point place = from.place(at[i]);
        const std::string number = std::to_string(number_of(atoms[i], i));
        const std::string name = flib::printable(atoms[i].symbol) + number;
        const vec3& x = atoms[i].x;
        circles +=
            svg::circle(place, radius, kind_of(atoms[i].number),
                        name + ": " + flib::decimal(x[0], 6) + ", " + flib::decimal(x[1], 6) +
                            ", " + flib::decimal(x[2], 6) + " \u00C5");
        const bool small = radius < 13;
        circles += svg::text({place[0], place[1] + (small ? 3 : 4.5)}, small ? number : name,
                             small ? "atom-name small-name" : "atom-name", "middle");
    }
    // The dipole, as it comes towards the reader or not.
    const vec3& dipole = of.set.jobs.front().dipole;
    if (const double size = sgn::length(dipole); size > 0) {
        const vec3 direction = from.turned(sgn::scaled(1 / size, dipole));
        constexpr point middle{width / 2, height / 2};
        constexpr double longest = 0.36 * height;
        const std::string drawing = arrow(middle, end_of(middle, longest, direction), "dipole") +
                                    svg::text(end_of(middle, longest + 16, direction, 5), "\u03BC",
                                              "dipole-name", "middle");
        circles = direction[2] > 0 ? circles + drawing : drawing + circles;
    }
    return svg::drawing(width, height, "molecule", "The molecule with numbered atoms",
                        text + circles);
}

}  // namespace sgn::page
