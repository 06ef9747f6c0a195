// One element of a transition density, or its largest, without the others.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "flib/excited/density_parts.h"
#include "flib/util/extremum.h"
#include "flib/util/math.h"
#include "flib/util/matrix.h"

namespace flib {

/// The element at `at` of the density that get_ci_density_nbasis_nbsuse() builds from the same
/// values, with the same bits: of the coefficients `moc` (`nbsuse` x `nbasis`; basis function,
/// orbital) and the first `ma` x `mi` of the amplitudes `xpy` (virtual, occupied). It costs
/// (`mi` + `nfc`) x (`ma` + `nfv`) products.
///
/// Throws run_error for counts that have no density, arrays of other sizes, and a place outside of
/// 1..`nbasis`.
double density_element_of(const orbital_counts& counts, matrix_view<const double> moc,
                          std::span<const double> xpy, const element_location& at);

/// The files of a job from which its density is made, that of the first excited state.
struct density_source {
    std::string_view ffch;    ///< the formatted checkpoint, with the coefficients
    std::string_view fcis;    ///< the dump, with the amplitudes
    orbital_counts counts{};  ///< of the job, or of the reference that it is compared with
    std::int32_t mci = 0;     ///< roots in the dump
};

/// Throws io_error if the checkpoint tells that it has another number of coefficients than
/// `counts` make, or no orbitals at all: a smaller basis would fit into them without an error.
void require_fits_reference(const density_source& source);

// Neither of these holds the coefficients or the density as a whole, but both end as if
// qm_file_mo_coeff_nbasis_nbsuse(), qm_file_ci_xpy() and get_ci_density_nbasis_nbsuse() were called
// in this order, and what they give were looked at: whatever is in the files must be numbers.

/// The density's element at `at`; run_error if it has none there.
double density_at(const density_source& source, const element_location& at);

/// The element of largest magnitude, which mat_abs_maxval_d() would choose; run_error if no element
/// is above zero in magnitude.
extremum largest_of_density(const density_source& source);

}  // namespace flib
