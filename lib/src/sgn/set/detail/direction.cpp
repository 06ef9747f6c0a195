#include "sgn/set/detail/direction.h"

#include <cmath>

#include "flib/util/units.h"
#include "sgn/set/detail/linear_algebra.h"

namespace sgn {

direction::direction(std::span<const vec3> shift) : d(index(3 * shift.size())) {
    for (std::size_t i = 0; i < shift.size(); ++i) {
        d.segment<3>(index(3 * i)) = vector(shift[i]) / flib::bohr_radius;
    }
    length = d.norm();
    d.cwiseAbs().maxCoeff(&largest);
}

bool direction::is_along(const direction& other) const {
    if (length == 0 || other.length == 0) return false;
    constexpr double angle = 1e-3;
    // Most directions differ in the component that is the largest of one of them.
    const double share = std::abs(d[largest]) / length;
    if (std::abs(std::abs(other.d[largest]) / other.length - share) > 2 * angle) return false;
    return std::abs(d.dot(other.d)) > (1 - angle * angle / 2) * length * other.length;
}

}  // namespace sgn
