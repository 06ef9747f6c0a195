// The element of a job's transition density by which its sign is judged.
#pragma once

#include <cstdint>
#include <string_view>

#include "flib/excited/detail/density_parts.h"
#include "flib/util/math.h"

namespace sgn {

/// Where the density comes from.
struct density_source {
    std::string_view ffch;  ///< the checkpoint, with the coefficients
    std::string_view fcis;  ///< the dump, with the amplitudes
    flib::orbital_counts counts;
    std::int32_t mci;  ///< roots in the dump
};

/// Throws io_error if the checkpoint tells that it has another number of coefficients than the
/// orbitals of the reference: a smaller basis would fit into it without an error.
void require_fits_reference(const density_source& source);

// Neither holds the coefficients or the density as a whole, but both end as if the coefficients
// were read first, then the amplitudes, and then the density were built and looked at: whatever is
// in the files must be numbers.

/// The density's element at `at`, for a mapped run; run_error if it has none there.
double density_at(const density_source& source, const flib::element_location& at);

/// The element of largest magnitude, for a reference run; run_error if there is none.
flib::extremum largest_of_density(const density_source& source);

}  // namespace sgn
