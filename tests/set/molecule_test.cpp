// How a molecule is told and how it lies.
#include "sgn/set/molecule.h"

#include <gtest/gtest.h>

namespace {

using sgn::atom;
using sgn::vec3;

TEST(Molecule, HasAFormula) {
    EXPECT_EQ(sgn::formula_of(std::vector<atom>{{"O"}, {"H"}, {"C"}, {"H"}}), "CH2O");
    EXPECT_EQ(sgn::formula_of(std::vector<atom>{{"O"}, {"\t"}, {"H"}}), "HO\\t");
}

TEST(Molecule, IsBondedByCovalentRadii) {
    const std::pair<std::int32_t, double> radii[] = {{1, 0.31},  {2, 0.28},  {3, 1.28},  {6, 0.76},
                                                     {8, 0.66},  {17, 1.02}, {55, 2.44}, {92, 1.96},
                                                     {96, 1.69}, {97, 1.5},  {0, 1.5},   {-3, 1.5}};
    for (const auto& [number, radius] : radii) {
        EXPECT_DOUBLE_EQ(sgn::covalent_radius(number), radius) << number;
    }
    double sum = 0;
    for (int number = 1; number <= 96; ++number) sum += sgn::covalent_radius(number);
    EXPECT_NEAR(sum, 145.91, 1e-9);
    const atom oxygen{"O", 8, 16, {1, 1, 1}};
    EXPECT_TRUE(are_bonded(oxygen, {"H", 1, 1, {1, 1, 2.212}}));
    EXPECT_FALSE(are_bonded({"H", 1, 1, {1, 1, 2.213}}, oxygen));
}

TEST(Molecule, LiesAlongItsAxes) {
    // A cross along (-2, 1, 0) and (0, 0, -1), longer along the latter.
    const std::vector<atom> cross{{"H", 1, 1, {-1, 3, 0}},
                                  {"H", 1, 1, {3, 1, 0}},
                                  {"O", 8, 16, {1, 2, 4}},
                                  {"O", 8, 16, {1, 2, -4}}};
    const double part = 1 / std::sqrt(5);
    const std::array<vec3, 3> expected{{{0, 0, 1}, {2 * part, -part, 0}, {part, 2 * part, 0}}};
    const auto axes = sgn::principal_axes(cross);
    for (std::size_t i = 0; i < 9; ++i) {
        EXPECT_NEAR(axes[i / 3][i % 3], expected[i / 3][i % 3], 1e-14) << i;
    }
    EXPECT_EQ(sgn::centroid(cross), (vec3{1, 2, 0}));
}

}  // namespace
