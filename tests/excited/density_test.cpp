// The transition density.
#include <gmock/gmock.h>

#include <cstring>
#include <random>

#include "flib/excited/get_ci_density_nbasis_nbsuse.h"
#include "support/support.h"

namespace {

using namespace flib;
using testing::HasSubstr;

struct orbitals {
    std::int32_t nfc, mi, ma, nfv;
    std::int32_t nbasis() const { return nfc + mi + ma + nfv; }
};

using elements = std::vector<double>;

elements density(const orbitals& n, const elements& moc, const elements& xpy) {
    const std::int32_t nb = n.nbasis();
    elements den(moc.size(), 99.0);
    get_ci_density_nbasis_nbsuse(nb, nb, n.mi, n.ma, n.nfc, n.nfv, {moc.data(), nb, nb}, xpy,
                                 {den.data(), nb, nb});
    return den;
}

elements random_elements(std::int32_t rows, std::int32_t columns) {
    static std::mt19937_64 generator(20240203);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    elements values(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns));
    for (double& value : values) value = unit(generator);
    return values;
}

/// Two plain triple loops, each element one running sum in ascending order.
elements plain_density(const orbitals& n, const elements& moc, const elements& xpy) {
    const std::int32_t nb = n.nbasis();
    const std::int32_t ni = n.nfc + n.mi;
    const matrix_view<const double> c(moc.data(), nb, nb);
    const matrix_view<const double> amplitude(xpy.data(), n.ma, n.mi);
    matrix<double> half(nb, ni, "half");
    matrix<double> den(nb, nb, "den");
    for (std::int32_t p = 1; p <= nb; ++p) {
        for (std::int32_t i = 1; i <= ni; ++i) {
            for (std::int32_t a = 1; a <= nb - ni; ++a) {
                const double z = i > n.nfc && a <= n.ma ? amplitude(a, i - n.nfc) : 0.0;
                half(p, i) += c(p, ni + a) * z;
            }
        }
        for (std::int32_t q = 1; q <= nb; ++q) {
            for (std::int32_t i = 1; i <= ni; ++i) den(p, q) += half(p, i) * c(q, i);
        }
    }
    return {den.view().all().begin(), den.view().all().end()};
}

TEST(Density, HasTheBitsOfThePlainLoops) {
    for (const orbitals n : {orbitals{0, 1, 0, 0},
                             {0, 0, 1, 0},
                             {0, 1, 1, 0},
                             {1, 2, 3, 1},
                             {0, 7, 26, 0},
                             {3, 9, 20, 1},
                             {2, 61, 66, 1},
                             {5, 28, 94, 3}}) {
        const elements moc = random_elements(n.nbasis(), n.nbasis());
        const elements xpy = random_elements(n.ma, n.mi);
        const elements found = density(n, moc, xpy);
        const elements expected = plain_density(n, moc, xpy);
        EXPECT_EQ(std::memcmp(found.data(), expected.data(), found.size() * sizeof(double)), 0)
            << n.nbasis();
    }
}

// With orbitals that are the basis functions, the amplitudes appear as a block of the density:
// below the occupied orbitals, to the right of the frozen core, above the frozen virtual ones.
TEST(Density, OfUnitOrbitalsIsTheAmplitudes) {
    const elements xpy{1, 2, 3, 4, 5, 6};
    for (const orbitals n : {orbitals{0, 2, 3, 0}, {1, 2, 3, 0}, {0, 2, 3, 1}, {2, 2, 3, 2}}) {
        const std::int32_t nb = n.nbasis();
        matrix<double> unit(nb, nb, "unit");
        matrix<double> block(nb, nb, "block");
        for (std::int32_t i = 1; i <= nb; ++i) unit(i, i) = 1;
        for (std::size_t k = 0; k < xpy.size(); ++k) {
            const auto [i, a] = std::div(static_cast<int>(k), 3);
            block(n.nfc + n.mi + a + 1, n.nfc + i + 1) = xpy[k];
        }
        const std::span<const double> expected = block.view().all();
        const std::span<const double> moc = unit.view().all();
        EXPECT_THAT(density(n, {moc.begin(), moc.end()}, xpy), testing::ElementsAreArray(expected));
    }
}

TEST(Density, ChangesItsSignWithAmplitudesAndOrbitals) {
    const orbitals n{1, 1, 3, 1};  // only orbital 2 contributes
    elements moc = random_elements(6, 6);
    elements xpy = random_elements(3, 1);
    elements negative = density(n, moc, xpy);
    for (double& value : negative) value = -value;
    for (std::size_t p = 0; p < 6; ++p) {
        moc[p] = -moc[p];
        moc[6 + p] = -moc[6 + p];
    }
    EXPECT_EQ(density(n, moc, xpy), negative);
    for (double& value : xpy) value = -value;
    for (double& value : negative) value = -value;
    EXPECT_EQ(density(n, moc, xpy), negative);
}

TEST(Density, StatesWhichPreconditionFails) {
    elements moc(100, 1.0);
    elements den(100, 7.0);
    const auto of = [&](std::int32_t nbasis, std::int32_t nbsuse, orbitals n, std::size_t given) {
        const auto end = support::ending_of([&] {
            get_ci_density_nbasis_nbsuse(nbasis, nbsuse, n.mi, n.ma, n.nfc, n.nfv,
                                         {moc.data(), nbsuse, nbasis}, {moc.data(), given},
                                         {den.data(), nbasis, nbasis});
        });
        EXPECT_EQ(den, elements(100, 7.0));
        return end ? std::to_string(end->status) + end->text : "";
    };
    EXPECT_THAT(of(5, 5, {1, 1, 3, -1}, 3),
                HasSubstr("2the transition density can not be built: a count is negative (nbasis = "
                          "5, nbsuse = 5, mi = 1, nfc = 1, ma = 3, nfv = -1)"));
    EXPECT_THAT(of(5, 4, {1, 1, 3, 0}, 3), HasSubstr("differs from that of basis functions"));
    EXPECT_THAT(of(5, 5, {1, 1, 4, 0}, 4),
                HasSubstr("mi + nfc + ma + nfv = 6 differs from nbasis"));
    EXPECT_THAT(of(5, 5, {INT32_MAX, INT32_MAX, 4, 5}, 4), HasSubstr("differs from nbasis"));
    EXPECT_THAT(of(5, 5, {1, 1, 3, 0}, 2), HasSubstr("there are 2 amplitudes of 3"));
}

}  // namespace
