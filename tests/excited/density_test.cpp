// The transition density, as a whole and in parts, and the matrix product that it is built from:
// the bits of plain triple loops.
#include <gmock/gmock.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include "flib/excited/detail/density_parts.h"
#include "flib/excited/detail/matrix_product.h"
#include "flib/excited/get_ci_density_nbasis_nbsuse.h"
#include "support/support.h"

namespace {

using flib::matrix;
using testing::HasSubstr;

std::mt19937_64 generator(20);

std::int32_t below(std::int32_t n) {
    return static_cast<std::int32_t>(generator() % static_cast<unsigned>(n));
}

/// Magnitudes far apart, so that another order of summation shows in the last bits; one of
/// `per_odd_one` numbers, if that is not 0, is as it should never be.
matrix<double> random_matrix(std::int32_t rows, std::int32_t columns, int per_odd_one = 0) {
    constexpr double inf = std::numeric_limits<double>::infinity();
    constexpr double odd[] = {inf,  -inf, std::numeric_limits<double>::quiet_NaN(),
                              -0.0, 0.0,  5e-324};
    std::normal_distribution<double> normal;
    matrix<double> made(rows, columns, "random numbers");
    for (double& x : made.view().all()) {
        x = std::ldexp(normal(generator), below(60) - 30);
        if (per_odd_one > 0 && below(per_odd_one) == 0) x = odd[below(6)];
    }
    return made;
}

/// Each element one running sum of `term(row, column, k)` in ascending order of k.
template <class Term>
matrix<double> plain_sums(std::int32_t rows, std::int32_t columns, std::int32_t terms, Term term) {
    matrix<double> c(rows, columns, "sums");
    for (std::int32_t j = 1; j <= columns; ++j) {
        for (std::int32_t i = 1; i <= rows; ++i) {
            for (std::int32_t k = 1; k <= terms; ++k) c(i, j) += term(i, j, k);
        }
    }
    return c;
}

/// One NaN is as good as another.
bool same_bits(double x, double y) {
    return (std::isnan(x) && std::isnan(y)) ||
           std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y);
}

bool identical(const matrix<double>& found, const matrix<double>& expected) {
    return std::ranges::equal(found.view().all(), expected.view().all(), same_bits);
}

TEST(MatrixProduct, HasTheBitsOfTheTripleLoop) {
    // Around the edges of the tiles and of the blocks: 240 rows, 3072 columns, 256 terms.
    const struct {
        std::int32_t rows, columns, terms;
    } shapes[] = {{1, 1, 1},      {3, 5, 0},      {0, 4, 3},    {4, 0, 3},
                  {7, 9, 2},      {24, 8, 16},    {25, 7, 255}, {23, 17, 256},
                  {240, 48, 257}, {241, 13, 513}, {5, 3073, 3}};
    for (const auto& [rows, columns, terms] : shapes) {
        const matrix<double> a = random_matrix(rows, terms, 300);
        const matrix<double> b = random_matrix(terms, columns);
        const matrix<double> expected = plain_sums(
            rows, columns, terms, [&](auto i, auto j, auto k) { return a(i, k) * b(k, j); });
        for (const flib::product_variant& variant : flib::product_variants()) {
            matrix<double> c(rows, columns, "sums");
            variant.multiply_add(a.view(), b.view(), c.view());
            EXPECT_TRUE(identical(c, expected)) << variant.name << " of " << rows << " rows";
        }
    }
}

/// Gives the columns of the coefficients in parts of any width.
template <class Density>
void give(const matrix<double>& moc, Density& density) {
    const std::int32_t n = moc.view().columns();
    for (std::int32_t first = 1; first <= n;) {
        const std::int32_t count = 1 + below(n - first + 1);
        density.take({moc.view().column(first).data(), n, count});
        first += count;
    }
}

