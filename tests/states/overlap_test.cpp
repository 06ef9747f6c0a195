#include "states/overlap.h"

#include <gtest/gtest.h>

#include <cmath>

#include "states/made_up.h"
#include "support/support.h"

namespace {

using numfreq::job_counts;
using states::job;
using states::overlap_reference;
using states::overlap_rows;
using square = std::vector<std::vector<double>>;

/// A^-1 B by elimination, a column of both as a row.
square solved(const job& a, const job& b) {
    const auto n = static_cast<std::size_t>(a.counts.nbasis);
    // Row p: the equation of basis function p, orbitals of a, then those of b.
    square rows(n, std::vector<double>(2 * n));
    for (std::size_t p = 0; p < n; ++p) {
        for (std::size_t j = 0; j < n; ++j) {
            rows[p][j] = a.moc.view().all()[j * n + p];
            rows[p][n + j] = b.moc.view().all()[j * n + p];
        }
    }
    for (std::size_t k = 0; k < n; ++k) {
        std::size_t pivot = k;
        for (std::size_t p = k; p < n; ++p) {
            if (std::abs(rows[p][k]) > std::abs(rows[pivot][k])) pivot = p;
        }
        std::swap(rows[k], rows[pivot]);
        for (std::size_t p = 0; p < n; ++p) {
            const double factor = p == k ? 0 : rows[p][k] / rows[k][k];
            for (std::size_t j = k; j < 2 * n; ++j) rows[p][j] -= factor * rows[k][j];
        }
        for (std::size_t j = 2 * n; j-- > k;) rows[k][j] /= rows[k][k];
    }
    square x(n);
    for (std::size_t p = 0; p < n; ++p)
        x[p].assign(rows[p].begin() + static_cast<int>(n), rows[p].end());
    return x;
}

/// The formula, term by term.
double plain_overlap(const job& from, std::int32_t state, const job& to, std::int32_t root) {
    const square a = solved(from, to);
    const auto nfc = static_cast<std::size_t>(from.counts.nfc);
    const auto mi = static_cast<std::size_t>(from.counts.mi);
    const auto ma = static_cast<std::size_t>(from.counts.ma);
    double product = 0;
    double own = 0;
    double other = 0;
    for (std::size_t p = 0; p < a.size(); ++p) {
        for (std::size_t q = 0; q < a.size(); ++q) {
            double m = 0;
            for (std::size_t i = 0; i < mi; ++i) {
                for (std::size_t v = 0; v < ma; ++v) {
                    m += a[p][nfc + mi + v] * to.amplitudes(root)[i * ma + v] * a[q][nfc + i];
                }
            }
            other += m * m;
            const bool active = p >= nfc + mi && p < nfc + mi + ma && q >= nfc && q < nfc + mi;
            if (!active) continue;
            const double x0 = from.amplitudes(state)[(q - nfc) * ma + p - nfc - mi];
            product += x0 * m;
            own += x0 * x0;
        }
    }
    return product / std::sqrt(own * other);
}

TEST(Overlap, IsThatOfThePlainFormula) {
    // Frozen orbitals or none, more roots than virtual orbitals and fewer, more roots than states.
    const struct {
        job_counts counts;
        std::int32_t roots;
    } shapes[] = {{{.nbasis = 12, .mi = 3, .ma = 5, .mci = 2, .nfc = 2, .nfv = 2}, 3},
                  {{.nbasis = 12, .mi = 2, .ma = 7, .mci = 3, .nfc = 1, .nfv = 2}, 2},
                  {{.nbasis = 4, .mi = 2, .ma = 2, .mci = 4}, 4},
                  {{.nbasis = 2, .mi = 1, .ma = 1, .mci = 1}, 1}};
    unsigned seed = 0;
    for (const auto& [counts, roots] : shapes) {
        const job from = made_up(counts, ++seed);
        job_counts others = counts;
        others.mci = roots;
        const job to = made_up(others, ++seed);
        const overlap_rows rows = overlap_reference(from).overlaps(to);
        ASSERT_EQ(rows.size(), static_cast<std::size_t>(counts.mci));
        for (std::int32_t state = 1; state <= counts.mci; ++state) {
            const auto& row = rows[static_cast<std::size_t>(state) - 1];
            ASSERT_EQ(row.size(), static_cast<std::size_t>(roots));
            for (std::int32_t root = 1; root <= roots; ++root) {
                EXPECT_NEAR(row[static_cast<std::size_t>(root) - 1],
                            plain_overlap(from, state, to, root), 1e-12);
            }
        }
    }
}

TEST(Overlap, WithItselfIsOne) {
    const job from = made_up({.nbasis = 9, .mi = 2, .ma = 5, .mci = 2, .nfc = 1, .nfv = 1}, 3);
    const overlap_rows rows = overlap_reference(from).overlaps(from);
    EXPECT_NEAR(rows[0][0], 1, 1e-14);
    EXPECT_NEAR(rows[1][1], 1, 1e-14);
}

TEST(Overlap, NeedsIndependentOrbitals) {
    const job_counts counts{.nbasis = 6, .mi = 2, .ma = 3, .mci = 2, .nfc = 1};
    const job good = made_up(counts, 1);
    job bad = made_up(counts, 2);
    for (std::int32_t p = 1; p <= 6; ++p) bad.moc(p, 5) = 2 * bad.moc(p, 1) - bad.moc(p, 3);
    const support::ending expected{2, "made.fchk: the orbitals are linearly dependent", false};
    EXPECT_EQ(support::ending_of([&] { overlap_reference{bad}; }), expected);
    EXPECT_EQ(support::ending_of([&] { overlap_reference(good).overlaps(bad); }), expected);
    // Nearly so is enough to go on.
    bad.moc(1, 5) += 1e-8;
    EXPECT_EQ(support::ending_of([&] { overlap_reference(good).overlaps(bad); }), std::nullopt);
}

}  // namespace
