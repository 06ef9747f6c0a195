#include "sgn_check/frame.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

namespace {

using sgn_check::vec3;
using geometry = std::vector<vec3>;

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
    for (int round = 0; round < 20000; ++round) {
        const molecule& m = molecules[random() % std::size(molecules)];
        // The molecule stands in any direction; one atom is displaced, then all are turned.
        const geometry from = turned(turned(m.x, 0, any(random)), 1, any(random));
        const double step = std::array{0.0, 0.001, 0.01, 0.3}[random() % 4];
        const double angle = std::array{0.0, 0.5, 5.0, 30.0, 120.0, 175.0}[random() % 6];
        geometry to = from;
        vec3& atom = to[random() % to.size()];
        for (double& component : atom) component += step * any(random) / 180;
        to = turned(to, random() % 3, angle);
        const double found = sgn_check::frame_rotation(from, to, m.mass);
        if (angle == 0) {
            EXPECT_EQ(found, 0) << m.x.size() << " atoms, " << step;
        } else if (step == 0 && m.linear) {  // a turn about the line shows nothing
            const vec3 before = sgn_check::difference(from[1], from[0]);
            const vec3 after = sgn_check::difference(to[1], to[0]);
            // A small one that leaves one of two atoms in its place is taken for a displacement.
            const bool small = sgn_check::length(sgn_check::difference(after, before)) <= 0.1;
            const double seen = sgn_check::angle_between(before, after);
            EXPECT_NEAR(found, m.x.size() == 2 && small ? 0 : seen, 2e-3);
        } else if (step == 0 || m.x.size() > 3) {  // three atoms leave room for several turns
            EXPECT_NEAR(found, angle, 1e-2) << m.x.size() << " atoms, " << step;
        }
    }
}

TEST(Frame, IsNotTurnedByANormalModeOrPartsOfAMolecule) {
    const auto& [from, mass, linear] = molecules[2];
    const geometry bent{{0.5, 0, 0.113}, {0.5, 0.81, -0.432}, {0.5, -0.81, -0.432}};
    EXPECT_EQ(sgn_check::frame_rotation(from, bent, mass), 0);
    EXPECT_NEAR(sgn_check::frame_rotation(from, turned(bent, 0, 20), mass), 20, 1.0);
    const geometry still{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {2, 0, 3}, {-2, 0, 3}};
    const geometry heavy_moved{still[0], still[1], still[2], {1.9, 0.7, 3}, {-1.9, -0.7, 3}};
    EXPECT_EQ(sgn_check::frame_rotation(still, heavy_moved, std::vector{1., 1., 1., 99., 99.}), 0);
}

}  // namespace
