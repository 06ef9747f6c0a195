#include "sgn_check/check.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

#include "common/number_text.h"
#include "flib/io/stop_run.h"
#include "sgn_check/set_check.h"

namespace sgn_check {
namespace {

using sgn::difference;
using sgn::length;
using sgn::rounding;
using sgn::sgn_contents;
using sgn::sgn_parameters;
using tools::decimal;

/// "+x", or a unit vector.
std::string direction_of(const vec3& shift) {
    constexpr std::array names{'x', 'y', 'z'};
    for (std::size_t k = 0; k < 3; ++k) {
        vec3 across = shift;
        across[k] = 0;
        if (length(across) <= rounding) return {shift[k] < 0 ? '-' : '+', names[k]};
    }
    std::string text = "(";
    for (std::size_t k = 0; k < 3; ++k) {
        if (k > 0) text += ',';
        text += decimal(shift[k] / length(shift), 2);
    }
    return text += ')';
}

bool is_finite(const sgn_contents& contents) {
    const auto finite = [](double value) { return std::isfinite(value); };
    const auto all_finite = [&](const vec3& v) { return std::all_of(v.begin(), v.end(), finite); };
    return finite(contents.parameters.tden_maxval) && all_finite(contents.corrected_tdip) &&
           std::all_of(contents.mass.begin(), contents.mass.end(), finite) &&
           std::all_of(contents.x.begin(), contents.x.end(), all_finite) &&
           std::all_of(contents.frc.begin(), contents.frc.end(), all_finite);
}

std::string element_text(const sgn_parameters& parameters) {
    const auto [row, column] = parameters.tden_maxloc;
    return std::to_string(row) + "," + std::to_string(column);
}

/// Which sizes differ, or nothing.
std::string other_sizes(const sgn_parameters& file, const sgn_parameters& reference) {
    std::string text;
    for (const auto& [name, size] : sgn::sgn_counts) {
        if (file.*size == reference.*size) continue;
        if (!text.empty()) text += ", ";
        text.append(name).append(" ").append(std::to_string(file.*size));
        text.append(" instead of ").append(std::to_string(reference.*size));
    }
    return text;
}

std::string atom_text(const sgn_contents& contents, std::size_t i) {
    return flib::printable(contents.symbol[i].trimmed()) + " " + std::to_string(contents.nat[i]) +
           " " + decimal(contents.mass[i], 6);
}

/// The first atom that differs, or nothing. The numbers of atoms are equal.
std::string other_atoms(const sgn_contents& file, const sgn_contents& reference) {
    constexpr double mass_rounding = 1e-6;
    for (std::size_t i = 0; i < file.nat.size(); ++i) {
        if (file.nat[i] != reference.nat[i] || !(file.symbol[i] == reference.symbol[i].padded()) ||
            std::abs(file.mass[i] - reference.mass[i]) > mass_rounding) {
            return "atom " + std::to_string(i + 1) + " is " + atom_text(file, i) + " instead of " +
                   atom_text(reference, i);
        }
    }
    return {};
}

displacement displacement_of(const sgn_contents& file, const sgn_contents& reference) {
    displacement result;
    for (std::size_t i = 0; i < file.x.size(); ++i) {
        result.shift.push_back(difference(file.x[i], reference.x[i]));
        const double distance = length(result.shift.back());
        if (distance > rounding) ++result.moved;
        if (distance > result.distance) {
            result.distance = distance;
            result.farthest = i;
        }
    }
    return result;
}

/// Whether the two displacements are opposite.
bool are_partners(const displacement& a, const displacement& b) {
    if (a.moved == 0 || a.moved != b.moved || a.shift.size() != b.shift.size()) return false;
    for (std::size_t i = 0; i < a.shift.size(); ++i) {
        const vec3 opposite{-b.shift[i][0], -b.shift[i][1], -b.shift[i][2]};
        if (!(length(difference(a.shift[i], opposite)) <= rounding)) return false;
    }
    return true;
}

/// What a file shows by itself.
verdict judge_alone(const result_file& file) {
    verdict result;
    result.file = &file;
    if (!is_finite(file.contents)) {
        result.add(doubt::not_finite, "holds values that are not finite numbers");
    }
    if (file.contents.parameters.sign == 0) {
        result.add(doubt::sign_zero, "sign 0: the dipole is lost");
    }
    return result;
}

void judge_element(verdict& result, const sgn_parameters& file, const sgn_parameters& reference,
                   const thresholds& limits) {
    if (file.tden_maxloc != reference.tden_maxloc) {
        result.add(doubt::other_element, "judged at another element: " + element_text(file) +
                                             " instead of " + element_text(reference));
        return;
    }
    if (reference.tden_maxval != 0) {
        result.ratio = std::abs(file.tden_maxval / reference.tden_maxval);
        if (result.ratio < limits.min_ratio) {
            result.add(doubt::small_element,
                       "small element: " + decimal(result.ratio, 3) + " of the reference's");
        }
    }
    // With its sign, the element has to have the phase of the reference's.
    const bool same_phase = std::signbit(file.tden_maxval) == std::signbit(reference.tden_maxval);
    const std::int32_t signs = file.sign * reference.sign;
    if (file.tden_maxval != 0 && reference.tden_maxval != 0 && signs != 0 &&
        same_phase != (signs > 0)) {
        result.add(doubt::sign_conflict,
                   "the sign contradicts the elements: made with another reference?");
    }
}

void judge_dipole(verdict& result, const vec3& file, const vec3& reference,
                  const thresholds& limits) {
    result.change = difference(file, reference);
    result.turn = angle_between(file, reference);
    if (std::min(length(file), length(reference)) >= limits.min_dipole &&
        result.turn > limits.max_turn) {
        result.add(doubt::dipole_turned,
                   "dipole turned by " + decimal(result.turn, 1) + " degrees");
    }
}

verdict judge(const result_file& file, const result_file& reference, const thresholds& limits) {
    verdict result = judge_alone(file);
    const sgn_contents& mine = file.contents;
    const sgn_contents& theirs = reference.contents;
    if (std::string sizes = other_sizes(mine.parameters, theirs.parameters); !sizes.empty()) {
        result.add(doubt::other_sizes, std::move(sizes));
    }
    if (mine.x.size() == theirs.x.size()) {
        result.moved = displacement_of(mine, theirs);
        std::string atoms = other_atoms(mine, theirs);
        if (!atoms.empty()) result.add(doubt::other_atoms, std::move(atoms));
        if (mine.nat == theirs.nat && is_finite(mine) && is_finite(theirs)) {
            result.frame = turn_of_frame(theirs.x, mine.x, theirs.mass);
            result.rotation = result.frame.degrees;
        }
        if (result.rotation > limits.max_rotation) {
            result.add(doubt::turned,
                       "molecule turned by " + decimal(result.rotation, 2) +
                           " degrees: the frame was not kept, the sign means nothing");
        }
    }
    judge_element(result, mine.parameters, theirs.parameters, limits);
    judge_dipole(result, mine.corrected_tdip, theirs.corrected_tdip, limits);
    return result;
}

/// Whether two displacements are the same.
bool are_equal(const displacement& a, const displacement& b) {
    if (a.shift.size() != b.shift.size()) return false;
    for (std::size_t i = 0; i < a.shift.size(); ++i) {
        if (!(length(difference(a.shift[i], b.shift[i])) <= rounding)) return false;
    }
    return true;
}

/// Looks for what adds nothing to a set: files whose geometry is that of another one.
/// (Points that a scan passes twice are as good as one if their dipoles agree.)
void judge_place(std::vector<verdict>& all, const thresholds& limits) {
    for (std::size_t i = 1; i < all.size(); ++i) {
        verdict& one = all[i];
        if (!one.moved || one.has(doubt::not_finite)) continue;
        if (one.moved->moved == 0) {
            one.add(doubt::not_displaced, "not displaced: the geometry is the reference's");
            continue;
        }
        const auto end = all.begin() + static_cast<std::ptrdiff_t>(i);
        const auto same = std::find_if(all.begin() + 1, end, [&](const verdict& other) {
            return other.moved && are_equal(*one.moved, *other.moved);
        });
        if (same == end) continue;
        if (limits.pairs || length(difference(one.change, same->change)) > limits.max_asymmetry) {
            one.add(doubt::repeated,
                    "the geometry is that of " + flib::printable(same->file->name));
        }
    }
}

/// Looks for the partner of `one` among `all`, the reference being their first.
void judge_pair(verdict& one, const std::vector<verdict>& all, const thresholds& limits) {
    if (!one.moved || one.moved->moved == 0 || one.has(doubt::turned)) return;
    const auto partner = std::find_if(all.begin(), all.end(), [&](const verdict& other) {
        return other.moved && are_partners(*one.moved, *other.moved);
    });
    if (partner == all.end()) {
        std::string text = "no file with the opposite displacement";
        if (one.rotation > seen_rotation) {
            text += " (turned by " + decimal(one.rotation, 2) + " degrees)";
        }
        one.add(doubt::no_partner, std::move(text));
        return;
    }
    one.partner = partner->file;
    vec3 second{};
    for (std::size_t k = 0; k < 3; ++k) second[k] = one.change[k] + partner->change[k];
    one.asymmetry = length(second);
    if (one.asymmetry > limits.max_asymmetry) {
        one.add(doubt::asymmetric_pair, "dipole not symmetric with " +
                                            flib::printable(one.partner->name) + ": " +
                                            decimal(one.asymmetry, 4) + " au");
    }
}

}  // namespace

std::string_view name_of(doubt kind) {
    switch (kind) {
        case doubt::not_finite:
            return "not_finite";
        case doubt::sign_zero:
            return "sign_zero";
        case doubt::other_element:
            return "other_element";
        case doubt::other_sizes:
            return "other_sizes";
        case doubt::other_atoms:
            return "other_atoms";
        case doubt::turned:
            return "turned";
        case doubt::other_frame:
            return "other_frame";
        case doubt::small_element:
            return "small_element";
        case doubt::sign_conflict:
            return "sign_conflict";
        case doubt::dipole_turned:
            return "dipole_turned";
        case doubt::not_displaced:
            return "not_displaced";
        case doubt::repeated:
            return "repeated";
        case doubt::no_partner:
            return "no_partner";
        case doubt::asymmetric_pair:
            return "asymmetric_pair";
        case doubt::suspect_sign:
            return "suspect_sign";
    }
    return {};
}

std::string displacement::text(const std::vector<sgn::report_symbol>& symbol) const {
    if (moved == 0) return "none";
    return (moved > 1 ? std::to_string(moved) + " atoms, " : "") + std::to_string(farthest + 1) +
           " " + flib::printable(symbol[farthest].trimmed()) + " " + direction_of(shift[farthest]) +
           " " + decimal(distance, 4);
}

bool verdict::has(doubt kind) const {
    return std::any_of(findings.begin(), findings.end(),
                       [kind](const finding& each) { return each.kind == kind; });
}

bool assessment::fine() const {
    return !(rules.judged && !rules.satisfied) &&
           std::all_of(verdicts.begin(), verdicts.end(),
                       [](const verdict& each) { return each.fine(); });
}

assessment check(const result_file& reference, const std::vector<result_file>& files,
                 const thresholds& limits) {
    assessment result;
    result.verdicts.push_back(judge_alone(reference));
    for (const result_file& file : files) result.verdicts.push_back(judge(file, reference, limits));
    judge_place(result.verdicts, limits);
    for (verdict& one : result.verdicts) {
        if (limits.pairs) judge_pair(one, result.verdicts, limits);
    }
    if (limits.sum_rules) {
        judge_set(result);
    } else {
        result.rules.why_not = "not wanted";
    }
    return result;
}

}  // namespace sgn_check