TEST(Density, HasTheBitsOfTheTripleLoopsAsAWholeAndInParts) {
    for (int round = 0; round < 120; ++round) {
        SCOPED_TRACE(round);
        flib::orbital_counts n{0, 0, below(7), below(40), below(4), below(4)};
        // More than one block of the second product, the largest element in the last.
        const bool large = round % 31 == 7;
        if (large) n.ma += 780;
        if (round % 30 == 17) n.mi += 60;
        const std::int32_t ni = n.nfc + n.mi;
        const std::int32_t nb = n.nbasis = n.nbsuse = ni + n.ma + n.nfv;
        if (nb == 0) continue;
        constexpr int per_odd_one[] = {0, 1, 20, 300, 10000};
        matrix<double> moc = random_matrix(nb, nb, per_odd_one[round % 5]);
        const matrix<double> xpy = random_matrix(n.ma, n.mi, per_odd_one[round / 5 % 5]);
        for (std::int32_t j = 1; large && j <= nb; ++j) moc(nb, j) *= 0x1p100;
        // Equal magnitudes: the same function twice, with another sign.
        if (nb > 2 && round % 3 == 0) {
            const std::int32_t p = 1 + below(nb - 1);
            for (std::int32_t j = 1; j <= nb; ++j) moc(p + 1, j) = -moc(p, j);
        }

        // Amplitudes of frozen orbitals are 0.
        const matrix<double> half = plain_sums(nb, ni, nb - ni, [&](auto p, auto i, auto a) {
            return moc(p, ni + a) * (i > n.nfc && a <= n.ma ? xpy(a, i - n.nfc) : 0.0);
        });
        const matrix<double> expected =
            plain_sums(nb, nb, ni, [&](auto p, auto q, auto i) { return half(p, i) * moc(q, i); });
        matrix<double> den = random_matrix(nb, nb);
        flib::get_ci_density_nbasis_nbsuse(nb, nb, n.mi, n.ma, n.nfc, n.nfv, moc.view(),
                                           xpy.view().all(), den.view());
        EXPECT_TRUE(identical(den, expected));

        flib::element_location largest;
        flib::mat_abs_maxval_d(nb, den.view(), largest);
        flib::density_extremum extremum(n, xpy.view().all());
        give(moc, extremum);
        const flib::extremum found = extremum.find();
        EXPECT_EQ(found.at, largest);
        EXPECT_TRUE(same_bits(found.value, largest[0] == 0 ? 0.0 : den(largest[0], largest[1])));
        for (int i = 0; i < 20; ++i) {
            const flib::element_location at{1 + below(nb), 1 + below(nb)};
            flib::density_element element(n, at);
            give(moc, element);
            EXPECT_TRUE(same_bits(element.value(xpy.view().all()), den(at[0], at[1])))
                << at[0] << ' ' << at[1];
        }
    }
}

TEST(Density, StatesWhichPreconditionFails) {
    const matrix<double> moc = random_matrix(5, 5);
    matrix<double> den(5, 5, "the density");
    const auto of = [&](flib::orbital_counts n, std::size_t amplitudes,
                        std::int32_t coefficients = 5, std::int32_t results = 5) {
        return support::answer_of("", [&] {
            flib::get_ci_density_nbasis_nbsuse(
                n.nbasis, n.nbsuse, n.mi, n.ma, n.nfc, n.nfv, {moc.view().data(), 5, coefficients},
                moc.view().all().first(amplitudes), {den.view().data(), results, 5});
            return "built";
        });
    };
    EXPECT_EQ(of({5, 5, 1, 3, 1, -1}, 3),
              "exit 2: the transition density cannot be built: a count is negative (nbasis = 5, "
              "nbsuse = 5, mi = 1, nfc = 1, ma = 3, nfv = -1)");
    EXPECT_THAT(of({5, 4, 1, 3, 1, 0}, 3), HasSubstr("differs from that of basis functions"));
    EXPECT_THAT(of({5, 6, 1, 3, 1, 0}, 3), HasSubstr("differs from that of basis functions"));
    EXPECT_THAT(of({5, 5, 1, 4, 1, 0}, 4), HasSubstr("mi + nfc + ma + nfv = 6 differs from nb"));
    EXPECT_THAT(of({5, 5, INT32_MAX, 4, INT32_MAX, 3}, 4), HasSubstr("= 4294967301 differs from"));
    EXPECT_THAT(of({5, 5, 1, 3, 1, 0}, 2), HasSubstr("there are 2 amplitudes of 3"));
    EXPECT_THAT(of({5, 5, 1, 3, 1, 0}, 3, 4), HasSubstr("there are 20 MO coefficients of 25"));
    EXPECT_THAT(of({5, 5, 1, 3, 1, 0}, 3, 5, 4), HasSubstr("20 elements for the result of 25"));
    EXPECT_TRUE(identical(den, matrix<double>(5, 5, "zeros")));
}

}  // namespace
