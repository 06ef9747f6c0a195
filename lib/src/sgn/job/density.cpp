#include "sgn/job/density.h"

#include <algorithm>
#include <string>

#include "flib/excited/detail/matrix_product.h"
#include "flib/io/stop_run.h"

namespace sgn {

flib::matrix<double> transition_density(const job& of, std::int32_t root) {
    if (root < 1 || root > of.states) {
        throw flib::run_error("there is no root " + std::to_string(root) + " of " +
                              std::to_string(of.states));
    }
    const job_counts& counts = of.counts;
    const flib::matrix_view<const double> amplitudes(of.amplitudes(root).data(), counts.ma,
                                                     counts.mi);
    // The active orbitals are whole columns of the coefficients.
    const auto orbitals = [&](std::int32_t first, std::int32_t number) {
        return flib::matrix_view<const double>(of.moc.view().column(first).data(), counts.nbasis,
                                               number);
    };
    const auto occupied = orbitals(counts.nfc + 1, counts.mi);
    flib::matrix<double> transposed(counts.mi, counts.nbasis, "the occupied orbitals");
    for (std::int32_t q = 1; q <= counts.nbasis; ++q) {
        for (std::int32_t i = 1; i <= counts.mi; ++i) transposed(i, q) = occupied(q, i);
    }
    flib::matrix<double> half(counts.nbasis, counts.mi, "the half-transformed amplitudes");
    flib::multiply(orbitals(counts.nfc + counts.mi + 1, counts.ma), amplitudes, half.view());
    flib::matrix<double> density(counts.nbasis, counts.nbasis, "the transition density");
    flib::multiply(half.view(), transposed.view(), density.view());
    return density;
}

}  // namespace sgn
