#include "sgn/check/report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "flib/io/stop_run.h"
#include "sgn/check/check.h"
#include "sgn/check/detail/set_findings.h"

namespace sgn {
namespace {

std::string shown(const displaced_job& of) {
    return flib::printable(of.name);
}

/// Signs that are suspect, then the set as a whole.
void add_set_findings(report& of) {
    if (!of.suspects.flips.empty()) {
        of.findings = suspect_findings(of.suspects.flips.front(), names_of(of.set));
    }
    for (finding& each :
         set_findings(of.set, of.derivatives, of.dipole_rules, of.force_rules, of.suspects)) {
        of.findings.push_back(std::move(each));
    }
    for (finding& each : moment_findings(of.velocity_rules, of.magnetic_rules)) {
        of.findings.push_back(std::move(each));
    }
}

void add_forces(report& of) {
    const auto& d = of.derivatives;
    of.force_constants = force_constants(d.forces);
    of.asymmetry = largest_asymmetry(d.forces);
    for (const vec3& force : of.set.jobs.front().forces) {
        for (const double component : force) {
            of.largest_force = std::max(of.largest_force, std::abs(component));
        }
    }
    const bool masses = std::all_of(of.set.atoms.begin(), of.set.atoms.end(),
                                    [](const atom& each) { return each.mass > 0; });
    if (masses) {
        of.modes =
            normal_modes(of.set.atoms, of.force_constants, d.dipole, of.set.jobs.front().dipole);
    }
}

/// What each file shows by itself and against the reference. (The sum rules are told by the set.)
void add_file_findings(report& of, const result_file& reference,
                       const std::vector<result_file>& files) {
    thresholds limits;
    limits.sum_rules = false;
    const auto verdicts = check(reference, files, limits).verdicts;
    for (std::size_t i = 0; i < verdicts.size(); ++i) {
        for (const finding& each : verdicts[i].findings) {
            of.findings.push_back({each.kind, each.text, i});
        }
    }
}

std::string signs_in_words(const std::vector<std::size_t>& jobs, const report& of) {
    return (jobs.size() == 1 ? "sign of " : "signs of ") + names_of(jobs, of);
}

/// All but what each file shows.
report analyse_whole(displaced_set&& set, bool sum_rules) {
    report result;
    result.set = std::move(set);
    if (!result.set.misfits.empty()) {
        const auto& [name, reason] = result.set.misfits.front();
        throw flib::io_error(name, 0, reason);
    }
    result.derivatives = differentiate(result.set);
    const auto& d = result.derivatives;
    if (!d.complete()) {
        throw flib::io_error(result.set.jobs.front().name, 0,
                             "coordinates are missing: no file displaces " +
                                 text_of(d.missing, result.set.atoms) + " (" +
                                 std::to_string(d.open_directions) + " of " +
                                 std::to_string(3 * result.set.atoms.size()) + " directions)");
    }
    result.dipole_rules = dipole_rules(result.set, d);
    result.force_rules = force_rules(result.set, d);
    result.velocity_rules = velocity_rules(result.set, d);
    result.magnetic_rules = magnetic_rules(result.set, d);
    if (sum_rules) {
        result.suspects = find_suspects(result.set, d, result.dipole_rules);
        add_set_findings(result);
    } else {
        // Whether force constants are symmetric is no question of sums.
        const std::array all{&result.dipole_rules, &result.force_rules, &result.velocity_rules,
                             &result.magnetic_rules};
        for (auto* each : all) each->satisfied = true;
        add_set_findings(result);
        for (auto* each : all) {
            *each = {};
            each->why_not = "sum rules are not wanted";
        }
    }
    add_noise(result.derivatives, result.set, sum_rules);
    result.signs = proof_of(result.set, d, result.dipole_rules, result.suspects);
    result.uncertainties = uncertainties_of(result.set, d, result.dipole_rules, result.signs);
    if (result.set.has_forces) add_forces(result);
    return result;
}

/// A job as a file. No element of a density was chosen: it is the same for all.
result_file file_of(const displaced_set& set, const displaced_job& job) {
    result_file file{job.name, {}};
    file.contents.parameters.sign = job.sign;
    file.contents.parameters.tden_maxloc = {1, 1};
    file.contents.parameters.tden_maxval = job.sign;
    for (std::size_t a = 0; a < set.atoms.size(); ++a) {
        const atom& each = set.atoms[a];
        file.contents.symbol.emplace_back(each.symbol);
        file.contents.nat.push_back(each.number);
        file.contents.mass.push_back(each.mass);
        file.contents.x.push_back(sum(each.x, job.moved.shift[a]));
    }
    file.contents.corrected_tdip = job.dipole;
    file.contents.frc = job.forces;
    return file;
}

}  // namespace

report analyse(const result_file& reference, const std::vector<result_file>& files,
               bool sum_rules) {
    report result = analyse_whole(make_set(reference, files), sum_rules);
    add_file_findings(result, reference, files);
    return result;
}

report analyse(const displaced_set& set, bool sum_rules) {
    report result = analyse_whole(displaced_set(set), sum_rules);
    std::vector<result_file> files;
    for (const displaced_job& each : set.jobs) files.push_back(file_of(set, each));
    const result_file reference = std::move(files.front());
    files.erase(files.begin());
    add_file_findings(result, reference, files);
    return result;
}

report analyse(const displaced_set& set, const found_signs& signs, bool sum_rules) {
    report result = analyse(with_signs(set, signs.signs), sum_rules);
    if (!signs.decided) {
        constexpr doubt kind = doubt::undecided_signs;
        result.findings.push_back({kind, text_of(kind, {signs.reason})});
    }
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
    if (!flips.empty() && flips.size() + of.signs.as_good.size() > 1) {
        const std::string others =
            flips.size() == 1
                ? "do more of them at once"
                : (flips[1].size() == 1 ? "does the " : "do the ") + signs_in_words(flips[1], of);
        return "Reversing the " + signs_in_words(flips.front(), of) + " mends the sums, and so " +
               others + ": which of them are wrong the dipoles do not tell.";
    }
    if (!flips.empty()) {
        const std::size_t wrong = flips.front().size();
        return (wrong == 1 ? std::string("One sign is wrong: ")
                           : std::to_string(wrong) + " signs are wrong: ") +
               names_of(flips.front(), of);
    }
    if (of.suspects.unsound) return "The derivatives of the dipole are unsound.";
    const std::string all = "All " + std::to_string(of.set.jobs.size()) + " files are fine";
    if (of.fine() && !of.dipole_rules.judged) {
        return all + " by themselves; the signs were not judged by the sum rules.";
    }
    if (of.fine() && of.signs.complete()) return all + ": no sign is wrong.";
    if (of.fine()) {
        return all + ": no sign is wrong that could be seen. " +
               reservation_of(of.signs, names_of(of.set));
    }
    const bool signs = of.dipole_rules.judged && of.dipole_rules.satisfied;
    return signs ? "The signs fit together, but something else deserves doubt."
                 : "The signs cannot be judged as a whole: " + of.dipole_rules.why_not + ".";
}

}  // namespace sgn
