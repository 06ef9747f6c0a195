// The transition density, as a whole and in parts, the matrix product that it is built from, and a
// product's largest element: the bits of plain triple loops.
#include <gmock/gmock.h>

#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <utility>

#include "flib/excited/chosen_element.h"
#include "flib/excited/density_parts.h"
#include "flib/excited/detail/largest_of_product.h"
#include "flib/excited/get_ci_density_nbasis_nbsuse.h"
#include "flib/util/detail/product_variants.h"
#include "flib/util/matrix_product.h"
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

/// The element that a scan by rows meets first among the largest.
flib::extremum plain_extremum(const matrix<double>& m) {
    flib::extremum largest;
    for (std::int32_t i = 1; i <= m.view().rows(); ++i) {
        for (std::int32_t j = 1; j <= m.view().columns(); ++j) {
            if (std::abs(m(i, j)) > std::abs(largest.value)) largest = {{i, j}, m(i, j)};
        }
    }
    return largest;
}

void multiply_row(matrix<double>& m, std::int32_t row, double factor) {
    for (std::int32_t j = 1; j <= m.view().columns(); ++j) m(row, j) *= factor;
}
void multiply_column(matrix<double>& m, std::int32_t column, double factor) {
    for (double& x : m.view().column(column)) x *= factor;
}

TEST(LargestOfProduct, IsThatOfTheTripleLoop) {
    constexpr double inf = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    using factors = std::pair<matrix<double>&, matrix<double>&>;
    const auto nearly_equal = [](factors f, double difference) {
        for (matrix<double>* const m : {&f.first, &f.second}) {
            for (double& x : m->view().all()) {
                x = 1 + difference * std::normal_distribution<double>()(generator);
            }
        }
    };
    const auto put = [](matrix<double>& m, double x) {
        if (!m.view().all().empty())
            m(1 + below(m.view().rows()), 1 + below(m.view().columns())) = x;
    };
    const struct {
        const char* name;
        std::function<void(factors)> change;
    } kinds[] = {
        {"of all sizes", [](factors) {}},
        {"usual",
         [](factors f) {
             for (matrix<double>* const m : {&f.first, &f.second}) {
                 for (double& x : m->view().all())
                     x = std::normal_distribution<double>()(generator);
             }
         }},
        // Closer to each other than 16 bits tell, down to the last bit of a sum.
        {"nearly equal", [&](factors f) { nearly_equal(f, 1e-4); }},
        {"equal but for rounding", [&](factors f) { nearly_equal(f, 1e-16); }},
        {"all equal", [&](factors f) { nearly_equal(f, 0); }},
        {"all zero", [](factors f) { std::ranges::fill(f.first.view().all(), 0.0); }},
        {"zeros in b", [](factors f) { std::ranges::fill(f.second.view().all(), -0.0); }},
        {"equal, of opposite sign",
         [](factors f) {
             auto& [a, b] = f;
             const std::int32_t last = a.view().rows();
             for (std::int32_t k = 1; k <= a.view().columns(); ++k) a(last, k) = -a(1, k);
             const std::int32_t end = b.view().columns();
             for (std::int32_t k = 1; k <= b.view().rows(); ++k) b(k, end) = -b(k, 1);
             multiply_column(b, end, 0x1p40), multiply_column(b, 1, 0x1p40);
             multiply_row(a, last, 0x1p40), multiply_row(a, 1, 0x1p40);
         }},
        {"rows of all lengths",
         [](factors f) {
             for (std::int32_t i = 1; i <= f.first.view().rows(); ++i) {
                 multiply_row(f.first, i, std::ldexp(1.0, -3 * i));
             }
         }},
        {"columns of all lengths",
         [](factors f) {
             for (std::int32_t j = 1; j <= f.second.view().columns(); ++j) {
                 multiply_column(f.second, j, std::ldexp(1.0, 7 * j));
             }
         }},
        // The longest row is at right angles to all columns.
        {"small beside the norms",
         [](factors f) {
             auto& [a, b] = f;
             for (double& x : a.view().column(1)) x = 0x1p90;
             multiply_column(a, a.view().columns(), 0x1p-40);
             for (std::int32_t j = 1; j <= b.view().columns(); ++j) b(1, j) = 0;
         }},
        {"infinite in a", [&](factors f) { put(f.first, -inf); }},
        {"infinite in b", [&](factors f) { put(f.second, inf); }},
        {"NaN in a", [&](factors f) { put(f.first, nan); }},
        {"NaN in b", [&](factors f) { put(f.second, nan); }},
        {"a huge number in a", [&](factors f) { put(f.first, 1e300); }},
        {"a huge number in b", [&](factors f) { put(f.second, -1e300); }},
        {"subnormal b", [](factors f) { multiply_column(f.second, 1, 0x1p-1040); }},
    };
    for (int round = 0; round < 24; ++round) {
        // Few enough elements that all may be candidates, or too many for that.
        const std::int32_t most = round % 8 == 3 ? 60 : 31;
        const std::int32_t terms = round % 5 == 0 ? 1 + round / 5 : 1 + below(80);
        const std::int32_t rows = 1 + below(most);
        const std::int32_t columns = 1 + below(most);
        const double scale = std::ldexp(1.0, round % 8 == 1 ? below(1200) - 600 : 0);
        for (const auto& [name, change] : kinds) {
            matrix<double> a = random_matrix(rows, terms);
            matrix<double> b = random_matrix(terms, columns);
            change({a, b});
            for (double& x : a.view().all()) x *= scale;
            for (double& x : b.view().all()) x /= round % 16 == 1 ? scale : 1;
            const flib::extremum expected = plain_extremum(plain_sums(
                rows, columns, terms, [&](auto i, auto j, auto k) { return a(i, k) * b(k, j); }));
            for (const flib::screening use :
                 {flib::screening::where_possible, flib::screening::never}) {
                const flib::extremum found = flib::largest_of_product(a.view(), b.view(), use);
                EXPECT_EQ(found.at, expected.at) << name << ", " << rows << " x " << terms << " x "
                                                 << columns << ", screening " << int(use);
                EXPECT_TRUE(same_bits(found.value, expected.value)) << name;
            }
        }
    }
}

