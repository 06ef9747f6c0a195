// The transition density of a job's state.
#pragma once

#include <cstdint>

#include "flib/util/matrix.h"
#include "sgn/job/job.h"

namespace sgn {

/// The transition density between the ground state and `root` (from 1 on), alpha spin, in the basis
/// of atomic orbitals, nbasis x nbasis: rows belong to the virtual side, columns to the occupied
/// one, nothing is normalised or symmetrised. Every element has the bits by which stigruz judges
/// signs; orbitals may be fewer than basis functions. Throws flib::run_error without enough memory
/// or if there is no such root.
flib::matrix<double> transition_density(const job& of, std::int32_t root);

}  // namespace sgn
