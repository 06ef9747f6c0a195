#include "sgn/check/detail/set_findings.h"

#include <algorithm>
#include <cmath>

#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "flib/util/units.h"
#include "sgn/set/decimals.h"
#include "sgn/set/listed.h"
#include "sgn/set/modes.h"

namespace sgn {
namespace {

using flib::decimal;

}  // namespace

std::vector<finding> set_findings(const displaced_set& set, const derivatives& of,
                                  const sum_rules& dipole, const sum_rules& forces,
                                  const suspects& wrong) {
    std::vector<finding> result;
    const auto add = [&](doubt kind, std::initializer_list<std::string_view> known = {}) {
        result.push_back({kind, text_of(kind, known)});
    };
    if (dipole.judged && !dipole.satisfied) {
        add(doubt::dipole_sum_rules, {decimal(dipole.chi2, 0), std::to_string(dipole.sums)});
    }
    if (wrong.unsound) add(doubt::unsound);
    if (forces.judged && !forces.satisfied) {
        add(doubt::force_sum_rules, {decimal(forces.largest, 1)});
    }
    const double error = relative_step_error(set.largest_step / flib::bohr_radius);
    if (error > limit_of(doubt::large_step)) {
        add(doubt::large_step, {decimal(set.largest_step, 3)});
    }
    if (!set.has_forces) return result;
    const double asymmetry = largest_asymmetry(of.forces);
    const double noise = std::hypot(1, forces.noise / rounding_error(set.force_decimals));
    const double uncertainty =
        std::hypot(of.force_step_error,
                   noise * *std::max_element(of.force_rounding.begin(), of.force_rounding.end()));
    if (forces.judged && asymmetry > limit_of(doubt::asymmetric_forces) * uncertainty) {
        add(doubt::asymmetric_forces, {decimal(asymmetry, 4)});
    }
    const bool masses =
        std::ranges::all_of(set.atoms, [](const atom& each) { return each.mass > 0; });
    if (!masses) add(doubt::no_masses);
    return result;
}

std::vector<finding> suspect_findings(const std::vector<std::size_t>& flip,
                                      const std::vector<std::string>& names) {
    std::vector<finding> result;
    for (const std::size_t job : flip) {
        std::vector<std::string> others;
        for (const std::size_t other : flip) {
            if (other != job) others.push_back(flib::printable(names[other]));
        }
        const std::string together =
            others.empty() ? "" : " together with that of " + listed(others);
        result.push_back({doubt::suspect_sign, text_of(doubt::suspect_sign, {together}), job});
    }
    return result;
}

std::vector<finding> moment_findings(const sum_rules& velocity, const sum_rules& magnetic) {
    std::vector<finding> result;
    const auto judge = [&](const sum_rules& rules, doubt kind) {
        if (!rules.judged || rules.satisfied) return;
        const std::string chi2 = decimal(rules.chi2, 0);
        result.push_back({kind, text_of(kind, {chi2, std::to_string(rules.sums)})});
    };
    judge(velocity, doubt::velocity_sum_rules);
    judge(magnetic, doubt::magnetic_sum_rules);
    return result;
}

}  // namespace sgn