TEST(LargestOfProduct, IsFoundInLaterBlocks) {
    // 174 columns to a block. In the second each element is larger than those before it, or none
    // is.
    constexpr std::int32_t rows = 3001;
    constexpr std::int32_t columns = 400;
    for (const bool growing : {false, true}) {
        matrix<double> a = random_matrix(rows, 1);
        matrix<double> b = random_matrix(1, columns);
        for (std::int32_t i = 1; growing && i <= rows; ++i) a(i, 1) = 1 + i * 1e-9;
        for (std::int32_t j = 1; growing && j <= columns; ++j) b(1, j) = j <= 174 ? -1 : j;
        a(rows, 1) = -(a(rows - 1, 1) = 0x1p60);
        b(1, columns) = b(1, columns - 1) = 0x1p60;
        for (const flib::screening use :
             {flib::screening::where_possible, flib::screening::never}) {
            const flib::extremum found = flib::largest_of_product(a.view(), b.view(), use);
            EXPECT_EQ(found.at, (flib::element_location{rows - 1, columns - 1}));
            EXPECT_EQ(found.value, 0x1p120);
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
            const double one = flib::density_element_of(n, moc.view(), xpy.view().all(), at);
            EXPECT_TRUE(same_bits(one, den(at[0], at[1]))) << at[0] << ' ' << at[1];
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

    const auto one = [&](flib::orbital_counts n, std::size_t amplitudes, std::int32_t coefficients,
                         flib::element_location at) {
        return support::answer_of("", [&] {
            flib::density_element_of(n, {moc.view().data(), 5, coefficients},
                                     moc.view().all().first(amplitudes), at);
            return "computed";
        });
    };
    const flib::orbital_counts fine{5, 5, 1, 3, 1, 0};
    EXPECT_EQ(one(fine, 3, 5, {5, 1}), "computed");
    EXPECT_THAT(one({5, 4, 1, 3, 1, 0}, 3, 5, {1, 1}), HasSubstr("differs from that of basis"));
    EXPECT_THAT(one(fine, 2, 5, {1, 1}), HasSubstr("there are 2 amplitudes of 3"));
    EXPECT_THAT(one(fine, 3, 4, {1, 1}), HasSubstr("there are 20 MO coefficients of 25"));
    EXPECT_EQ(one(fine, 3, 5, {6, 1}),
              "exit 2: the chosen element of the transition density, row 6 and column 1, lies "
              "outside 1..5");
    EXPECT_THAT(one(fine, 3, 5, {1, 0}), HasSubstr("row 1 and column 0, lies outside 1..5"));
}

}  // namespace
