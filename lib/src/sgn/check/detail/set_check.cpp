#include "sgn/check/detail/set_check.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "sgn/check/detail/set_findings.h"
#include "sgn/set/derivatives.h"

namespace sgn {
namespace {

/// Whether a file's geometry and dipole can be compared with the others'.
bool takes_part(const verdict& one) {
    return !(one.has(doubt::not_finite) || one.has(doubt::sign_zero) ||
             one.has(doubt::other_sizes) || one.has(doubt::other_atoms) || one.has(doubt::turned));
}

/// The files of a set that take part, the reference first.
struct participants {
    std::vector<std::size_t> place;  ///< of each among the verdicts
    std::vector<result_file> files;

    displaced_set set() const { return make_set(files.front(), std::span(files).subspan(1)); }
};

participants participants_of(const assessment& of) {
    participants result;
    for (std::size_t i = 0; i < of.verdicts.size(); ++i) {
        if (i > 0 && !takes_part(of.verdicts[i])) continue;
        result.place.push_back(i);
        result.files.push_back(*of.verdicts[i].file);
    }
    return result;
}

/// Adds a finding for every sign whose reversal, alone or with a few others, mends the sums.
void add_suspects(assessment& of) {
    const std::vector<std::string> names = names_of(of);
    for (const std::vector<std::size_t>& flip : of.suspects.flips) {
        for (finding& each : suspect_findings(flip, names)) {
            verdict& one = of.verdicts[each.job];
            if (!one.has(doubt::suspect_sign)) one.findings.push_back(std::move(each));
        }
    }
}

/// Looks for geometries that are turned and whose dipoles are not: the sums come out better with
/// dipoles turned along, pair by pair.
void judge_frames(assessment& of, displaced_set set, const derivatives& made,
                  std::span<const std::size_t> place) {
    constexpr double noticed = 30;  // more than the scatter of chi-squared
    constexpr double clearly = 4;
    const auto turns_along = [&](std::size_t job) {
        const verdict& one = of.verdicts[place[job]];
        if (!(one.rotation > seen_rotation)) return false;
        vec3& dipole = set.jobs[job].dipole;
        dipole = one.frame.applied_to(dipole);
        return true;
    };
    double chi2 = of.rules.chi2;
    std::vector<std::size_t> apart;
    for (std::size_t job = 1; job < set.jobs.size(); ++job) {
        const std::size_t partner = set.jobs[job].other;
        if (set.jobs[job].is != role::paired || partner < job) continue;
        const std::array before{set.jobs[job].dipole, set.jobs[partner].dipole};
        const bool first = turns_along(job);
        const bool second = turns_along(partner);
        if (!first && !second) continue;
        const double turned = dipole_rules(set, made).chi2;
        if (turned + noticed < chi2) {
            chi2 = turned;
            if (first) apart.push_back(place[job]);
            if (second) apart.push_back(place[partner]);
        } else {
            set.jobs[job].dipole = before[0];
            set.jobs[partner].dipole = before[1];
        }
    }
    if (!(clearly * chi2 < of.rules.chi2)) return;
    for (const std::size_t i : apart) {
        verdict& one = of.verdicts[i];
        one.add(doubt::other_frame, {flib::decimal(one.rotation, 2)});
    }
}

}  // namespace

void judge_set(assessment& of, bool pairs) {
    if (!takes_part(of.verdicts.front())) {
        of.rules.why_not = "the reference is unfit";
        return;
    }
    const participants taking_part = participants_of(of);
    try {
        const displaced_set set = taking_part.set();
        const derivatives made = differentiate(set);
        of.rules = dipole_rules(set, made);
        of.suspects = find_suspects(set, made, of.rules);
        of.signs = proof_of(set, made, of.rules, of.suspects);
        if (pairs && made.complete()) {
            of.findings = set_findings(set, made, of.rules, force_rules(set, made), of.suspects);
        }
        if (!of.rules.judged) return;
        if (!of.rules.satisfied && of.suspects.flips.empty()) {
            judge_frames(of, set, made, taking_part.place);
        }
    } catch (const flib::run_error&) {
        of.rules = {};
        of.rules.why_not = "no file is displaced";
        return;
    }
    const auto put_in_place = [&](std::vector<std::size_t>& jobs) {
        for (std::size_t& job : jobs) job = taking_part.place[job];
    };
    std::ranges::for_each(of.suspects.flips, put_in_place);
    std::ranges::for_each(of.suspects.as_good, put_in_place);
    std::ranges::for_each(of.signs.as_good, put_in_place);
    put_in_place(of.suspects.unseen);
    put_in_place(of.signs.unseen);
    add_suspects(of);
}

}  // namespace sgn
