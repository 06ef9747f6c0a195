#include "sgn/check/judge.h"

#include <numbers>

#include "flib/util/units.h"
#include "sgn/checkpoint/checkpoint.h"
#include "sgn/set/decimals.h"
#include "sgn/set/derivatives.h"

namespace sgn {

judgement judge(const std::string& file) {
    constexpr double step = 0.01 / flib::bohr_radius;
    constexpr int decimals = 4;
    const double uncertainty = rounding_error(decimals) / (std::numbers::sqrt2 * step);
    const double relative = relative_step_error(step);
    const checkpoint from = read_checkpoint(file);
    judgement result;
    result.atoms = from.atoms.size();
    result.dipole =
        rules_of(from.atoms, from.dipole, from.dipole_derivatives, uncertainty, relative);
    if (from.forces.empty()) {
        result.forces.why_not = "the checkpoint holds no gradient or no force constants";
    } else {
        // A checkpoint has nine digits of each.
        constexpr double printed = 1e-7;
        result.forces =
            rules_of(from.atoms, from.forces, from.force_derivatives, printed, relative);
    }
    return result;
}

}  // namespace sgn
