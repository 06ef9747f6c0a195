#include "sgn/set/modes.h"

#include <Eigen/Geometry>
#include <cmath>

#include "sgn/set/detail/decompositions.h"
#include "sgn/set/detail/rigid_motions.h"
#include "sgn/set/detail/shape.h"

namespace sgn {
namespace {

/// An orthonormal basis of the mass-weighted coordinates without translations and rotations.
Eigen::MatrixXd internal_basis(std::span<const atom> atoms, const Eigen::VectorXd& mass) {
    const Eigen::Matrix3Xd x = centred(atoms, mass);
    const Eigen::Index n = x.cols();
    // The rotations are those about the axes across a linear molecule, or about any three.
    Eigen::Matrix3d axes = Eigen::Matrix3d::Identity();
    Eigen::Index rotations = n == 1 ? 0 : 3;
    if (const Eigen::Vector3d line = axis_of_line(x); rotations > 0 && line.norm() > 0) {
        rotations = 2;
        axes.col(0) = line.unitOrthogonal();
        axes.col(1) = line.cross(axes.col(0));
    }
    const rigid_motions motions(x, axes.leftCols(rotations));
    Eigen::MatrixXd rigid(3 * n, 3 + rotations);
    rigid << motions.translation, motions.rotation;
    for (Eigen::Index a = 0; a < n; ++a) rigid.middleRows(3 * a, 3) *= std::sqrt(mass[a]);
    return orthogonal_factor(rigid).rightCols(3 * n - rigid.cols());
}

/// The first of the largest components, equal ones of symmetric atoms being equal but for the last
/// digits.
Eigen::Index farthest_of(const Eigen::VectorXd& moved) {
    const double nearly = moved.cwiseAbs().maxCoeff() * (1 - 1e-6);
    Eigen::Index at = 0;
    while (std::abs(moved[at]) < nearly) ++at;
    return at;
}

void require_square(const table& force_derivatives) {
    const std::size_t rows = force_derivatives.rows;
    require_table("derivatives of the forces", force_derivatives, rows, rows);
}

}  // namespace

table force_constants(const table& force_derivatives) {
    require_square(force_derivatives);
    const auto j = view(force_derivatives);
    return table_of(-0.5 * (j + j.transpose()));
}

double largest_asymmetry(const table& force_derivatives) {
    require_square(force_derivatives);
    const auto j = view(force_derivatives);
    return (j - j.transpose()).cwiseAbs().maxCoeff();
}

std::vector<normal_mode> normal_modes(std::span<const atom> atoms, const table& force_constants,
                                      const table& dipole_derivatives, const vec3& dipole) {
    require_table("force constants", force_constants, 3 * atoms.size(), 3 * atoms.size());
    require_table("derivatives of the dipole", dipole_derivatives, 3 * atoms.size(), 3);
    Eigen::VectorXd mass(index(atoms.size()));
    for (std::size_t i = 0; i < atoms.size(); ++i) mass[index(i)] = atoms[i].mass;
    const Eigen::VectorXd inverse_root = (mass * electron_masses_per_u)
                                             .cwiseSqrt()
                                             .cwiseInverse()
                                             .replicate(1, 3)
                                             .transpose()
                                             .reshaped();
    const Eigen::MatrixXd basis = internal_basis(atoms, mass);
    if (basis.cols() == 0) return {};
    const Eigen::MatrixXd weighted =
        inverse_root.asDiagonal() * view(force_constants) * inverse_root.asDiagonal();
    const eigen_system solved =
        eigen_system_of(product(transposed_product(basis, weighted), basis));
    const Eigen::MatrixXd vectors = product(basis, solved.vectors);
    const double strength = std::pow(length(dipole), 2);

    std::vector<normal_mode> modes;
    for (Eigen::Index m = 0; m < vectors.cols(); ++m) {
        Eigen::VectorXd moved = inverse_root.cwiseProduct(vectors.col(m));
        if (moved[farthest_of(moved)] < 0) moved = -moved;

        normal_mode mode;
        const double eigenvalue = solved.values[m];
        const double frequency = std::sqrt(std::abs(eigenvalue));
        mode.wavenumber = std::copysign(frequency, eigenvalue) * wavenumber_per_hartree;
        mode.reduced_mass = 1 / (moved.squaredNorm() * electron_masses_per_u);
        const Eigen::Vector3d derivative = view(dipole_derivatives).transpose() * moved;
        const double amplitude = eigenvalue > 0 ? 1 / std::sqrt(frequency) : std::nan("");
        const Eigen::VectorXd shown = moved / moved.norm();
        for (Eigen::Index k = 0; k < 3; ++k) {
            const auto at = static_cast<std::size_t>(k);
            mode.dipole_derivative[at] = derivative[k];
            mode.dipole_derivative_q[at] = derivative[k] * amplitude;
        }
        if (strength > 0) {
            mode.borrowed = std::pow(length(mode.dipole_derivative_q), 2) / strength;
        }
        for (Eigen::Index a = 0; a < mass.size(); ++a) {
            mode.displacement.push_back({shown[3 * a], shown[3 * a + 1], shown[3 * a + 2]});
        }
        modes.push_back(std::move(mode));
    }
    return modes;
}

std::vector<double> by_mode(const normal_mode& mode, const table& derivatives) {
    require_count("rows of derivatives", derivatives.rows, 3 * mode.displacement.size());
    // Of length 1 is the Cartesian displacement; that by the coordinate is shorter.
    const double length = 1 / std::sqrt(mode.reduced_mass * electron_masses_per_u);
    std::vector<double> result(derivatives.columns);
    for (std::size_t c = 0; c < derivatives.rows; ++c) {
        for (std::size_t k = 0; k < result.size(); ++k) {
            result[k] += derivatives(c, k) * mode.displacement[c / 3][c % 3] * length;
        }
    }
    return result;
}

double dimensionless_factor(const normal_mode& mode) {
    // Not a number of a negative wavenumber.
    return 1 / std::sqrt(mode.wavenumber / wavenumber_per_hartree);
}

}  // namespace sgn
