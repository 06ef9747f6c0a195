#include "sgn_derive/report.h"

#include <algorithm>
#include <cmath>

#include "common/number_text.h"
#include "flib/io/stop_run.h"
#include "flib/util/units.h"
#include "sgn_check/check.h"

namespace sgn_derive {
namespace {

using sgn::job;
using sgn::role;
using tools::decimal;

/// Steps beyond which derivatives are off by more than a tenth.
constexpr double largest_step_error = 0.1;

/// Two derivatives of forces that should be equal may differ by so many of their uncertainties.
constexpr double largest_asymmetry = 8;

std::string shown(const job& of) {
    return flib::printable(of.name);
}

void add_set_findings(report& of) {
    for (std::size_t i = 1; i < of.set.jobs.size(); ++i) {
        if (of.set.jobs[i].is != role::one_sided) continue;
        of.findings.push_back(
            {"one_sided", "no file has the opposite displacement: a one-sided difference", i});
    }
    const double step = of.set.largest_step;
    const double error = sgn::relative_step_error(step / flib::bohr_radius);
    if (error > largest_step_error) {
        of.findings.push_back({"large_step", "a displacement of " + decimal(step, 3) +
                                                 " Angstrom is too large: derivatives may be off "
                                                 "by a tenth and more"});
    }
}

void add_rule_findings(report& of) {
    for (const std::size_t job :
         of.suspects.flips.empty() ? std::vector<std::size_t>{} : of.suspects.flips.front()) {
        of.findings.push_back({"suspect_sign",
                               of.suspects.flips.front().size() == 1
                                   ? "the sum rules hold if this sign is reversed"
                                   : "the sum rules hold if this sign and others are reversed",
                               job});
    }
    const auto& dipole = of.dipole_rules;
    if (dipole.judged && !dipole.satisfied) {
        of.findings.push_back(
            {"dipole_sum_rules", "the sum rules of the dipole fail: chi-squared " +
                                     decimal(dipole.chi2, 0) + " for " +
                                     std::to_string(dipole.sums) + " sums"});
    }
    if (of.suspects.unsound) {
        of.findings.push_back({"unsound",
                               "no few signs mend it: a crossing of states, a turned frame, a file "
                               "of another job, or too large a step?"});
    }
    const auto& forces = of.force_rules;
    if (forces.judged && !forces.satisfied) {
        of.findings.push_back(
            {"force_sum_rules", "the sum rules of the forces fail: a residue of " +
                                    decimal(forces.largest, 1) + " times its uncertainty"});
    }
}

void add_forces(report& of) {
    const auto& d = of.derivatives;
    of.force_constants = sgn::force_constants(d.forces);
    of.asymmetry = sgn::largest_asymmetry(d.forces);
    for (const sgn::vec3& force : of.set.jobs.front().forces) {
        for (const double component : force) {
            of.largest_force = std::max(of.largest_force, std::abs(component));
        }
    }
    const double uncertainty =
        std::hypot(d.force_step_error,
                   *std::max_element(d.force_uncertainty.begin(), d.force_uncertainty.end()));
    if (of.force_rules.judged && of.asymmetry > largest_asymmetry * uncertainty) {
        of.findings.push_back({"asymmetric_forces", "the force derivatives are not symmetric: " +
                                                        decimal(of.asymmetry, 4) +
                                                        " Hartree/Bohr^2"});
    }
    const bool masses = std::all_of(of.set.atoms.begin(), of.set.atoms.end(),
                                    [](const sgn::atom& each) { return each.mass > 0; });
    if (masses) {
        of.modes = sgn::normal_modes(of.set.atoms, of.force_constants, d.dipole,
                                     of.set.jobs.front().dipole);
    } else {
        of.findings.push_back({"no_masses", "an atom has no mass, so there are no wavenumbers"});
    }
}

/// What each file shows by itself and against the reference. (Missing partners and the sum rules
/// are told by the set.)
void add_file_findings(report& of, const sgn::result_file& reference,
                       const std::vector<sgn::result_file>& files) {
    sgn_check::thresholds limits;
    limits.sum_rules = false;
    const auto verdicts = sgn_check::check(reference, files, limits).verdicts;
    for (std::size_t i = 0; i < verdicts.size(); ++i) {
        for (const sgn_check::finding& each : verdicts[i].findings) {
            if (each.kind == sgn_check::doubt::no_partner) continue;
            of.findings.push_back({std::string(name_of(each.kind)), each.text, i});
        }
    }
}

}  // namespace

report analyse(const sgn::result_file& reference, const std::vector<sgn::result_file>& files) {
    report result;
    result.set = sgn::make_set(reference, files);
    if (!result.set.misfits.empty()) {
        const auto& [name, reason] = result.set.misfits.front();
        throw flib::io_error(name, 0, reason);
    }
    result.derivatives = sgn::differentiate(result.set);
    const auto& d = result.derivatives;
    if (!d.complete()) {
        throw flib::io_error(reference.name, 0,
                             "coordinates are missing: no file displaces " +
                                 sgn::text_of(d.missing, result.set.atoms) + " (" +
                                 std::to_string(d.open_directions) + " of " +
                                 std::to_string(3 * result.set.atoms.size()) + " directions)");
    }
    result.dipole_rules = sgn::dipole_rules(result.set, d);
    result.force_rules = sgn::force_rules(result.set, d);
    result.suspects = sgn::find_suspects(result.set, d, result.dipole_rules);
    add_rule_findings(result);
    add_set_findings(result);
    if (result.set.has_forces) add_forces(result);
    add_file_findings(result, reference, files);
    return result;
}

std::string names_of(const std::vector<std::size_t>& jobs, const report& of) {
    std::string text;
    for (const std::size_t i : jobs) {
        text += (text.empty() ? "" : ", ") + shown(of.set.jobs[i]);
    }
    return text;
}

std::string verdict_of(const report& of) {
    const auto& flips = of.suspects.flips;
    if (!flips.empty()) {
        const std::size_t wrong = flips.front().size();
        return (wrong == 1 ? std::string("One sign is wrong: ")
                           : std::to_string(wrong) + " signs are wrong: ") +
               names_of(flips.front(), of);
    }
    if (of.suspects.unsound) return "The derivatives of the dipole are unsound.";
    if (of.fine()) {
        return "All " + std::to_string(of.set.jobs.size()) + " files are fine: no sign is wrong.";
    }
    const bool signs = of.dipole_rules.judged && of.dipole_rules.satisfied;
    return signs ? "The signs fit together, but something else deserves doubt."
                 : "The signs cannot be judged as a whole: " + of.dipole_rules.why_not + ".";
}

}  // namespace sgn_derive
