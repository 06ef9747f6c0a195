// What of a set of result files deserves doubt.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sgn/check/doubt.h"
#include "sgn/check/frame.h"
#include "sgn/check/proof.h"
#include "sgn/set/displaced_set.h"
#include "sgn/set/sum_rules.h"
#include "sgn/set/suspects.h"

namespace sgn {

/// Where doubt begins.
struct thresholds {
    /// Magnitude of the element, against the reference's.
    double min_ratio = limit_of(doubt::small_element);
    /// Of the frame, degrees; beyond, a sign may have changed.
    double max_rotation = limit_of(doubt::turned);
    double max_turn = limit_of(doubt::dipole_turned);  ///< of the dipole, degrees
    double min_dipole = 0.05;  ///< a smaller dipole has no direction to be judged, au
    double max_asymmetry = limit_of(doubt::asymmetric_pair);  ///< |d(+) + d(-) - 2 d(0)|, au
    bool pairs = true;      ///< whether displacements come in +- pairs
    bool sum_rules = true;  ///< whether the sum rules of the set are judged
};

/// Angstrom: limits of second differences are those of displacements by so much, or less; they grow
/// with the square of larger ones.
inline constexpr double usual_step = 0.01;

inline constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

/// A smaller rotation of the frame is not told from none (degrees).
inline constexpr double seen_rotation = limit_of(doubt::other_frame);

/// What is known of one file of the set; `unknown` where there is nothing to compare.
struct verdict {
    const result_file* file = nullptr;
    double ratio = unknown;                  // |element| against the reference's
    vec3 change{unknown, unknown, unknown};  // of the corrected dipole, au
    double turn = unknown;                   // of the corrected dipole, degrees
    std::optional<displacement> moved;       // without, the atoms are not the same
    double rotation = unknown;               // of the frame, degrees
    frame_turn frame{};                      // that rotation
    const result_file* partner = nullptr;    // of the +- pair
    double asymmetry = unknown;              // of the pair, au
    std::vector<finding> findings;

    bool fine() const { return findings.empty(); }
    bool has(doubt kind) const;
    /// With what is known of the case, see text_of().
    void add(doubt kind, std::initializer_list<std::string_view> known = {}) {
        findings.push_back({kind, text_of(kind, known)});
    }
};

/// What is known of a set.
struct assessment {
    std::vector<verdict> verdicts;  ///< the reference's first
    sum_rules rules;                ///< of the dipole
    sgn::suspects suspects;         ///< places in `verdicts`
    proof signs;                    ///< places in `verdicts`
    std::vector<finding> findings;  ///< of the set itself
    /// What does not move with the set (surroundings_beside()); empty if nobody looked.
    std::vector<std::string> surroundings;

    /// Nothing speaks against any sign.
    bool fine() const;
};

/// Of the judged files, the reference's first.
std::vector<std::string> names_of(const assessment& of);

/// Judges the reference, the files against it, and the set as a whole. The verdicts point to what
/// they were made from. Throws flib::io_error, which names the reference, if its arrays are not of
/// equally many atoms; of another file that is a doubt.
assessment check(const result_file& reference, const std::vector<result_file>& files,
                 const thresholds& limits);

}  // namespace sgn
