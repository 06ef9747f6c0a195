#include "sgn_derive/judge.h"

#include <numbers>

#include "flib/io/stop_run.h"
#include "flib/util/units.h"
#include "sgn/checkpoint/checkpoint.h"
#include "sgn/set/decimals.h"
#include "sgn/set/derivatives.h"
#include "sgn_derive/text.h"

namespace sgn_derive {

judgement judge(const std::string& file) {
    constexpr double step = 0.01 / flib::bohr_radius;
    constexpr int decimals = 4;
    const double uncertainty = sgn::rounding_error(decimals) / (std::numbers::sqrt2 * step);
    const double relative = sgn::relative_step_error(step);
    const sgn::checkpoint from = sgn::read_checkpoint(file);
    judgement result;
    result.atoms = from.atoms.size();
    result.dipole =
        sgn::rules_of(from.atoms, from.dipole, from.dipole_derivatives, uncertainty, relative);
    if (from.forces.empty()) {
        result.forces.why_not = "the checkpoint holds no gradient or no force constants";
    } else {
        // A checkpoint has nine digits of each.
        constexpr double printed = 1e-7;
        result.forces =
            sgn::rules_of(from.atoms, from.forces, from.force_derivatives, printed, relative);
    }
    return result;
}

std::string text_of(const judgement& of, const std::string& file, const tools::terminal& on) {
    const char* verdict = "The derivatives obey the sum rules.";
    if (!of.dipole.satisfied) {
        verdict = "The derivatives of the dipole are unsound.";
    } else if (!of.fine()) {
        verdict = "The force constants are unsound.";
    }
    return flib::printable(file) + ": derivatives for " + std::to_string(of.atoms) +
           (of.atoms == 1 ? " atom.\n" : " atoms.\n") + rules_text(of.dipole, of.forces, on) +
           residues_text(of.dipole, "dipole") + residues_text(of.forces, "forces") + '\n' +
           painted(verdict, of.fine() ? tools::paint::good : tools::paint::bad, on) + '\n';
}

}  // namespace sgn_derive
