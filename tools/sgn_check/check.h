// What of a set of result files deserves doubt.
#pragma once

#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sgn/set/displaced_set.h"
#include "sgn/set/sum_rules.h"
#include "sgn/set/suspects.h"
#include "sgn_check/frame.h"

namespace sgn_check {

using sgn::result_file;

/// Where doubt begins.
struct thresholds {
    double min_ratio = 0.5;        ///< magnitude of the element, against the reference's
    double max_rotation = 5;       ///< of the frame, degrees; beyond, a sign may have changed
    double max_turn = 30;          ///< of the dipole, degrees
    double min_dipole = 0.05;      ///< a smaller dipole has no direction to be judged, au
    double max_asymmetry = 0.005;  ///< |d(+) + d(-) - 2 d(0)|, au
    bool pairs = true;             ///< whether displacements come in +- pairs
    bool sum_rules = true;         ///< whether the sum rules of the set are judged
};

enum class doubt {
    not_finite,       // a value is not a finite number
    sign_zero,        // the sign is 0
    other_element,    // judged at another element than the reference
    other_sizes,      // natom, nmo, mi, ma, mci, NFC or NFV differ
    other_atoms,      // an element or a mass differs
    turned,           // the frame was not kept, and the sign means nothing
    other_frame,      // geometry and dipole belong to different frames
    small_element,    // too small against the reference's
    sign_conflict,    // the sign is not that of the element against the reference's
    dipole_turned,    // against the reference's
    not_displaced,    // the geometry is the reference's
    repeated,         // the geometry is that of another file
    no_partner,       // nobody has the opposite displacement
    asymmetric_pair,  // the dipoles of the pair are not symmetric to second order
    suspect_sign      // the sum rules hold if this sign is reversed
};

/// The name of a doubt for other programs: "sign_zero", ...
std::string_view name_of(doubt kind);

struct finding {
    doubt kind;
    std::string text;  // for people
};

inline constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

/// A smaller rotation of the frame is not told from none (degrees).
inline constexpr double seen_rotation = 0.01;

/// What is known of one file of the set; `unknown` where there is nothing to compare.
struct verdict {
    const result_file* file = nullptr;
    double ratio = unknown;                  // |element| against the reference's
    vec3 change{unknown, unknown, unknown};  // of the corrected dipole, au
    double turn = unknown;                   // of the corrected dipole, degrees
    std::optional<sgn::displacement> moved;  // without, the atoms are not the same
    double rotation = unknown;               // of the frame, degrees
    frame_turn frame{};                      // that rotation
    const result_file* partner = nullptr;    // of the +- pair
    double asymmetry = unknown;              // of the pair, au
    std::vector<finding> findings;

    bool fine() const { return findings.empty(); }
    bool has(doubt kind) const;
    void add(doubt kind, std::string text) { findings.push_back({kind, std::move(text)}); }
};

/// What is known of a set.
struct assessment {
    std::vector<verdict> verdicts;  ///< the reference's first
    sgn::sum_rules rules;           ///< of the dipole
    sgn::suspects suspects;         ///< places in `verdicts`

    /// Nothing speaks against any sign.
    bool fine() const;
};

/// Judges the reference, the files against it, and the set as a whole. The verdicts point to what
/// they were made from.
assessment check(const result_file& reference, const std::vector<result_file>& files,
                 const thresholds& limits);

}  // namespace sgn_check
