// What the checkpoints beside result files have in more digits.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "flib/excited/qm_file_state_moments.h"
#include "sgn/set/derivatives.h"
#include "sgn/set/displaced_set.h"

namespace sgn {

/// The name of a file of the job that the result file `name` is of, its checkpoint (".fchk") or
/// log: NAME.fchk beside NAME.sgn or, where there is none, beside NAME_sK.sgn.
std::string file_beside(const std::string& name, const std::string& suffix);

/// The moments of `state` (from 1 on) times `sign`, since the phase of a state turns all of them
/// round.
full_digits full_digits_of(const flib::moment_rows& rows, std::int32_t state, double sign);

/// The coordinates of a checkpoint (Angstrom), which the file `name` of the same job has in six
/// decimals, `x`. Empty if it has another number of atoms (that of an ONIOM job), or if they do not
/// round to those. Throws flib::io_error if atoms stand elsewhere, so that it is of another job,
/// and flib::ending if it cannot be read.
std::vector<vec3> full_coordinates(const std::string& checkpoint, std::span<const vec3> x,
                                   const std::string& name);

/// Why the dipoles of a set are not those of the checkpoints.
struct no_full_digits {
    std::string reason;     ///< names the file; empty if they are
    bool doubtful = false;  ///< a checkpoint is not of one run with its result file, or damaged
};

/// Adds to each result file what the checkpoint beside it has in more digits (result_file::full and
/// result_file::excited), if one state's dipole, with the sign of the file, rounds to the one
/// there. Ends with the first file where it does not; which state it is stays known of the
/// reference then.
no_full_digits add_full_digits(result_file& reference, std::span<result_file> files);

/// The derivatives of the energy of excitation by all coordinates, Hartree/Bohr. Empty if it is not
/// told of all jobs.
std::vector<double> excitation_gradient(const displaced_set& set, const derivatives& of);

}  // namespace sgn
