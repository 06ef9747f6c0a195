// One element of the transition density, or the largest, without all of it in memory: the same bits
// as of the whole.
#include "flib/excited/detail/density_parts.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include "flib/excited/get_ci_density_nbasis_nbsuse.h"

namespace {

using flib::matrix;

/// Numbers of magnitudes far apart, some of them as they should never be.
void fill(std::mt19937_64& random, std::span<double> values, int per_odd_one) {
    constexpr double inf = std::numeric_limits<double>::infinity();
    constexpr double odd[] = {inf,  -inf, std::numeric_limits<double>::quiet_NaN(),
                              -0.0, 0.0,  5e-324};
    std::normal_distribution<double> normal;
    for (double& x : values) {
        x = std::ldexp(normal(random), static_cast<int>(random() % 60) - 30);
        if (per_odd_one > 0 && random() % static_cast<unsigned>(per_odd_one) == 0) {
            x = odd[random() % std::size(odd)];
        }
    }
}

/// Gives the columns in parts of any width.
template <class Density>
void give(std::mt19937_64& random, const matrix<double>& moc, Density& density) {
    const std::int32_t n = moc.view().columns();
    for (std::int32_t first = 1; first <= n;) {
        const auto left = static_cast<unsigned>(n - first + 1);
        const auto count = static_cast<std::int32_t>(1 + random() % left);
        density.take({moc.view().column(first).data(), n, count});
        first += count;
    }
}

bool same_bits(double x, double y) {
    return (std::isnan(x) && std::isnan(y)) ||
           std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y);
}

TEST(DensityInParts, HasTheBitsOfTheWhole) {
    std::mt19937_64 random(31);
    const auto below = [&](unsigned n) { return static_cast<std::int32_t>(random() % n); };
    for (int round = 0; round < 120; ++round) {
        flib::orbital_counts n{0, 0, below(7), below(40), below(4), below(4)};
        // The largest need more than one block of the second product.
        if (round % 30 == 7) n.ma += 780;
        n.nbasis = n.nbsuse = n.mi + n.ma + n.nfc + n.nfv;
        if (n.nbasis == 0) continue;
        matrix<double> moc(n.nbasis, n.nbasis, "coefficients");
        matrix<double> xpy(n.ma, n.mi, "amplitudes");
        constexpr int per_odd_one[] = {0, 1, 20, 300, 10000};
        fill(random, moc.view().all(), per_odd_one[round % 5]);
        fill(random, xpy.view().all(), per_odd_one[round / 5 % 5]);
        // Equal magnitudes: the same function twice, with another sign.
        if (n.nbasis > 2 && round % 3 == 0) {
            const std::int32_t p = 1 + below(static_cast<unsigned>(n.nbasis - 1));
            for (std::int32_t j = 1; j <= n.nbasis; ++j) moc(p + 1, j) = -moc(p, j);
        }
        matrix<double> den(n.nbasis, n.nbasis, "the density");
        flib::get_ci_density_nbasis_nbsuse(n.nbasis, n.nbsuse, n.mi, n.ma, n.nfc, n.nfv, moc.view(),
                                           xpy.view().all(), den.view());
        flib::element_location largest;
        flib::mat_abs_maxval_d(n.nbasis, den.view(), largest);

        flib::density_extremum extremum(n, xpy.view().all());
        give(random, moc, extremum);
        const flib::extremum found = extremum.find();
        EXPECT_EQ(found.at, largest) << round;
        EXPECT_TRUE(same_bits(found.value, largest[0] == 0 ? 0.0 : den(largest[0], largest[1])));

        for (int i = 0; i < 20; ++i) {
            const flib::element_location at{1 + below(static_cast<unsigned>(n.nbasis)),
                                            1 + below(static_cast<unsigned>(n.nbasis))};
            flib::density_element element(n, at);
            give(random, moc, element);
            EXPECT_TRUE(same_bits(element.value(xpy.view().all()), den(at[0], at[1])))
                << round << ": " << at[0] << ' ' << at[1];
        }
    }
}

}  // namespace
