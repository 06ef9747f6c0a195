#include "flib/excited/density_parts.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "flib/excited/detail/largest_of_product.h"
#include "flib/io/stop_run.h"
#include "flib/util/matrix_product.h"

namespace flib {

namespace {

std::string number(std::int64_t n) {
    return std::to_string(n);
}

/// Why such counts have no density; empty if they have one.
std::string reason_against(const orbital_counts& counts) {
    const auto& [nbasis, nbsuse, mi, ma, nfc, nfv] = counts;
    const std::int64_t orbitals = std::int64_t{mi} + nfc + ma + nfv;
    if (std::min({nbasis, nbsuse, mi, ma, nfc, nfv}) < 0) return "a count is negative";
    if (nbsuse != nbasis) {
        return "the number of independent functions differs from that of basis functions; the "
               "tool sgn_states treats such jobs";
    }
    if (orbitals != nbasis) {
        return "mi + nfc + ma + nfv = " + number(orbitals) + " differs from nbasis";
    }
    return {};
}

}  // namespace

bool have_density(const orbital_counts& counts) {
    return reason_against(counts).empty();
}

void require_density(const orbital_counts& counts, std::size_t amplitudes) {
    const auto& [nbasis, nbsuse, mi, ma, nfc, nfv] = counts;
    if (const std::string reason = reason_against(counts); !reason.empty()) {
        throw run_error("the transition density cannot be built: " + reason +
                        " (nbasis = " + number(nbasis) + ", nbsuse = " + number(nbsuse) +
                        ", mi = " + number(mi) + ", nfc = " + number(nfc) + ", ma = " + number(ma) +
                        ", nfv = " + number(nfv) + ")");
    }
    const std::size_t needed = element_count({ma, mi}, "the amplitudes of one root");
    if (amplitudes < needed) {
        throw run_error("the transition density cannot be built: there are " +
                        std::to_string(amplitudes) + " amplitudes of " + std::to_string(needed));
    }
}

density_element::density_element(const orbital_counts& counts, const element_location& at)
    : counts_(counts), at_(at) {}

void density_element::take(matrix_view<const double> columns) {
    const std::int32_t ni = counts_.mi + counts_.nfc;
    const auto [row, column] = at_;
    for (std::int32_t j = 1; j <= columns.columns(); ++j) {
        const bool occupied = std::ssize(coefficients_) < ni;
        coefficients_.push_back(columns(occupied ? column : row, j));
    }
}

double density_element::value(std::span<const double> xpy) const {
    const matrix_view<const double> amplitudes(xpy.data(), counts_.ma, counts_.mi);
    const std::int32_t ni = counts_.mi + counts_.nfc;
    const double* const of_occupied = coefficients_.data();
    const double* const of_virtual = coefficients_.data() + ni;
    double value = 0;
    for (std::int32_t i = 1; i <= ni; ++i) {
        // Amplitudes of frozen orbitals are 0. Their terms count where a coefficient is not finite.
        const std::int32_t active = i > counts_.nfc ? counts_.ma : 0;
        double half_transformed = 0;
        for (std::int32_t a = 1; a <= counts_.ma + counts_.nfv; ++a) {
            const double amplitude = a <= active ? amplitudes(a, i - counts_.nfc) : 0.0;
            half_transformed += of_virtual[a - 1] * amplitude;
        }
        value += half_transformed * of_occupied[i - 1];
    }
    return value;
}

density_extremum::density_extremum(const orbital_counts& counts, std::span<const double> xpy)
    : counts_(counts),
      xpy_(xpy.data(), counts.ma, counts.mi),
      cnt_(counts.mi + counts.nfc, counts.nbasis, "the occupied orbitals"),
      cmz_(counts.nbasis, counts.mi + counts.nfc, "the half-transformed amplitudes") {}

void density_extremum::take(matrix_view<const double> columns) {
    const std::int32_t n = counts_.nbasis;
    const std::int32_t ni = cnt_.view().rows();
    const std::int32_t occupied = std::clamp(ni - taken_, 0, columns.columns());
    for (std::int32_t j = 1; j <= occupied; ++j) {
        for (std::int32_t q = 1; q <= n; ++q) cnt_(taken_ + j, q) = columns(q, j);
    }
    taken_ += columns.columns();
    const std::int32_t count = columns.columns() - occupied;
    if (count == 0) return;

    // Frozen core orbitals shift the occupied index; frozen virtual ones are the last rows.
    const std::int32_t before = taken_ - count - ni;
    const std::int32_t active = std::clamp(counts_.ma - before, 0, count);
    matrix<double> z(count, ni, "the amplitudes of one root");
    for (std::int32_t i = 1; i <= counts_.mi; ++i) {
        std::copy_n(xpy_.column(i).begin() + before, active,
                    z.view().column(i + counts_.nfc).begin());
    }
    const matrix_view<const double> cm(columns.column(occupied + 1).data(), n, count);
    multiply_add(cm, z.view(), cmz_.view());
}

extremum density_extremum::find() const {
    return largest_of_product(cmz_.view(), cnt_.view());
}

}  // namespace flib
