// The transition density without all of it in memory: one element of it, or the largest.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "flib/util/extremum.h"
#include "flib/util/math.h"
#include "flib/util/matrix.h"

namespace flib {

/// What a job says of its orbitals.
struct orbital_counts {
    std::int32_t nbasis;  // basis functions
    std::int32_t nbsuse;  // independent functions
    std::int32_t mi;      // active occupied orbitals
    std::int32_t ma;      // active virtual orbitals
    std::int32_t nfc;     // frozen core orbitals
    std::int32_t nfv;     // frozen virtual orbitals
};

/// Whether get_ci_density_nbasis_nbsuse() can build a density from such counts.
bool have_density(const orbital_counts& counts);

/// Throws the run_error of get_ci_density_nbasis_nbsuse() unless it can build a density from such
/// counts and so many amplitudes.
void require_density(const orbital_counts& counts, std::size_t amplitudes);

// Both of the following are given the coefficients from the first column on, some columns at a
// time, and the amplitudes `xpy`. Each element has the bits that get_ci_density_nbasis_nbsuse()
// gives it. The counts must have a density, and `at` must lie within it.

/// One element of the density. It needs one row of the coefficients of the virtual orbitals and one
/// of those of the occupied ones.
class density_element {
  public:
    density_element(const orbital_counts& counts, const element_location& at);
    void take(matrix_view<const double> columns);
    double value(std::span<const double> xpy) const;

  private:
    orbital_counts counts_;
    element_location at_;
    std::vector<double> coefficients_{};  // one of each orbital
};

/// The element of largest magnitude, as mat_abs_maxval_d() chooses it. The coefficients of the
/// virtual orbitals go into the first product as they come; of the second only
/// the largest element is sought.
class density_extremum {
  public:
    density_extremum(const orbital_counts& counts, std::span<const double> xpy);
    void take(matrix_view<const double> columns);
    extremum find() const;

  private:
    orbital_counts counts_;
    matrix_view<const double> xpy_;
    matrix<double> cnt_;      // the occupied orbitals, as rows
    matrix<double> cmz_;      // the half-transformed amplitudes
    std::int32_t taken_ = 0;  // columns
};

}  // namespace flib
