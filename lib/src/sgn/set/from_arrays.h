// A set made of arrays: what any program tells of its jobs.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "sgn/set/displaced_set.h"

namespace sgn {

/// What is known of one job.
struct job_arrays {
    std::vector<vec3> x;         ///< of every atom, Angstrom
    vec3 dipole{};               ///< transition dipole, au
    std::vector<vec3> forces{};  ///< of every atom, Hartree/Bohr; empty: not known
    std::string name{};          ///< empty: "reference", "job 1", "job 2", ...
};

/// What is known of all of them.
struct array_facts {
    std::vector<double> masses{};  ///< of every atom, u; empty: those of the elements
    /// With how many decimals the dipoles are right, 0 to 10; without, as many as they are seen to
    /// have. Where a program gives more than it converged to, say so: sums are judged by it.
    std::optional<int> dipole_decimals{};
    /// The same of the forces.
    std::optional<int> force_decimals{};
    /// The same of the coordinates (Angstrom).
    int coordinate_decimals = 9;
};

/// Puts a set together of the atoms' symbols, a reference and jobs displaced from it, in their
/// order: job i is displaced_set::jobs[i + 1]. Dipoles are taken as they are, with the sign 1;
/// forces are known of all jobs or of none. Throws flib::run_error for a symbol that no element
/// has, and for decimals beyond their range, and flib::io_error, which names the job, if an array
/// is not of as many atoms as there are symbols, holds a value that is not a finite number, or is
/// told of some jobs only, and if no job is displaced.
displaced_set set_of_arrays(std::span<const std::string> symbols, const job_arrays& reference,
                            std::span<const job_arrays> displaced, const array_facts& facts = {});

}  // namespace sgn
