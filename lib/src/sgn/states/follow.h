// The states of a reference, followed into other jobs.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "flib/util/math.h"
#include "sgn/job/job.h"
#include "sgn/set/displaced_set.h"
#include "sgn/states/near_states.h"
#include "sgn/states/overlap.h"

namespace sgn {

/// Where doubt begins. The square of an overlap is the part of one state that the other holds.
struct overlap_limits {
    double mixed_below = 0.8;  ///< of a state and the root that continues it
    double lost_below = 0.2;   ///< with less, no root continues the state
};

/// Nothing where there is no other state; where the dump does not tell spins, all count as equal.
std::optional<near_state> nearest_to(const job& now, std::int32_t root);

enum class continuation { same, exchanged, mixed, lost };

/// "same", "exchanged", "mixed" or "lost".
std::string_view name_of(continuation kind);

/// What a job's files say of a root.
struct root_values {
    double energy = 0;               ///< of excitation, Hartree
    std::array<double, 3> dipole{};  ///< transition dipole from the ground state, atomic units

    double oscillator_strength() const;
};

/// The values of `root` (from 1 on), as the log prints them.
root_values values_of(const job& now, std::int32_t root);

/// The same with the dipole of the checkpoint, if there is one.
root_values best_values(root_values values, const std::optional<full_digits>& full);

/// A state of the reference that is to be followed.
struct reference_state {
    std::int32_t state = 0;  ///< from 1 on
    root_values values;
    std::optional<flib::root_spin> spin{};  ///< if the dump tells it
    std::optional<near_state> nearest{};    ///< among the states of the reference
    std::optional<full_digits> full{};      ///< if the job has the moments of its checkpoint
    /// The largest element of its transition density, which stigruz would choose, and its value.
    flib::element_location element{0, 0};
    double element_value = 0;
};

/// The reference, ready for jobs to be compared with.
struct reference_set {
    job reference;  ///< without orbitals and amplitudes
    overlap_reference overlaps;
    std::vector<reference_state> states;
};

/// Makes the reference ready; `wanted` are the states to be followed, ascending from 1 on. Throws
/// flib::run_error if its orbitals are linearly dependent.
reference_set prepare(job&& reference, std::span<const std::int32_t> wanted);

/// What became of a state.
struct followed_state {
    std::int32_t state = 0;  ///< of the reference
    continuation kind = continuation::lost;
    std::int32_t root = 0;                ///< that continues it; 0 if it is lost, as all else then
    double overlap = 0;                   ///< its magnitude
    std::int32_t sign = 0;                ///< of the overlap
    std::optional<root_values> values{};  ///< of the root, the dipole times the sign
    std::optional<flib::root_spin> spin{};  ///< of the root, if the dump tells it
    std::optional<near_state> nearest{};    ///< among the states of the job
    /// The moments of the root times the sign, if the job has those of its checkpoint.
    std::optional<full_digits> full{};
    double element_value = 0;        ///< of the root's density at the state's element
    std::vector<double> overlaps{};  ///< with every state of the job; 0 where the spins differ
};

/// What stigruz makes of the first state: the first root's density at the element.
struct stigruz_answer {
    std::int32_t sign = 0;
    bool agrees = false;  ///< the first root continues the state, with this sign
};

struct followed_job {
    std::vector<followed_state> states;
    std::optional<stigruz_answer> stigruz{};  ///< if the first state is followed

    /// Whether all states are the same, and stigruz says so of the first.
    bool clear() const;
};

/// Follows the states into a job of the reference's sizes. A singlet is never continued by a
/// triplet, nor the other way. Throws flib::run_error if its orbitals are linearly dependent.
followed_job follow(const reference_set& from, const job& now, const overlap_limits& limits);

}  // namespace sgn
