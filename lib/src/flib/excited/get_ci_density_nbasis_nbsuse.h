// The transition density in the basis of atomic orbitals.
#pragma once

#include <cstdint>
#include <span>

#include "flib/util/matrix.h"

namespace flib {

/// Builds the one-particle transition density between the ground and an excited state:
///
///   den(p, q) = sum over virtual a and occupied i of  moc(p, ni + a) z(a, i) moc(q, i)
///
/// where `ni` = `mi` + `nfc` orbitals are occupied and `z` holds the amplitudes, zero for the `nfc`
/// frozen core orbitals (the first) and the `nfv` frozen virtual ones (the last). Rows belong to
/// the virtual side and columns to the occupied side; nothing is normalised or symmetrised.
///
/// `moc` is `nbsuse` x `nbasis` (basis function, orbital), `xpy` holds `ma` x `mi` amplitudes
/// (virtual, occupied) with the first index fastest, `den` is `nbasis` x `nbasis` and is
/// overwritten. Each element of both products is one running sum in ascending order of the index
/// summed over, so that the bits are the same on every machine.
///
/// Throws run_error, with `den` unchanged, if a count is negative, if `nbasis` is not `mi` + `nfc`
/// + `ma` + `nfv`, if `nbsuse` is not `nbasis`, if an array is too short, or
/// without enough memory.
void get_ci_density_nbasis_nbsuse(std::int32_t nbasis, std::int32_t nbsuse, std::int32_t mi,
                                  std::int32_t ma, std::int32_t nfc, std::int32_t nfv,
                                  matrix_view<const double> moc, std::span<const double> xpy,
                                  matrix_view<double> den);

}  // namespace flib
