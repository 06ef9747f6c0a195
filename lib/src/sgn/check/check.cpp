#include "sgn/check/check.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "sgn/check/detail/set_check.h"
#include "sgn/set/same_atoms.h"

namespace sgn {
namespace {

using flib::decimal;

bool is_finite(const sgn_contents& contents) {
    return std::isfinite(contents.parameters.tden_maxval) && not_finite(contents).empty();
}

std::string element_text(const sgn_parameters& parameters) {
    const auto [row, column] = parameters.tden_maxloc;
    return std::to_string(row) + "," + std::to_string(column);
}

/// Which sizes differ, or nothing.
std::string other_sizes(const sgn_parameters& file, const sgn_parameters& reference) {
    std::string text;
    for (const auto& [name, size] : sgn_counts) {
        if (file.*size == reference.*size) continue;
        if (!text.empty()) text += ", ";
        text.append(name).append(" ").append(std::to_string(file.*size));
        text.append(" instead of ").append(std::to_string(reference.*size));
    }
    return text;
}

/// What a file shows by itself.
verdict judge_alone(const result_file& file) {
    verdict result;
    result.file = &file;
    if (!is_finite(file.contents)) {
        result.add(doubt::not_finite);
    }
    if (file.contents.parameters.sign == 0) {
        result.add(doubt::sign_zero);
    }
    return result;
}

void judge_element(verdict& result, const sgn_parameters& file, const sgn_parameters& reference,
                   const thresholds& limits) {
    if (file.tden_maxloc != reference.tden_maxloc) {
        result.add(doubt::other_element, {element_text(file), element_text(reference)});
        return;
    }
    if (reference.tden_maxval != 0) {
        result.ratio = std::abs(file.tden_maxval / reference.tden_maxval);
        if (result.ratio < limits.min_ratio) {
            result.add(doubt::small_element, {decimal(result.ratio, 3)});
        }
        if (std::isfinite(result.ratio) && result.ratio * limits.min_ratio > 1) {
            result.add(doubt::large_element, {decimal(result.ratio, 1)});
        }
    }
    // With its sign, the element has to have the phase of the reference's.
    const bool same_phase = std::signbit(file.tden_maxval) == std::signbit(reference.tden_maxval);
    const std::int32_t signs = file.sign * reference.sign;
    if (file.tden_maxval != 0 && reference.tden_maxval != 0 && signs != 0 &&
        same_phase != (signs > 0)) {
        result.add(doubt::sign_conflict);
    }
}

void judge_dipole(verdict& result, const vec3& file, const vec3& reference,
                  const thresholds& limits) {
    result.change = difference(file, reference);
    result.turn = angle_between(file, reference);
    if (std::min(length(file), length(reference)) >= limits.min_dipole &&
        result.turn > limits.max_turn) {
        result.add(doubt::dipole_turned, {decimal(result.turn, 1)});
    }
}

verdict judge(const result_file& file, const result_file& reference, const thresholds& limits) {
    verdict result = judge_alone(file);
    const sgn_contents& mine = file.contents;
    const sgn_contents& theirs = reference.contents;
    if (const std::string sizes = other_sizes(mine.parameters, theirs.parameters); !sizes.empty()) {
        result.add(doubt::other_sizes, {sizes});
    }
    if (mine.x.size() == theirs.x.size()) {
        result.moved = displacement_of(mine.x, theirs.x);
        const std::string atoms = other_atoms(mine, theirs);
        if (!atoms.empty()) result.add(doubt::other_atoms, {atoms});
        if (mine.nat == theirs.nat && is_finite(mine) && is_finite(theirs)) {
            result.frame = turn_of_frame(theirs.x, mine.x, theirs.mass);
            result.rotation = result.frame.degrees;
        }
        if (result.rotation > limits.max_rotation) {
            result.add(doubt::turned, {decimal(result.rotation, 2)});
        }
    }
    judge_element(result, mine.parameters, theirs.parameters, limits);
    judge_dipole(result, mine.corrected_tdip, theirs.corrected_tdip, limits);
    return result;
}

/// Looks for what adds nothing to a set: files whose geometry is that of another one.
/// (Points that a scan passes twice are as good as one if their dipoles agree.)
void judge_place(std::vector<verdict>& all, const thresholds& limits) {
    for (std::size_t i = 1; i < all.size(); ++i) {
        verdict& one = all[i];
        if (!one.moved || one.has(doubt::not_finite)) continue;
        if (one.moved->moved == 0) {
            one.add(doubt::not_displaced);
            continue;
        }
        const auto end = all.begin() + static_cast<std::ptrdiff_t>(i);
        const auto same = std::find_if(all.begin() + 1, end, [&](const verdict& other) {
            return other.moved && !other.has(doubt::not_finite) &&
                   are_same(*one.moved, *other.moved);
        });
        if (same == end) continue;
        if (limits.pairs || length(difference(one.change, same->change)) > limits.max_asymmetry) {
            one.add(doubt::repeated, {flib::printable(same->file->name)});
        }
    }
}

/// Looks for the partner of `one` among `all`, the reference being their first.
void judge_pair(verdict& one, const std::vector<verdict>& all, const thresholds& limits) {
    if (!one.moved || one.moved->moved == 0 || one.has(doubt::turned)) return;
    const auto partner = std::find_if(all.begin(), all.end(), [&](const verdict& other) {
        return other.moved && are_opposite(*one.moved, *other.moved);
    });
    if (partner == all.end()) {
        std::string turned;
        if (one.rotation > seen_rotation) {
            turned = " (turned by " + decimal(one.rotation, 2) + " degrees)";
        }
        one.add(doubt::no_partner, {turned});
        return;
    }
    one.partner = partner->file;
    vec3 second{};
    for (std::size_t k = 0; k < 3; ++k) second[k] = one.change[k] + partner->change[k];
    one.asymmetry = length(second);
    // Second derivatives make it grow with the square of the step.
    const double larger = std::max(1.0, one.moved->distance / usual_step);
    if (one.asymmetry > limits.max_asymmetry * larger * larger) {
        one.add(doubt::asymmetric_pair,
                {flib::printable(one.partner->name), decimal(one.asymmetry, 4)});
    }
}

}  // namespace

bool verdict::has(doubt kind) const {
    return std::any_of(findings.begin(), findings.end(),
                       [kind](const finding& each) { return each.kind == kind; });
}

bool assessment::fine() const {
    return findings.empty() && !(rules.judged && !rules.satisfied) &&
           std::all_of(verdicts.begin(), verdicts.end(),
                       [](const verdict& each) { return each.fine(); });
}

std::vector<std::string> names_of(const assessment& of) {
    std::vector<std::string> names;
    for (const verdict& each : of.verdicts) names.push_back(each.file->name);
    return names;
}

assessment check(const result_file& reference, const std::vector<result_file>& files,
                 const thresholds& limits) {
    if (const std::string shape = other_shape(reference.contents); !shape.empty()) {
        throw flib::io_error(reference.name, 0, shape);
    }
    assessment result;
    result.verdicts.push_back(judge_alone(reference));
    const sgn_parameters& told = reference.contents.parameters;
    if (told.tden_maxval == 0 && told.sign != 0) {
        result.verdicts.front().add(doubt::zero_element);
    }
    for (const result_file& file : files) result.verdicts.push_back(judge(file, reference, limits));
    judge_place(result.verdicts, limits);
    for (verdict& one : result.verdicts) {
        if (limits.pairs) judge_pair(one, result.verdicts, limits);
    }
    if (limits.sum_rules) {
        judge_set(result, limits.pairs);
    } else {
        result.rules.why_not = "not wanted";
    }
    return result;
}

}  // namespace sgn
