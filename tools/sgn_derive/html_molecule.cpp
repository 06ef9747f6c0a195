// The numbered atoms, seen so that most of the molecule faces the reader.
#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>
#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

#include "common/number_text.h"
#include "flib/io/stop_run.h"
#include "sgn_derive/html_drawings.h"
#include "sgn_derive/svg.h"

namespace sgn_derive {
namespace {

using Eigen::Vector3d;
using svg::point;

constexpr double width = 460;
constexpr double height = 360;
constexpr double margin = 46;

/// Covalent radii of the elements from hydrogen on (pm), single bonds.
constexpr std::array<int, 96> covalent_radii{
    31,  28,  128, 96,  84,  76,  71,  66,  57,  58,  166, 141, 121, 111, 107, 105,
    102, 106, 203, 176, 170, 160, 153, 139, 139, 132, 126, 124, 132, 122, 122, 120,
    119, 120, 120, 116, 220, 195, 190, 175, 164, 154, 147, 146, 142, 139, 145, 144,
    142, 139, 139, 138, 139, 140, 244, 215, 207, 204, 203, 201, 199, 198, 198, 196,
    194, 192, 192, 189, 190, 187, 187, 175, 170, 162, 151, 144, 141, 136, 136, 132,
    145, 146, 148, 140, 150, 150, 260, 221, 215, 206, 200, 196, 190, 187, 180, 169};

/// Angstrom.
double radius_of(const sgn::atom& atom) {
    const bool known =
        atom.number >= 1 && atom.number <= static_cast<std::int32_t>(covalent_radii.size());
    const int picometre = known ? covalent_radii[static_cast<std::size_t>(atom.number) - 1] : 150;
    return 0.01 * picometre;
}

bool are_bonded(const sgn::atom& a, const sgn::atom& b) {
    constexpr double stretched = 1.25;  // of the sum of the radii
    return sgn::length(sgn::difference(a.x, b.x)) <= stretched * (radius_of(a) + radius_of(b));
}

/// The class that gives an element its colour.
std::string kind_of(const sgn::atom& atom) {
    switch (atom.number) {
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
    Eigen::Matrix3d turn = Eigen::Matrix3d::Identity();
    Vector3d centre = Vector3d::Zero();
    double per_angstrom = 60;

    Vector3d turned(const sgn::vec3& x) const {
        return turn * (Vector3d(x[0], x[1], x[2]) - centre);
    }
    point place(const Vector3d& x) const {
        return {width / 2 + per_angstrom * x[0], height / 2 - per_angstrom * x[1]};
    }
};

/// Along the axes of inertia, a little from the side and from above.
view view_of(const std::vector<sgn::atom>& atoms) {
    view result;
    for (const auto& each : atoms) result.centre += Vector3d(each.x[0], each.x[1], each.x[2]);
    result.centre /= static_cast<double>(atoms.size());
    Eigen::Matrix3d spread = Eigen::Matrix3d::Zero();
    for (const auto& each : atoms) {
        const Vector3d x = Vector3d(each.x[0], each.x[1], each.x[2]) - result.centre;
        spread += x * x.transpose();
    }
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(spread);
    Eigen::Matrix3d axes;
    axes.row(0) = solver.eigenvectors().col(2).transpose();
    axes.row(1) = solver.eigenvectors().col(1).transpose();
    for (int i = 0; i < 2; ++i) {  // the same way round whatever the solver does
        Eigen::Index largest = 0;
        axes.row(i).cwiseAbs().maxCoeff(&largest);
        if (axes(i, largest) < 0) axes.row(i) *= -1;
    }
    axes.row(2) = axes.row(0).cross(axes.row(1));
    result.turn =
        (Eigen::AngleAxisd(0.35, Vector3d::UnitX()) * Eigen::AngleAxisd(-0.45, Vector3d::UnitY()))
            .toRotationMatrix() *
        axes;
    Vector3d least = result.turned(atoms.front().x);
    Vector3d most = least;
    for (const auto& each : atoms) {
        least = least.cwiseMin(result.turned(each.x));
        most = most.cwiseMax(result.turned(each.x));
    }
    result.centre += result.turn.transpose() * (least + most) / 2;
    const Vector3d size = (most - least).cwiseMax(0.5);
    constexpr double largest = 150;
    result.per_angstrom =
        std::min({(width - 2 * margin) / size[0], (height - 2 * margin) / size[1], largest});
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

/// The directions of the frame, in a corner.
std::string frame_of(const view& from) {
    constexpr double size = 26;
    const point origin{44, height - 40};
    std::string text;
    for (int k = 0; k < 3; ++k) {
        const Vector3d axis = from.turn.col(k);
        const point end{origin[0] + size * axis[0], origin[1] - size * axis[1]};
        const point beyond{origin[0] + 1.4 * size * axis[0], origin[1] - 1.4 * size * axis[1] + 4};
        text += svg::line(origin, end, "axis");
        text += svg::text(beyond, std::string(1, sgn::axis_names[static_cast<std::size_t>(k)]),
                          "small", "middle");
    }
    return text;
}

/// The dipole, as it comes towards the reader or not.
std::string dipole_arrow(const sgn::report& of, const view& from, bool towards) {
    const sgn::vec3& dipole = of.set.jobs.front().dipole;
    const double size = sgn::length(dipole);
    if (!(size > 0)) return {};
    if (towards != ((from.turn * Vector3d(dipole[0], dipole[1], dipole[2]))[2] > 0)) return {};
    const Vector3d direction = from.turn * Vector3d(dipole[0], dipole[1], dipole[2]) / size;
    const double longest = 0.36 * height;
    const point tip{width / 2 + longest * direction[0], height / 2 - longest * direction[1]};
    const point name{width / 2 + (longest + 16) * direction[0],
                     height / 2 - (longest + 16) * direction[1] + 5};
    return arrow({width / 2, height / 2}, tip, "dipole") +
           svg::text(name, "\u03BC", "dipole-name", "middle");
}

}  // namespace

std::string molecule_drawing(const sgn::report& of) {
    const std::vector<sgn::atom>& atoms = of.set.atoms;
    const view from = view_of(atoms);
    std::vector<Vector3d> at;
    at.reserve(atoms.size());
    for (const auto& each : atoms) at.push_back(from.turned(each.x));
    std::vector<std::size_t> order(atoms.size());
    std::iota(order.begin(), order.end(), 0U);
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return at[a][2] < at[b][2]; });

