#include "sgn/states/overlap.h"

#include <gtest/gtest.h>

#include <cmath>

#include "states/made_up.h"
#include "support/support.h"

namespace {

using sgn::job;
using sgn::job_counts;
using sgn::overlap_reference;
using sgn::overlap_rows;

/// The formula, term by term; `a` are the orbitals of `to` in those of `from`.
double plain_overlap(const job& from, std::int32_t state, const job& to, std::int32_t root,
                     const flib::matrix<double>& a) {
    const auto& [natom, nbasis, nbsuse, mi, ma, mci, nfc, nfv] = from.counts;
    double product = 0, own = 0, other = 0;
    for (std::int32_t p = 1; p <= nbsuse; ++p) {
        for (std::int32_t q = 1; q <= nbsuse; ++q) {
            const double* x1 = to.amplitudes(root).data();
            double m = 0;
            for (std::int32_t i = 1; i <= mi; ++i) {
                for (std::int32_t v = 1; v <= ma; ++v) {
                    m += a(p, nfc + mi + v) * *x1++ * a(q, nfc + i);
                }
            }
            other += m * m;
            const std::int32_t v = p - nfc - mi, i = q - nfc;
            if (v < 1 || v > ma || i < 1 || i > mi) continue;
            const double x0 =
                from.amplitudes(state)[static_cast<std::size_t>((i - 1) * ma + v - 1)];
            product += x0 * m;
            own += x0 * x0;
        }
    }
    return product / std::sqrt(own * other);
}

TEST(Overlap, IsThatOfThePlainFormula) {
    // Frozen orbitals or none, more roots than virtual orbitals and fewer, more roots than states,
    // fewer orbitals than basis functions.
    const struct {
        job_counts counts;
        std::int32_t roots;
    } shapes[] = {{{.nbasis = 12, .mi = 3, .ma = 5, .mci = 2, .nfc = 2, .nfv = 2}, 3},
                  {{.nbasis = 12, .mi = 2, .ma = 7, .mci = 3, .nfc = 1, .nfv = 2}, 2},
                  {{.nbasis = 4, .mi = 2, .ma = 2, .mci = 4}, 4},
                  {{.nbasis = 2, .mi = 1, .ma = 1, .mci = 1}, 1},
                  {{.nbasis = 14, .nbsuse = 12, .mi = 3, .ma = 5, .mci = 3, .nfc = 2, .nfv = 2}, 2},
                  {{.nbasis = 14, .nbsuse = 12, .mi = 3, .ma = 8, .mci = 2, .nfc = 1}, 2}};
    unsigned seed = 0;
    for (auto [counts, roots] : shapes) {
        const std::int32_t orbitals = counts.nbsuse == 0 ? counts.nbasis : counts.nbsuse;
        job from = made_up(counts, ++seed);
        const flib::matrix<double> a = made_up(counts, ++seed).moc;
        // The last functions stand for the same as the first.
        for (std::int32_t p = orbitals + 1; p <= counts.nbasis; ++p) {
            for (std::int32_t q = 1; q <= orbitals; ++q) from.moc(p, q) = from.moc(p - orbitals, q);
        }
        counts.mci = roots;
        job to = made_up(counts, ++seed);
        overlap_rows expected(static_cast<std::size_t>(from.counts.mci));
        for (std::int32_t state = 1; state <= from.counts.mci; ++state) {
            for (std::int32_t root = 1; root <= roots; ++root) {
                expected[static_cast<std::size_t>(state) - 1].push_back(
                    plain_overlap(from, state, to, root, a));
            }
        }
        for (std::int32_t p = 1; p <= counts.nbasis; ++p) {
            for (std::int32_t q = 1; q <= orbitals; ++q) {
                // Their differences are orthogonal to all orbitals of the reference.
                double outside = 0;
                if (p > orbitals) outside = q;
                if (p <= counts.nbasis - orbitals) outside = -q;
                to.moc(p, q) = outside;
                for (std::int32_t k = 1; k <= orbitals; ++k) {
                    to.moc(p, q) += from.moc(p, k) * a(k, q);
                }
            }
        }
        const overlap_rows found = overlap_reference(from).overlaps(to);
        ASSERT_EQ(found.size(), expected.size());
        for (std::size_t state = 0; state < found.size(); ++state) {
            ASSERT_EQ(found[state].size(), expected[state].size());
            for (std::size_t root = 0; root < found[state].size(); ++root) {
                EXPECT_NEAR(found[state][root], expected[state][root], 1e-11) << counts.nbasis;
            }
        }
        EXPECT_NEAR(overlap_reference(from).overlaps(from).back().back(), 1, 1e-14);
    }
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
    // With fewer orbitals than basis functions, too.
    job fewer = made_up({.nbasis = 6, .nbsuse = 5, .mi = 1, .ma = 3, .mci = 1, .nfc = 1}, 3);
    EXPECT_EQ(support::ending_of([&] { overlap_reference{fewer}; }), std::nullopt);
    for (std::int32_t p = 1; p <= 6; ++p) fewer.moc(p, 5) = fewer.moc(p, 1) + fewer.moc(p, 2);
    EXPECT_EQ(support::ending_of([&] { overlap_reference{fewer}; }), expected);
}

}  // namespace
