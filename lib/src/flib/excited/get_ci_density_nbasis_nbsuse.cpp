#include "flib/excited/get_ci_density_nbasis_nbsuse.h"

#include <algorithm>
#include <string>

#include "flib/excited/density_parts.h"
#include "flib/io/stop_run.h"
#include "flib/util/matrix_product.h"

namespace flib {
namespace {

void require_elements(const char* of_what, std::size_t needed, std::size_t given) {
    if (needed <= given) return;
    throw run_error("the transition density cannot be built: there are " + std::to_string(given) +
                    " " + of_what + " of " + std::to_string(needed));
}

}  // namespace

void get_ci_density_nbasis_nbsuse(std::int32_t nbasis, std::int32_t nbsuse, std::int32_t mi,
                                  std::int32_t ma, std::int32_t nfc, std::int32_t nfv,
                                  matrix_view<const double> moc, std::span<const double> xpy,
                                  matrix_view<double> den) {
    require_density({nbasis, nbsuse, mi, ma, nfc, nfv}, xpy.size());
    const matrix_view<const double> amplitudes(xpy.data(), ma, mi);
    const matrix_view<double> wanted(den.data(), nbasis, nbasis);
    require_elements("MO coefficients", wanted.all().size(), moc.all().size());
    require_elements("elements for the result", wanted.all().size(), den.all().size());
    const std::int32_t ni = mi + nfc;
    const std::int32_t na = ma + nfv;
    // Both are whole columns of the coefficients, so neither needs a copy.
    const matrix_view<const double> cn(moc.data(), nbsuse, ni);
    const matrix_view<const double> cm(moc.data() + cn.all().size(), nbsuse, na);

    matrix<double> cnt(ni, nbsuse, "the occupied orbitals");
    for (std::int32_t i = 1; i <= ni; ++i) {
        for (std::int32_t q = 1; q <= nbsuse; ++q) cnt(i, q) = cn(q, i);
    }

    // Frozen core orbitals shift the occupied index; frozen virtual ones are the last rows.
    matrix<double> z(na, ni, "the amplitudes of one root");
    for (std::int32_t i = 1; i <= mi; ++i) {
        std::ranges::copy(amplitudes.column(i), z.view().column(i + nfc).begin());
    }

    matrix<double> cmz(nbsuse, ni, "the half-transformed amplitudes");
    multiply(cm, z.view(), cmz.view());
    multiply(cmz.view(), cnt.view(), wanted);
}

}  // namespace flib