    // Bonds lie behind the nearer of their atoms.
    std::string text = frame_of(from);
    const double shrink = atoms.size() > 40 ? 0.8 : 1.0;
    std::vector<bool> drawn(atoms.size());
    for (const std::size_t i : order) {
        for (std::size_t j = 0; j < atoms.size(); ++j) {
            if (!drawn[j] || !are_bonded(atoms[i], atoms[j])) continue;
            text += svg::line(from.place(at[i]), from.place(at[j]), "bond");
        }
        drawn[i] = true;
    }
    text += dipole_arrow(of, from, false);
    for (const std::size_t i : order) {
        const double radius =
            std::clamp(shrink * from.per_angstrom * (0.16 + 0.22 * radius_of(atoms[i])), 7.0, 34.0);
        const point place = from.place(at[i]);
        const std::string name = flib::printable(atoms[i].symbol) + std::to_string(i + 1);
        const auto& x = atoms[i].x;
        text += svg::circle(place, radius, kind_of(atoms[i]),
                            name + ": " + tools::decimal(x[0], 6) + ", " + tools::decimal(x[1], 6) +
                                ", " + tools::decimal(x[2], 6) + " \u00C5");
        const bool small = radius < 13;
        text += svg::text({place[0], place[1] + (small ? 3 : 4.5)},
                          small ? std::to_string(i + 1) : name,
                          small ? "atom-name small-name" : "atom-name", "middle");
    }
    text += dipole_arrow(of, from, true);
    return svg::drawing(width, height, "molecule", "The molecule with numbered atoms", text);
}

}  // namespace sgn_derive
