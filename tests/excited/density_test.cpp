// The transition density and the matrix product that it is built from.
#include <gmock/gmock.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include "flib/excited/detail/matrix_product.h"
#include "flib/excited/get_ci_density_nbasis_nbsuse.h"
#include "support/support.h"

namespace {

using flib::matrix;
using testing::HasSubstr;

/// Magnitudes far apart, so that another order of summation shows in the last bits.
matrix<double> random_matrix(std::int32_t rows, std::int32_t columns) {
    static std::mt19937_64 random(20);
    std::normal_distribution<double> normal;
    std::uniform_int_distribution<int> exponent(-30, 30);
    matrix<double> made(rows, columns, "random numbers");
    for (double& x : made.view().all()) x = std::ldexp(normal(random), exponent(random));
    return made;
}

/// The triple loop, each element one running sum in ascending order.
matrix<double> plain_product(const matrix<double>& a, const matrix<double>& b) {
    matrix<double> c(a.view().rows(), b.view().columns(), "the product");
    for (std::int32_t j = 1; j <= b.view().columns(); ++j) {
        for (std::int32_t i = 1; i <= a.view().rows(); ++i) {
            for (std::int32_t k = 1; k <= b.view().rows(); ++k) c(i, j) += a(i, k) * b(k, j);
        }
    }
    return c;
}

/// Whether two matrices have the same bits; one NaN is as good as another.
bool identical(const matrix<double>& found, const matrix<double>& expected) {
    return std::ranges::equal(found.view().all(), expected.view().all(), [](double x, double y) {
        return (std::isnan(x) && std::isnan(y)) ||
               std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y);
    });
}

TEST(MatrixProduct, HasTheBitsOfTheTripleLoop) {
    // Around the edges of the tiles and of the blocks: 240 rows, 3072 columns, 256 terms.
    const struct {
        std::int32_t rows, columns, terms;
    } shapes[] = {{1, 1, 1},      {3, 5, 0},      {0, 4, 3},    {4, 0, 3},
                  {7, 9, 2},      {24, 8, 16},    {25, 7, 255}, {23, 17, 256},
                  {240, 48, 257}, {241, 13, 513}, {5, 3073, 3}};
    for (const auto& [rows, columns, terms] : shapes) {
        matrix<double> a = random_matrix(rows, terms);
        const matrix<double> b = random_matrix(terms, columns);
        if (a.view().all().size() > 2) a.view().all()[1] = -0.0;
        if (a.view().all().size() > 20) {
            a.view().all()[20] = std::numeric_limits<double>::infinity();
        }
        const matrix<double> expected = plain_product(a, b);
        for (const flib::product_variant& variant : flib::product_variants()) {
            matrix<double> c = random_matrix(rows, columns);
            std::ranges::fill(c.view().all(), 0.0);
            variant.multiply_add(a.view(), b.view(), c.view());
            EXPECT_TRUE(identical(c, expected)) << variant.name << " of " << rows << " rows";
        }
    }
}

struct orbitals {
    std::int32_t nfc, mi, ma, nfv;
    std::int32_t nbasis() const { return nfc + mi + ma + nfv; }
};

TEST(Density, HasTheBitsOfTheTripleLoops) {
    for (const orbitals n : {orbitals{0, 1, 0, 0},
                             {0, 0, 1, 0},
                             {1, 2, 3, 1},
                             {0, 7, 26, 0},
                             {3, 9, 20, 2},
                             {2, 61, 66, 1}}) {
        const std::int32_t nb = n.nbasis();
        const std::int32_t ni = n.nfc + n.mi;
        const matrix<double> moc = random_matrix(nb, nb);
        const matrix<double> xpy = random_matrix(n.ma, n.mi);
        matrix<double> cm(nb, nb - ni, "virtual orbitals");
        matrix<double> cnt(ni, nb, "occupied orbitals, as rows");
        matrix<double> z(nb - ni, ni, "amplitudes, of frozen orbitals too");
        for (std::int32_t p = 1; p <= nb; ++p) {
            for (std::int32_t i = 1; i <= ni; ++i) cnt(i, p) = moc(p, i);
            for (std::int32_t a = 1; a <= nb - ni; ++a) cm(p, a) = moc(p, ni + a);
        }
        for (std::int32_t i = 1; i <= n.mi; ++i) {
            for (std::int32_t a = 1; a <= n.ma; ++a) z(a, n.nfc + i) = xpy(a, i);
        }
        matrix<double> den = random_matrix(nb, nb);
        flib::get_ci_density_nbasis_nbsuse(nb, nb, n.mi, n.ma, n.nfc, n.nfv, moc.view(),
                                           xpy.view().all(), den.view());
        EXPECT_TRUE(identical(den, plain_product(plain_product(cm, z), cnt))) << nb;
    }
}

TEST(Density, StatesWhichPreconditionFails) {
    const matrix<double> moc = random_matrix(5, 5);
    matrix<double> den(5, 5, "the density");
    const auto of = [&](std::int32_t nbsuse, orbitals n, std::size_t amplitudes,
                        std::int32_t coefficients = 5, std::int32_t results = 5) {
        return support::answer_of("", [&] {
            flib::get_ci_density_nbasis_nbsuse(
                5, nbsuse, n.mi, n.ma, n.nfc, n.nfv, {moc.view().data(), 5, coefficients},
                moc.view().all().first(amplitudes), {den.view().data(), results, 5});
            return "built";
        });
    };
    EXPECT_EQ(of(5, {1, 1, 3, -1}, 3),
              "exit 2: the transition density cannot be built: a count is negative (nbasis = 5, "
              "nbsuse = 5, mi = 1, nfc = 1, ma = 3, nfv = -1)");
    EXPECT_THAT(of(4, {1, 1, 3, 0}, 3), HasSubstr("differs from that of basis functions"));
    EXPECT_THAT(of(5, {1, 1, 4, 0}, 4), HasSubstr("mi + nfc + ma + nfv = 6 differs from nbasis"));
    EXPECT_THAT(of(5, {INT32_MAX, INT32_MAX, 4, 3}, 4),
                HasSubstr("= 4294967301 differs from nbasis"));
    EXPECT_THAT(of(5, {1, 1, 3, 0}, 2), HasSubstr("there are 2 amplitudes of 3"));
    EXPECT_THAT(of(5, {1, 1, 3, 0}, 3, 4), HasSubstr("there are 20 MO coefficients of 25"));
    EXPECT_THAT(of(5, {1, 1, 3, 0}, 3, 5, 4), HasSubstr("20 elements for the result of 25"));
    EXPECT_TRUE(identical(den, matrix<double>(5, 5, "zeros")));
}

}  // namespace
