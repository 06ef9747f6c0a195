#include "sgn/check/frame.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <numeric>
#include <random>

namespace {

using sgn::angle_between;
using sgn::difference;
using sgn::length;
using sgn::turn_of_frame;
using sgn::vec3;
using geometry = std::vector<vec3>;

double rotation(const geometry& from, const geometry& to, const std::vector<double>& mass) {
    return turn_of_frame(from, to, mass).degrees;
}

struct molecule {
    geometry x;
    std::vector<double> mass;
    bool linear = false;
};

// Hydrogen, carbon dioxide, water, ammonia.
const molecule molecules[] = {
    {{{0, 0, 0}, {0, 0, 0.74}}, {1, 1}, true},
    {{{0, 0, 0}, {0.67, 0.67, 0.67}, {-0.67, -0.67, -0.67}}, {12, 16, 16}, true},
    {{{0, 0, 0.118}, {0, 0.76, -0.472}, {0, -0.76, -0.472}}, {16, 1, 1}},
    {{{0, 0, 0}, {0.9, 0, -0.4}, {-0.5, 0.8, -0.4}, {-0.5, -0.8, -0.4}}, {14, 1, 1, 1}},
};

/// `x` turned by `degrees` about coordinate axis `k`, with six decimals as result files have them.
geometry turned(geometry x, std::size_t k, double degrees) {
    const double c = std::cos(degrees * std::numbers::pi / 180);
    const double s = std::sin(degrees * std::numbers::pi / 180);
    const std::size_t i = (k + 1) % 3;
    const std::size_t j = (k + 2) % 3;
    for (vec3& atom : x) {
        const vec3 old = atom;
        atom[i] = c * old[i] - s * old[j];
        atom[j] = s * old[i] + c * old[j];
        for (double& component : atom) component = std::round(component * 1e6) / 1e6;
    }
    return x;
}

TEST(Frame, IsTurnedOnlyIfNoDisplacedAtomExplainsTheGeometry) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> any(-180, 180);
    for (int round = 0; round < 2000; ++round) {
        const molecule& m = molecules[random() % std::size(molecules)];
        // The molecule stands in any direction; one atom is displaced, then all are turned.
        const geometry from = turned(turned(m.x, 0, any(random)), 1, any(random));
        const double step = std::array{0.0, 0.001, 0.01, 0.3}[random() % 4];
        const double angle = std::array{0.0, 0.5, 5.0, 30.0, 120.0, 175.0}[random() % 6];
        geometry to = from;
        vec3& atom = to[random() % to.size()];
        for (double& component : atom) component += step * any(random) / 180;
        to = turned(to, random() % 3, angle);
        const sgn::frame_turn turn = turn_of_frame(from, to, m.mass);
        const double found = turn.degrees;
        if (angle == 0) {
            EXPECT_EQ(found, 0) << m.x.size() << " atoms, " << step;
        } else if (step == 0 && m.linear) {  // a turn about the line shows nothing
            const vec3 before = difference(from[1], from[0]);
            const vec3 after = difference(to[1], to[0]);
            // A small one that leaves one of two atoms in its place is taken for a displacement.
            const bool small = length(difference(after, before)) <= 0.1;
            const double seen = angle_between(before, after);
            EXPECT_NEAR(found, m.x.size() == 2 && small ? 0 : seen, 2e-3);
        } else if (step == 0 || m.x.size() > 3) {  // three atoms leave room for several turns
            EXPECT_NEAR(found, angle, 1e-2) << m.x.size() << " atoms, " << step;
        }
        if (step == 0 && !m.linear) {  // The matrix turns forwards.
            const vec3 bond = difference(from[1], from[0]);
            const vec3 there = turn.applied_to(bond);
            EXPECT_LT(length(difference(there, difference(to[1], to[0]))), 1e-5);
        }
    }
}

TEST(Frame, IsNotTurnedByANormalModeOrPartsOfAMolecule) {
    const auto& [from, mass, linear] = molecules[2];
    const geometry bent{{0.5, 0, 0.113}, {0.5, 0.81, -0.432}, {0.5, -0.81, -0.432}};
    EXPECT_EQ(rotation(from, bent, mass), 0);
    EXPECT_NEAR(rotation(from, turned(bent, 0, 20), mass), 20, 1.0);
    const geometry still{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {2, 0, 3}, {-2, 0, 3}};
    const geometry heavy_moved{still[0], still[1], still[2], {1.9, 0.7, 3}, {-1.9, -0.7, 3}};
    EXPECT_EQ(rotation(still, heavy_moved, {1, 1, 1, 99, 99}), 0);
}

/// The best rotation within the plane z = 0, and whether it takes off three quarters of the rms
/// displacement.
struct plane_fit {
    double degrees = 0;
    bool counts = false;

    plane_fit(const geometry& from, const geometry& to, const std::vector<double>& mass) {
        using point = std::complex<double>;
        const auto centred = [&](const geometry& x) {
            point centre;
            for (std::size_t i = 0; i < x.size(); ++i) centre += mass[i] * point(x[i][0], x[i][1]);
            centre /= std::accumulate(mass.begin(), mass.end(), 0.0);
            std::vector<point> points;
            for (const vec3& atom : x) points.push_back(point(atom[0], atom[1]) - centre);
            return points;
        };
        const auto a = centred(from);
        const auto b = centred(to);
        point product;
        double squares = 0;
        double before = 0;
        for (std::size_t i = 0; i < a.size(); ++i) {
            product += mass[i] * std::conj(a[i]) * b[i];
            squares += mass[i] * (std::norm(a[i]) + std::norm(b[i]));
            before += mass[i] * std::norm(b[i] - a[i]);
        }
        degrees = std::abs(std::arg(product)) * 180 / std::numbers::pi;
        counts = 16 * (squares - 2 * std::abs(product)) < before;
    }
};

