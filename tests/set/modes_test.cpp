// Normal modes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "model.h"
#include "set/derivatives.h"
#include "set/modes.h"

namespace {

using namespace sgn_set;

constexpr double u = 1822.888486;          // electron masses
constexpr double per_cm = 219474.6313632;  // of a Hartree

/// Atoms on a line along (2, -1, 2) / 3 with springs of `k` between neighbours: force constants.
struct chain {
    std::vector<atom> atoms;
    table constants;
    vec3 axis{2 / 3.0, -1 / 3.0, 2 / 3.0};

    chain(const std::vector<double>& masses, double k)
        : constants(3 * masses.size(), 3 * masses.size()) {
        for (std::size_t a = 0; a < masses.size(); ++a) {
            atoms.push_back({"X", 0, masses[a], scaled(static_cast<double>(a), axis)});
        }
        for (std::size_t a = 0; a + 1 < masses.size(); ++a) {
            for (std::size_t i = 0; i < 3; ++i) {
                for (std::size_t j = 0; j < 3; ++j) {
                    const double part = k * axis[i] * axis[j];
                    constants(3 * a + i, 3 * a + j) += part;
                    constants(3 * a + 3 + i, 3 * a + 3 + j) += part;
                    constants(3 * a + i, 3 * a + 3 + j) -= part;
                    constants(3 * a + 3 + i, 3 * a + j) -= part;
                }
            }
        }
    }
};

TEST(Modes, OfTwoAtoms) {
    const chain pair({3, 6}, 0.4);
    table dipole(6, 3);
    for (std::size_t i = 0; i < 3; ++i) dipole(3 + i, 1) = 0.25 * pair.axis[i];
    const auto modes = normal_modes(pair.atoms, pair.constants, dipole, {0, 0, 0.3});
    ASSERT_EQ(modes.size(), 1U);
    const double omega = std::sqrt(0.4 / (2 * u));
    EXPECT_NEAR(modes[0].wavenumber, omega * per_cm, 1e-6);
    // The displacements are as 1 / mass: 2 to 1.
    EXPECT_NEAR(modes[0].reduced_mass, (4 * 3 + 1 * 6) / 5.0, 1e-10);
    const vec3 first = scaled(-2 / std::sqrt(5.0), pair.axis);
    const vec3 second = scaled(1 / std::sqrt(5.0), pair.axis);
    // The first of the largest components is positive.
    for (std::size_t k = 0; k < 3; ++k) {
        EXPECT_NEAR(modes[0].displacement[0][k], -first[k], 1e-10);
        EXPECT_NEAR(modes[0].displacement[1][k], -second[k], 1e-10);
    }
    const double derivative = -0.25 / std::sqrt(5.0) / std::sqrt(18 / 5.0 * u);
    EXPECT_NEAR(modes[0].dipole_derivative[1], derivative, 1e-12);
    EXPECT_NEAR(modes[0].dipole_derivative_q[1], derivative / std::sqrt(omega), 1e-10);
    EXPECT_EQ(modes[0].dipole_derivative[0], 0);
    EXPECT_NEAR(modes[0].borrowed, std::pow(derivative / 0.3, 2) / omega, 1e-10);
}

TEST(Modes, OfALineAreFourOfThreeAtoms) {
    // Carbon dioxide without bending force constants; then with an unstable bend.
    chain line({16, 12, 16}, 0.9);
    const table none(9, 3);
    auto modes = normal_modes(line.atoms, line.constants, none, {0, 0, 0});
    ASSERT_EQ(modes.size(), 4U);
    EXPECT_NEAR(modes[0].wavenumber, 0, 1e-3);
    EXPECT_NEAR(modes[1].wavenumber, 0, 1e-3);
    EXPECT_NEAR(modes[2].wavenumber, std::sqrt(0.9 / 16 / u) * per_cm, 1e-6);
    EXPECT_NEAR(modes[3].wavenumber, std::sqrt(0.9 * (1 / 16.0 + 2 / 12.0) / u) * per_cm, 1e-6);
    EXPECT_TRUE(std::isnan(modes[3].borrowed));
    // Across the line, (1, 2, 0) / sqrt(5): the middle atom is driven off, the outer ones follow.
    for (std::size_t i = 0; i < 2; ++i) {
        for (std::size_t j = 0; j < 2; ++j) {
            const double part = -0.1 * (i == 0 ? 1 : 2) * (j == 0 ? 1 : 2) / 5.0;
            for (std::size_t a = 0; a < 3; ++a) {
                for (std::size_t b = 0; b < 3; ++b) {
                    const double weight = (a == 1 ? -2.0 : 1.0) * (b == 1 ? -2.0 : 1.0);
                    line.constants(3 * a + i, 3 * b + j) += part * weight;
                }
            }
        }
    }
    modes = normal_modes(line.atoms, line.constants, none, {1, 0, 0});
    EXPECT_NEAR(modes[0].wavenumber, -std::sqrt(0.1 * (2 / 16.0 + 4 / 12.0) / u) * per_cm, 1e-6);
    EXPECT_TRUE(std::isnan(modes[0].dipole_derivative_q[0]));
    EXPECT_EQ(modes[0].dipole_derivative[0], 0);
    EXPECT_TRUE(std::isnan(modes[0].borrowed));
}

TEST(Modes, LoseTranslationsAndRotationsOnASlope) {
    // Forces that do not vanish give rotations a share in the force constants.
    const auto& of = model::bent;
    const auto made = differentiate(make_set(model::reference(of), model::displaced(of, 0.002)));
    const table constants = force_constants(made.forces);
    const auto reference = model::reference(of);
    std::vector<atom> atoms;
    for (std::size_t a = 0; a < of.x.size(); ++a) {
        atoms.push_back({"", of.numbers[a], reference.contents.mass[a], of.x[a]});
    }
    const auto modes = normal_modes(atoms, constants, made.dipole, {0.1, 0, 0});
    ASSERT_EQ(modes.size(), 6U);
    for (const normal_mode& mode : modes) {
        vec3 momentum{};
        vec3 turn{};
        double norm = 0;
        for (std::size_t a = 0; a < atoms.size(); ++a) {
            const vec3 p = scaled(atoms[a].mass, mode.displacement[a]);
            const vec3& x = atoms[a].x;
            momentum = sum(momentum, p);
            turn = sum(turn, {x[1] * p[2] - x[2] * p[1], x[2] * p[0] - x[0] * p[2],
                              x[0] * p[1] - x[1] * p[0]});
            norm += std::pow(length(mode.displacement[a]), 2);
        }
        EXPECT_LT(length(momentum), 1e-10);
        EXPECT_LT(length(turn), 1e-10);
        EXPECT_NEAR(norm, 1, 1e-10);
    }
}

TEST(Modes, TakeForceConstantsFromForces) {
    table forces(3, 3);
    forces.values = {-1, 0.5, 0.1, 0.25, -2, 0.2, 0.1, 0.2, -3};
    EXPECT_THAT(force_constants(forces).values,
                testing::ElementsAre(1, -0.375, -0.1, -0.375, 2, -0.2, -0.1, -0.2, 3));
    EXPECT_DOUBLE_EQ(largest_asymmetry(forces), 0.25);
    EXPECT_TRUE(normal_modes(std::vector<atom>{{"O", 8, 16, {0, 0, 0}}}, force_constants(forces),
                             table(3, 3), {0, 0, 0})
                    .empty());
}

}  // namespace
