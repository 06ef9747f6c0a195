#include "sgn/set/molecule.h"

#include <Eigen/Geometry>
#include <algorithm>
#include <vector>

#include "flib/io/stop_run.h"
#include "flib/util/sum_formula.h"
#include "sgn/set/detail/decompositions.h"

namespace sgn {
namespace {

using Eigen::Vector3d;

/// Covalent radii of the elements from hydrogen on (pm), single bonds.
constexpr std::array<int, 96> covalent_radii{
    31,  28,  128, 96,  84,  76,  71,  66,  57,  58,  166, 141, 121, 111, 107, 105,
    102, 106, 203, 176, 170, 160, 153, 139, 139, 132, 126, 124, 132, 122, 122, 120,
    119, 120, 120, 116, 220, 195, 190, 175, 164, 154, 147, 146, 142, 139, 145, 144,
    142, 139, 139, 138, 139, 140, 244, 215, 207, 204, 203, 201, 199, 198, 198, 196,
    194, 192, 192, 189, 190, 187, 187, 175, 170, 162, 151, 144, 141, 136, 136, 132,
    145, 146, 148, 140, 150, 150, 260, 221, 215, 206, 200, 196, 190, 187, 180, 169};

Vector3d mean_of(std::span<const atom> atoms) {
    Vector3d sum = Vector3d::Zero();
    for (const atom& each : atoms) sum += Vector3d(each.x[0], each.x[1], each.x[2]);
    return sum / static_cast<double>(atoms.size());
}

}  // namespace

std::string formula_of(std::span<const atom> atoms) {
    std::vector<std::string> symbols(atoms.size());
    std::ranges::transform(atoms, symbols.begin(),
                           [](const atom& each) { return flib::printable(each.symbol); });
    return flib::sum_formula(symbols);
}

double covalent_radius(std::int32_t number) {
    const bool known = number >= 1 && number <= static_cast<std::int32_t>(covalent_radii.size());
    return 0.01 * (known ? covalent_radii[static_cast<std::size_t>(number) - 1] : 150);
}

bool are_bonded(const atom& a, const atom& b) {
    constexpr double stretched = 1.25;  // of the sum of the radii
    return length(difference(a.x, b.x)) <=
           stretched * (covalent_radius(a.number) + covalent_radius(b.number));
}

std::array<vec3, 3> principal_axes(std::span<const atom> atoms) {
    const Vector3d centre = mean_of(atoms);
    Eigen::Matrix3d spread = Eigen::Matrix3d::Zero();
    for (const atom& each : atoms) {
        const Vector3d x = Vector3d(each.x[0], each.x[1], each.x[2]) - centre;
        spread += x * x.transpose();
    }
    const Eigen::Matrix3d vectors = spread_axes_of(spread).vectors;
    Eigen::Matrix3d axes;
    axes.col(0) = vectors.col(2);
    axes.col(1) = vectors.col(1);
    for (int i = 0; i < 2; ++i) {  // the same way round whatever the solver does
        Eigen::Index largest = 0;
        axes.col(i).cwiseAbs().maxCoeff(&largest);
        if (axes(largest, i) < 0) axes.col(i) *= -1;
    }
    axes.col(2) = axes.col(0).cross(axes.col(1));
    std::array<vec3, 3> result;
    for (std::size_t i = 0; i < 3; ++i) {
        const Vector3d axis = axes.col(static_cast<Eigen::Index>(i));
        result[i] = {axis[0], axis[1], axis[2]};
    }
    return result;
}

vec3 centroid(std::span<const atom> atoms) {
    const Vector3d mean = mean_of(atoms);
    return {mean[0], mean[1], mean[2]};
}

}  // namespace sgn
