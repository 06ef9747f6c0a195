#include "sgn/set/detail/rigid_motions.h"

#include <Eigen/Geometry>

#include "sgn/set/detail/decompositions.h"

namespace sgn {
namespace {

Eigen::Matrix3Xd about_centroid(std::span<const atom> atoms) {
    return centred(atoms, Eigen::VectorXd::Ones(index(atoms.size())));
}

/// The axes of the frame, less their part along a linear molecule.
Eigen::Matrix3Xd axes_of(const Eigen::Matrix3Xd& x) {
    if (x.cwiseAbs().maxCoeff() < 1e-6) return Eigen::Matrix3d::Zero();  // a single atom
    const Eigen::Vector3d line = axis_of_line(x);
    return Eigen::Matrix3d::Identity() - line * line.transpose();
}

}  // namespace

rigid_motions::rigid_motions(std::span<const atom> atoms)
    : rigid_motions(about_centroid(atoms), axes_of(about_centroid(atoms))) {}

rigid_motions::rigid_motions(const Eigen::Matrix3Xd& x, const Eigen::Matrix3Xd& about)
    : axes(about), translation(3 * x.cols(), 3), rotation(3 * x.cols(), about.cols()) {
    for (Eigen::Index a = 0; a < x.cols(); ++a) {
        translation.middleRows(3 * a, 3).setIdentity();
        for (Eigen::Index l = 0; l < axes.cols(); ++l) {
            const Eigen::Vector3d axis = axes.col(l);
            rotation.block<3, 1>(3 * a, l) = axis.cross(x.col(a));
        }
    }
}

bool rigid_motions::turns(Eigen::Index l) const {
    return axes.col(l).norm() > 1e-3;
}

motion_sums::motion_sums(const rigid_motions& motions, const Eigen::MatrixXd& by_coordinate,
                         const Eigen::VectorXd& y)
    : translation(transposed_product(motions.translation, by_coordinate)),
      rotation(transposed_product(motions.rotation, by_coordinate)) {
    for (Eigen::Index l = 0; l < rotation.rows(); ++l) {
        const Eigen::Vector3d axis = motions.axes.col(l);
        for (Eigen::Index k = 0; k < y.size(); k += 3) {
            const Eigen::Vector3d vector = y.segment<3>(k);
            rotation.block<1, 3>(l, k) -= axis.cross(vector).transpose();
        }
    }
}

sums_of_jobs::sums_of_jobs(const rigid_motions& motions, const table& weights) {
    Eigen::Index turning = 0;
    motion.resize(6, motions.translation.rows());
    axes.resize(3, 3);
    motion.topRows(3) = motions.translation.transpose();
    for (Eigen::Index l = 0; l < 3; ++l) {
        if (!motions.turns(l)) continue;
        motion.row(3 + turning) = motions.rotation.col(l).transpose();
        axes.col(turning++) = motions.axes.col(l);
    }
    motion.conservativeResize(3 + turning, Eigen::NoChange);
    axes.conservativeResize(Eigen::NoChange, turning);
    weight = motion * view(weights);
}

Eigen::Matrix3Xd sums_of_jobs::share(std::size_t job, const Eigen::Vector3d& vector) const {
    Eigen::Matrix3Xd result = vector * weight.col(index(job)).transpose();
    for (Eigen::Index l = 0; job == 0 && l < axes.cols(); ++l) {
        const Eigen::Vector3d axis = axes.col(l);
        result.col(3 + l) -= axis.cross(vector);
    }
    return result;
}

Eigen::VectorXd sums_of_jobs::variance() const {
    Eigen::VectorXd result = weight.rowwise().squaredNorm();
    // The vector itself, which turns along.
    result.tail(axes.cols()).array() += 1;
    return result;
}

}  // namespace sgn
