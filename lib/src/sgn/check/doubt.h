// Everything that may deserve doubt: names, limits and words, told once for all tools and pages.
#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>
#include <limits>
#include <string>
#include <string_view>

#include "sgn/set/sum_rules.h"

namespace sgn {

enum class doubt {
    // of a file
    not_finite,
    sign_zero,
    other_element,
    other_sizes,
    other_atoms,
    turned,
    other_frame,
    small_element,
    large_element,
    zero_element,
    sign_conflict,
    dipole_turned,
    not_displaced,
    repeated,
    no_partner,
    asymmetric_pair,
    suspect_sign,
    // of a whole set
    dipole_sum_rules,
    unsound,
    force_sum_rules,
    asymmetric_forces,
    large_step,
    no_masses,
    velocity_sum_rules,
    magnetic_sum_rules,
    undecided_signs
};

/// Nothing is measured.
inline constexpr double no_limit = std::numeric_limits<double>::quiet_NaN();

struct doubt_row {
    doubt kind;
    std::string_view name;     ///< for other programs; it stays as it is
    double limit;              ///< where the doubt begins, or no_limit
    std::string_view unit;     ///< of the limit, and what is measured
    std::string_view words;    ///< what a finding says; {} stand for what is known of the case
    std::string_view meaning;  ///< what it tells of a set
    std::string_view advice;   ///< what to do
};

/// In the order of the enumerators.
inline constexpr std::array doubts{
    doubt_row{doubt::not_finite, "not_finite", no_limit, "",
              "holds values that are not finite numbers", "A job went wrong, or a file is damaged.",
              "Look at the log; make the result again."},
    doubt_row{doubt::sign_zero, "sign_zero", no_limit, "", "sign 0: the dipole is lost",
              "The element is zero or not a number, and the corrected dipole is lost.",
              "Look at the job; if it is sound, choose another reference geometry."},
    doubt_row{doubt::other_element, "other_element", no_limit, "",
              "judged at another element: {} instead of {}",
              "The file was made with another reference.", "Make it again with this one."},
    doubt_row{doubt::other_sizes, "other_sizes", no_limit, "", "{}",
              "The jobs differ in atoms, basis set, frozen orbitals or number of roots.",
              "Run it again like the others."},
    doubt_row{doubt::other_atoms, "other_atoms", no_limit, "", "{}",
              "Element, mass or order of the atoms differ.",
              "Leave the file out, or run its job with the atoms of the others."},
    doubt_row{doubt::turned, "turned", 5, "degrees (--max-rotation)",
              "molecule turned by {} degrees: the frame was not kept, the sign means nothing",
              "The elements cannot be compared.",
              "Run the job with a fixed frame (Gaussian: nosymm)."},
    doubt_row{doubt::other_frame, "other_frame", 0.01, "degrees",
              "molecule turned by {} degrees, its dipole seems not: the sum rules are better off "
              "if it is turned along",
              "A small turn, which changes no sign; but geometry and dipole are printed in "
              "different frames.",
              "Run the job with a fixed frame (Gaussian: nosymm)."},
    doubt_row{
        doubt::small_element, "small_element", 0.5, "of the reference's, or less (--min-ratio)",
        "small element: {} of the reference's",
        "At 0.01 Angstrom some 98 % are usual. Another state may have come to the first place.",
        "Compare the states of both jobs; follow them with sgn_states."},
    doubt_row{doubt::large_element, "large_element", 2,
              "times the reference's, or more (1 / --min-ratio)",
              "large element: {} times the reference's",
              "The reference's is no measure then: its own state may be small there.",
              "Compare the states of both jobs; follow them with sgn_states."},
    doubt_row{doubt::zero_element, "zero_element", no_limit, "",
              "the element is zero, so its sign means nothing",
              "The file was changed, or comes from another program: with an element of zero there "
              "is no sign.",
              "Make the result again; choose another reference geometry."},
    doubt_row{doubt::sign_conflict, "sign_conflict", no_limit, "",
              "the sign contradicts the elements: made with another reference?",
              "Element times sign has the other phase than in the reference, as in files mapped on "
              "a job whose own sign is -1.",
              "Run stigruz with this reference; map all on the same."},
    doubt_row{doubt::dipole_turned, "dipole_turned", 30, "degrees (--max-turn)",
              "dipole turned by {} degrees",
              "Another state or a wrong sign. Not judged of dipoles shorter than --min-dipole: "
              "that of a dark state may honestly turn.",
              "Compare the states of both jobs."},
    doubt_row{doubt::not_displaced, "not_displaced", no_limit, "",
              "not displaced: the geometry is the reference's", "A job with the wrong input?",
              "Mend its input, or leave it out."},
    doubt_row{doubt::repeated, "repeated", no_limit, "", "the geometry is that of {}",
              "The same displacement twice: a file that was copied, or a job with the wrong input?",
              "Mend its input, or leave it out."},
    doubt_row{doubt::no_partner, "no_partner", no_limit, "",
              "no file with the opposite displacement{}",
              "A job of the +- pair is missing among the files: the difference is one-sided, and "
              "the sum rules are not judged.",
              "Run the missing job; where there are no pairs, sgn_check --no-pairs."},
    doubt_row{doubt::asymmetric_pair, "asymmetric_pair", 0.005,
              "au of |d(+) + d(-) - 2 d(0)| (--max-asymmetry)",
              "dipole not symmetric with {}: {} au",
              "One of the two signs may be wrong, or the step is large.",
              "Compare the states of both jobs."},
    doubt_row{doubt::suspect_sign, "suspect_sign", no_limit, "",
              "the sum rules hold if this sign is reversed{}",
              "The sign, and with it the dipole, is to be reversed. Of two jobs that look alike "
              "both are named.",
              "Look why; perhaps another state lies near."},
    doubt_row{doubt::dipole_sum_rules, "dipole_sum_rules", largest_mean_square,
              "mean square of residue over uncertainty",
              "the sum rules of the dipole fail: chi-squared {} for {} sums",
              "A sign, a state, a frame or a file is wrong.",
              "Look at the files that are named; they do not hold in an outer field or with link "
              "atoms (--no-sum-rules)."},
    doubt_row{doubt::unsound, "unsound", no_limit, "",
              "no few signs mend it: a crossing of states, a turned frame, a file of another job, "
              "or too large a step?",
              "The derivatives of the dipole are not to be used.",
              "Follow the states with sgn_states; look at frames and files; try a smaller step."},
    doubt_row{doubt::force_sum_rules, "force_sum_rules", largest_force_residue,
              "residue over uncertainty",
              "the sum rules of the forces fail: a residue of {} times its uncertainty",
              "The forces of a file are not those of its geometry, or there is an outer field.",
              "Look at the largest residues, which name the atom."},
    doubt_row{doubt::asymmetric_forces, "asymmetric_forces", 8, "difference over uncertainty",
              "the force derivatives are not symmetric: {} Hartree/Bohr^2",
              "Forces that converged too little, or of another state.",
              "Tighten the convergence; compare the states."},
    doubt_row{
        doubt::large_step, "large_step", 0.04, "part by which derivatives may be off",
        "a displacement of {} Angstrom is too large: derivatives may be off by several per cent",
        "Third derivatives are not small any more.", "Displace by 0.01 Angstrom."},
    doubt_row{doubt::no_masses, "no_masses", no_limit, "",
              "an atom has no mass, so there are no wavenumbers",
              "There are force constants, but no modes.", "Look at the elements of the atoms."},
    doubt_row{doubt::velocity_sum_rules, "velocity_sum_rules", largest_mean_square,
              "mean square of residue over uncertainty",
              "the sum rules of the velocity dipole fail: chi-squared {} for {} sums",
              "Where those of the dipole hold, velocity dipoles of some checkpoints have other "
              "signs than its dipoles, or are of other states.",
              "Use the derivatives of the dipole only; look at the checkpoints."},
    doubt_row{doubt::magnetic_sum_rules, "magnetic_sum_rules", largest_mean_square,
              "mean square of residue over uncertainty",
              "the sum rules of the magnetic dipole fail: chi-squared {} for {} sums",
              "Where those of the velocity dipole hold, magnetic dipoles of some checkpoints have "
              "other signs, or are not about the origin of the coordinates.",
              "Use the derivatives of the other moments only; look at the checkpoints."},
    doubt_row{
        doubt::undecided_signs, "undecided_signs", no_limit, "", "the signs are undecided: {}",
        "Signs that nobody knew were sought, and several choices fit: the derivatives are "
        "those of one of them.",
        "Compare the derivatives of all that fit; give dipoles with more digits, or signs from "
        "amplitudes."},
};

constexpr const doubt_row& row_of(doubt kind) {
    return doubts[static_cast<std::size_t>(kind)];
}

constexpr std::string_view name_of(doubt kind) {
    return row_of(kind).name;
}

/// Where a doubt begins unless a user wants it otherwise.
constexpr double limit_of(doubt kind) {
    return row_of(kind).limit;
}

struct finding {
    doubt kind;
    std::string text;             ///< for people
    std::size_t job = whole_set;  ///< the file in question (place in the set), if any

    static constexpr std::size_t whole_set = static_cast<std::size_t>(-1);
};

/// The words of a doubt with what is known of the case in their gaps, which are as many.
std::string text_of(doubt kind, std::initializer_list<std::string_view> known);

}  // namespace sgn
