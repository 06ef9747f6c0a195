#include "sgn_check/frame.h"

#include <gtest/gtest.h>

#include <random>

#include "sample.h"

namespace {

using sample::vec3;

struct molecule {
    const char* name;
    std::vector<vec3> x;
    std::vector<double> mass;
    bool linear = false;
};

const molecule molecules[] = {
    {"hydrogen", {{0, 0, 0}, {0, 0, 0.74}}, {1.008, 1.008}, true},
    {"carbon dioxide", {{0, 0, 0}, {0.67, 0.67, 0.67}, {-0.67, -0.67, -0.67}}, {12, 16, 16}, true},
    {"water", {{0, 0, 0.118}, {0, 0.76, -0.472}, {0, -0.76, -0.472}}, {16, 1.008, 1.008}},
    {"ammonia",
     {{0, 0, 0.11}, {0.94, 0, -0.27}, {-0.47, 0.814, -0.27}, {-0.47, -0.814, -0.27}},
     {14, 1.008, 1.008, 1.008}},
    {"formaldehyde",
     {{0, 0, -0.53}, {0, 0, 0.68}, {0, 0.94, -1.11}, {0, -0.94, -1.11}},
     {12, 16, 1.008, 1.008}},
    {"acetylene", {{0, 0, 0.6}, {0, 0, -0.6}, {0, 0, 1.66}, {0, 0, -1.66}}, {12, 12, 1, 1}, true},
};

class Frame : public testing::TestWithParam<molecule> {
  protected:
    vec3 random_vector() { return {normal_(random_), normal_(random_), normal_(random_)}; }

    /// The molecule with one atom moved by `step` in a random direction.
    std::vector<vec3> displaced(double step) {
        std::vector<vec3> x = GetParam().x;
        const vec3 direction = random_vector();
        vec3& atom = x[random_() % x.size()];
        for (std::size_t k = 0; k < 3; ++k) {
            atom[k] += step * direction[k] / sgn_check::length(direction);
        }
        return x;
    }

    double rotation(const std::vector<vec3>& to) const {
        return sgn_check::frame_rotation(GetParam().x, sample::rounded(to), GetParam().mass);
    }

  private:
    std::mt19937 random_{20260711};
    std::normal_distribution<double> normal_;
};

INSTANTIATE_TEST_SUITE_P(Molecules, Frame, testing::ValuesIn(molecules));

TEST_P(Frame, ADisplacedAtomIsNoTurn) {
    for (const double step : {0.0, 0.001, 0.01, 0.05, 0.3}) {
        for (int i = 0; i < 100; ++i) EXPECT_EQ(rotation(displaced(step)), 0) << step;
    }
}

TEST_P(Frame, AShiftIsNoTurn) {
    std::vector<vec3> x = displaced(0.01);
    for (vec3& atom : x) atom[1] += 1.5;
    EXPECT_LT(rotation(x), 1e-3);
}

TEST_P(Frame, ATurnedMoleculeIsSeen) {
    for (const double angle : {0.5, 5.0, 90.0, 175.0}) {
        for (int i = 0; i < 100; ++i) {
            const double found = rotation(sample::turned(GetParam().x, random_vector(), angle));
            if (!GetParam().linear) {
                EXPECT_NEAR(found, angle, 1e-3);
            } else {  // without the part about its own axis
                EXPECT_LE(found, angle + 1e-3);
            }
        }
    }
    // Across a linear molecule nothing of the turn is lost.
    if (GetParam().linear) {
        const vec3 axis = sgn_check::difference(GetParam().x[1], GetParam().x[0]);
        const vec3 across{axis[1] - axis[2], axis[2] - axis[0], axis[0] - axis[1]};
        EXPECT_NEAR(rotation(sample::turned(
                        GetParam().x, sgn_check::length(across) > 0 ? across : vec3{1, -1, 0}, 40)),
                    40, 1e-3);
    }
}

TEST_P(Frame, ATurnIsSeenBehindADisplacement) {
    if (GetParam().linear) return;  // of a turn about its axis nothing is to be seen
    for (const double angle : {1.0, 30.0, 120.0}) {
        for (int i = 0; i < 100; ++i) {
            const double found = rotation(sample::turned(displaced(0.01), random_vector(), angle));
            if (GetParam().x.size() > 3) {
                EXPECT_NEAR(found, angle, 1e-2);
            } else if (angle > 1) {  // three atoms leave room for several turns
                EXPECT_GT(found, 1);
                EXPECT_LE(found, angle + 1);
            }
        }
    }
}

TEST(Frames, NormalModesAreNoTurn) {
    const molecule& water = molecules[2];
    // The bend and the antisymmetric stretch, which shift no mass and turn nothing.
    for (const auto& [y, z] : {std::pair{0.05, 0.04}, std::pair{0.03, 0.0}}) {
        std::vector<vec3> x = water.x;
        x[1][1] += y;
        x[2][1] -= y;
        for (std::size_t i : {1U, 2U}) x[i][2] += z;
        x[0][2] -= 2 * z * water.mass[1] / water.mass[0];
        EXPECT_EQ(sgn_check::frame_rotation(water.x, x, water.mass), 0);
    }
    // Two independent displacements under a turn.
    std::vector<vec3> x = water.x;
    x[0][1] += 0.01;
    x[1][2] += 0.01;
    EXPECT_EQ(sgn_check::frame_rotation(water.x, x, water.mass), 0);
    EXPECT_NEAR(sgn_check::frame_rotation(water.x, sample::turned(x, {1, 1, 0}, 20), water.mass),
                20, 1.0);
}

}  // namespace