TEST(Frame, OfADistortedMoleculeIsThatOfTheMassWeightedBestFit) {
    const geometry from{{0, 0, 0}, {1.2, 0.1, 0}, {-0.4, 1.1, 0}, {-0.7, -0.9, 0}};
    const std::vector<double> mass{32, 1, 12, 19};
    std::mt19937 random(2);
    std::uniform_real_distribution<double> any(-1, 1);
    int counted = 0;
    for (int round = 0; round < 1000; ++round) {
        geometry to = turned(from, 2, 10 * any(random));
        const double size = 0.2 * std::abs(any(random));
        for (vec3& atom : to) {
            for (std::size_t k = 0; k < 2; ++k) atom[k] += size * any(random);
        }
        const plane_fit fit(from, to, mass);
        const sgn::frame_turn turn = turn_of_frame(from, to, mass);
        ASSERT_NEAR(turn.degrees, fit.counts ? fit.degrees : 0, 1e-6);
        // The matrix is that turn.
        const vec3 x = turn.applied_to({1, 0, 0});
        ASSERT_NEAR(angle_between({1, 0, 0}, x), turn.degrees, 1e-4);
        ASSERT_EQ(turn.applied_to({0, 0, 2})[2], 2);
        if (fit.counts) ++counted;
    }
    EXPECT_GT(counted, 100);
    EXPECT_LT(counted, 900);
    // Without all masses, all atoms weigh the same.
    geometry to = turned(from, 2, 30);
    to[1][0] -= 0.2;
    to[2][1] -= 0.1;
    const plane_fit alike(from, to, {1, 1, 1, 1});
    ASSERT_TRUE(alike.counts);
    EXPECT_NEAR(rotation(from, to, {32, 1, 0, 19}), alike.degrees, 1e-6);
    EXPECT_GT(std::abs(rotation(from, to, mass) - alike.degrees), 1);
}

TEST(Frame, BelievesOneAtomOfAFewToHaveMovedATenthAtMost) {
    const auto& [line, mass, linear] = molecules[1];
    const std::vector<double> alike{1, 1, 1};
    const auto turned_with = [&](double step) {
        geometry x = line;
        const double away = step / std::sqrt(2);
        x[2][0] += away;
        x[2][1] -= away;
        return turned(x, 2, 30);
    };
    // What the two others tell, whose own turn is smaller since a turn about the line is free.
    const vec3 before = difference(line[1], line[0]);
    const double others = angle_between(before, difference(turned_with(0)[1], turned_with(0)[0]));
    EXPECT_NEAR(rotation(line, turned_with(0.099), alike), others, 1e-3);
    EXPECT_GT(std::abs(rotation(line, turned_with(0.101), alike) - others), 0.5);
    // Of two atoms one may have moved that far without a turn.
    const geometry pair{{0, 0, 0}, {0, 0, 1}};
    const auto swung = [&](double x) { return geometry{{0, 0, 0}, {x, 0, std::sqrt(1 - x * x)}}; };
    EXPECT_EQ(rotation(pair, swung(0.0995), {1, 1}), 0);
    EXPECT_NEAR(rotation(pair, swung(0.12), {1, 1}), std::asin(0.12) * 180 / std::numbers::pi,
                1e-3);
}

TEST(Frame, IsTurnedAsLittleAsExplainsTheGeometryAndNoLess) {
    // Either of two atoms may be the one that moved.
    const geometry corner{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    const geometry to{{0, 0, 0}, turned(corner, 2, 1)[1], turned(corner, 2, 3)[2]};
    EXPECT_NEAR(rotation(corner, to, {1, 1, 1}), 1, 1e-3);
    // A turn about the length of a molecule that is nearly, but not quite, linear.
    const geometry bent{{0, 0, 0}, {0.3, 0, 1.2}, {0.3, 0, -1.2}};
    EXPECT_NEAR(rotation(bent, turned(bent, 2, 40), {1, 1, 1}), 40, 1e-2);
}

TEST(Frame, IsHeldByThreeAtomsOffALine) {
    // Three atoms stay; two far ones turn about the line that they nearly stand on.
    const auto turn_with = [](double off_line, double shift) {
        const geometry from{{0, 0, 0}, {0, off_line, 2}, {0, 0, 4}, {3, 0, 1}, {-3, 0, 3}};
        geometry to = turned(from, 2, 20);
        to[1] = from[1];
        to[2][2] += shift;
        return rotation(from, to, {1, 1, 1, 1, 1});
    };
    EXPECT_EQ(turn_with(0.11, 0), 0);
    EXPECT_NEAR(turn_with(0.09, 0), 20, 0.2);
    EXPECT_EQ(turn_with(0.11, 4e-6), 0);
    EXPECT_NEAR(turn_with(0.11, 6e-6), 20, 0.2);
}

}  // namespace
