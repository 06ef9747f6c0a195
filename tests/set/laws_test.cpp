// What must hold of any molecule: derivatives are those of the model, sums vanish, wrong signs are
// found, modes neither move nor turn the molecule.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "model.h"
#include "set/modes.h"
#include "set/suspects.h"

namespace {

using namespace sgn_set;
using model::molecule;

const molecule all_molecules[] = {model::bent, model::diatomic, model::line, model::dark};

struct judged {
    displaced_set set;
    derivatives made;
    sum_rules dipole;
    sum_rules forces;
    suspects found;

    judged(const result_file& reference, const std::vector<result_file>& files)
        : set(make_set(reference, files)),
          made(differentiate(set)),
          dipole(dipole_rules(set, made)),
          forces(force_rules(set, made)),
          found(find_suspects(set, made, dipole)) {}
};

/// "failed: 1x+ 2y-: ref", and more if there are other guesses.
std::string verdict(const result_file& reference, const std::vector<result_file>& files) {
    const judged of(reference, files);
    std::string text = of.dipole.satisfied ? "satisfied" : "failed";
    if (of.found.unsound) text += ", unsound";
    if (of.forces.judged && !of.forces.satisfied) text += ", forces failed";
    for (const auto& flips : of.found.flips) {
        text += ":";
        for (const std::size_t each : flips) text += " " + of.set.jobs[each].name;
    }
    if (of.found.mended.satisfied == of.found.flips.empty()) text += ", not mended";
    return text;
}

/// The derivative of every value of `of`, by tiny displacements of the model itself.
table exact(const molecule& of, bool forces) {
    constexpr double h = 1e-4;  // Bohr
    const auto values = [&](const model::geometry& x) {
        return forces ? model::forces(of, x) : model::geometry{model::dipole(of, x)};
    };
    table result(3 * of.x.size(), 3 * values(of.x).size());
    for (std::size_t c = 0; c < result.rows; ++c) {
        model::geometry plus = of.x;
        model::geometry minus = of.x;
        plus[c / 3][c % 3] += h * flib::bohr_radius;
        minus[c / 3][c % 3] -= h * flib::bohr_radius;
        const auto up = values(plus);
        const auto down = values(minus);
        for (std::size_t i = 0; i < result.columns; ++i) {
            result(c, i) = (up[i / 3][i % 3] - down[i / 3][i % 3]) / (2 * h);
        }
    }
    return result;
}

double largest_difference(const table& a, const table& b) {
    EXPECT_EQ(a.rows, b.rows);
    EXPECT_EQ(a.columns, b.columns);
    double largest = 0;
    for (std::size_t i = 0; i < a.values.size(); ++i) {
        largest = std::max(largest, std::abs(a.values[i] - b.values[i]));
    }
    return largest;
}

TEST(Derivatives, AreThoseOfTheModelAndObeyTheSumRules) {
    double squares = 0;
    double sums = 0;
    for (molecule of : all_molecules) {
        for (const int decimals : {4, 9}) {
            of.dipole_decimals = decimals;
            for (const auto& files : {model::displaced(of), model::obliquely_displaced(of),
                                      model::displaced(of, 0.03)}) {
                const judged set(model::reference(of), files);
                const auto& d = set.made;
                const double sigma =
                    *std::max_element(d.dipole_uncertainty.begin(), d.dipole_uncertainty.end());
                EXPECT_LT(largest_difference(d.dipole, exact(of, false)),
                          3 * sigma + d.dipole_step_error);
                // The rounding of coordinates counts for oblique displacements.
                EXPECT_LT(largest_difference(d.forces, exact(of, true)), 2 * d.force_step_error);
                EXPECT_EQ(verdict(model::reference(of), files), "satisfied");
                EXPECT_LT(set.dipole.largest, 5);
                EXPECT_LT(set.forces.largest, 4);
                if (decimals != 4) continue;
                squares += set.dipole.chi2;
                sums += static_cast<double>(set.dipole.sums);
            }
        }
    }
    // The uncertainties are what is really left.
    EXPECT_NEAR(squares / sums, 0.7, 0.3);
}

TEST(Suspects, AreTheSignsThatWereReversed) {
    for (const molecule& of : {model::bent, model::diatomic, model::line}) {
        for (const bool oblique : {false, true}) {
            const auto good = oblique ? model::obliquely_displaced(of) : model::displaced(of);
            const result_file reference = model::reference(of);
            result_file other = reference;
            model::reverse(other);
            EXPECT_EQ(verdict(other, good), "failed: ref");
            for (std::size_t i = 0; i < good.size(); ++i) {
                auto files = good;
                model::reverse(files[i]);
                EXPECT_EQ(verdict(reference, files), "failed: " + files[i].name);
                if (i % 2 == 1) continue;
                model::reverse(files[i + 1]);
                EXPECT_THAT(verdict(reference, files),
                            testing::EndsWith(": " + files[i].name + " " + files[i + 1].name));
                const std::size_t third = (i + 5) % good.size();
                model::reverse(files[third]);
                const judged three(reference, files);
                ASSERT_EQ(three.found.flips.size(), 1U);
                EXPECT_THAT(three.found.flips[0],
                            testing::UnorderedElementsAre(i + 1, i + 2, third + 1));
                EXPECT_LT(three.found.mended.chi2, 40);
            }
        }
    }
}

TEST(Suspects, AreFoundInADarkState) {
    // Nothing but the derivatives is there: a sign is seen where the dipole is more than its
    // rounding.
    const result_file reference = model::reference(model::dark);
    ASSERT_LT(length(reference.contents.corrected_tdip), 1e-3);
    const auto good = model::displaced(model::dark);
    int visible = 0;
    for (std::size_t i = 0; i < good.size(); ++i) {
        auto files = good;
        if (length(files[i].contents.corrected_tdip) < 1e-3) continue;
        ++visible;
        model::reverse(files[i]);
        EXPECT_EQ(verdict(reference, files), "failed: " + files[i].name);
        model::reverse(files[i ^ 1U]);
        EXPECT_THAT(verdict(reference, files), testing::StartsWith("failed: "));
    }
    EXPECT_GT(visible, 20);
}

TEST(Suspects, OfSetsThatAreWrongInOtherWays) {
    const result_file reference = model::reference(model::bent);
    const auto told = [&](const std::function<void(std::vector<result_file>&)>& change) {
        auto files = model::displaced(model::bent);
        change(files);
        return verdict(reference, files);
    };
    const auto dipole = [](result_file& of) -> vec3& { return of.contents.corrected_tdip; };
    EXPECT_EQ(told([&](auto& files) { std::swap(dipole(files[4])[0], dipole(files[4])[1]); }),
              "failed, unsound");
    EXPECT_EQ(told([&](auto& files) {
                  std::swap(dipole(files[2]), dipole(files[12]));
                  dipole(files[2])[0] += 0.3;
              }),
              "failed, unsound");
    EXPECT_EQ(told([&](auto& files) {
                  for (vec3& force : files[9].contents.frc) force = scaled(1.05, force);
              }),
              "satisfied, forces failed");
    EXPECT_EQ(told([&](auto& files) {
                  // Squares that are too large for a number.
                  files[9].contents.frc[1] = {1e300, -1e300, 1e300};
                  dipole(files[2])[1] = 1e300;
              }),
              "failed, unsound, forces failed");
    // All but two: the smaller part is called wrong.
    EXPECT_EQ(told([&](auto& files) {
                  for (std::size_t i : {0, 1, 2, 4, 5, 6, 7, 8, 9, 10, 11})
                      model::reverse(files[i]);
                  for (std::size_t i = 13; i < files.size(); ++i) model::reverse(files[i]);
              }),
              "failed: ref 1y- 3x+");
    // Where an atom is too far away to change the dipole, the sums hold and the pair does not.
    molecule with_far_atom = model::bent;
    with_far_atom.numbers.push_back(1);
    with_far_atom.x.push_back({40, 0, 0});
    auto files = model::displaced(with_far_atom);
    model::reverse(files[26]);
    model::reverse(files[27]);
    EXPECT_EQ(verdict(model::reference(with_far_atom), files), "satisfied: 5y+ 5y-");
}

TEST(SumRules, OfALineTurnOnlyAcrossIt) {
    // A dipole across the line turns along only if the line turns.
    const molecule along_z{{8, 6, 1}, {{0, 0, -1.1}, {0, 0, 0}, {0, 0, 1.2}}};
    result_file reference = model::reference(along_z);
    auto files = model::displaced(along_z);
    const auto set_across = [](result_file& of) {
        const auto& x = of.contents.x;
        // Across the line from the first to the last atom, and in the plane of x and z.
        const vec3 d = difference(x[2], x[0]);
        of.contents.corrected_tdip = {model::rounded(0.4 * d[2] / length(d), 4), 0,
                                      model::rounded(-0.4 * d[0] / length(d), 4)};
    };
    set_across(reference);
    for (result_file& each : files) set_across(each);
    EXPECT_EQ(verdict(reference, files), "satisfied");
    model::reverse(files[0]);
    EXPECT_EQ(verdict(reference, files), "failed: 1x+");
}

/// Force constants of carbon dioxide along (2, -1, 2) / 3, with springs of `stretch` between
/// neighbours, and of `bend` across, along (1, 2, 0) / sqrt(5).
table springs(double stretch, double bend) {
    const vec3 axis{2 / 3.0, -1 / 3.0, 2 / 3.0};
    const vec3 across{1 / std::sqrt(5.0), 2 / std::sqrt(5.0), 0};
    constexpr double of_bend[] = {1, -2, 1};
    constexpr double of_stretch[3][3] = {{1, -1, 0}, {-1, 2, -1}, {0, -1, 1}};
    table constants(9, 9);
    for (std::size_t i = 0; i < 9; ++i) {
        for (std::size_t j = 0; j < 9; ++j) {
            const std::size_t a = i / 3;
            const std::size_t b = j / 3;
            constants(i, j) = stretch * axis[i % 3] * axis[j % 3] * of_stretch[a][b] +
                              bend * across[i % 3] * across[j % 3] * of_bend[a] * of_bend[b];
        }
    }
    return constants;
}

TEST(Modes, OfALineAreFourOfThreeAtoms) {
    std::vector<atom> atoms;
    for (const double place : {0.0, 1.0, 2.0}) {
        const vec3 x{place * 2 / 3, -place / 3, place * 2 / 3};
        atoms.push_back({"", 0, place == 1 ? 12.0 : 16.0, x});
    }
    table dipole(9, 3);  // of charges -1, 2, -1 along y
    for (std::size_t a = 0; a < 3; ++a) dipole(3 * a + 1, 1) = a == 1 ? 2 : -1;
    // The middle atom is driven off the line.
    const auto modes = normal_modes(atoms, springs(0.9, -0.1), dipole, {0, 0, 0.5});
    constexpr double u = 1822.888486;  // electron masses
    const double omega[] = {-std::sqrt(0.1 * (2 / 16.0 + 4 / 12.0) / u), 0, std::sqrt(0.9 / 16 / u),
                            std::sqrt(0.9 * (1 / 16.0 + 2 / 12.0) / u)};
    ASSERT_EQ(modes.size(), 4U);
    for (std::size_t m = 0; m < 4; ++m) {
        EXPECT_NEAR(modes[m].wavenumber, omega[m] * 219474.6313632, 2e-3) << m;
    }
    // The outer atoms go one way, the middle one 2 * 16 / 12 times as far the other way.
    const double size = std::sqrt(2 + 64 / 9.0);
    EXPECT_NEAR(modes[3].reduced_mass, (32 + 12 * 64 / 9.0) / (size * size), 1e-6);
    EXPECT_NEAR(modes[3].displacement[1][0], 8 / 3.0 * 2 / 3 / size, 1e-6);
    EXPECT_NEAR(modes[3].displacement[2][1], 1 / 3.0 / size, 1e-6);
    const double derivative = -(2 + 16 / 3.0) / 3 / size / std::sqrt(modes[3].reduced_mass * u);
    EXPECT_NEAR(modes[3].dipole_derivative[1], derivative, 1e-9);
    EXPECT_NEAR(modes[3].dipole_derivative_q[1], derivative / std::sqrt(omega[3]), 1e-8);
    EXPECT_NEAR(modes[3].borrowed, std::pow(derivative / 0.5, 2) / omega[3], 1e-7);
    EXPECT_TRUE(std::isnan(modes[0].dipole_derivative_q[1]));
    EXPECT_TRUE(std::isnan(modes[0].borrowed));
    EXPECT_TRUE(std::isnan(normal_modes(atoms, springs(1, 1), dipole, {})[3].borrowed));
}

TEST(Modes, NeitherMoveNorTurnTheMoleculeOnASlope) {
    // Forces that do not vanish give rotations a share in the force constants.
    const auto reference = model::reference(model::bent);
    const auto set = make_set(reference, model::displaced(model::bent, 0.002));
    const auto made = differentiate(set);
    const auto modes =
        normal_modes(set.atoms, force_constants(made.forces), made.dipole, {0.1, 0, 0});
    ASSERT_EQ(modes.size(), 6U);
    for (const normal_mode& mode : modes) {
        vec3 momentum{};
        vec3 turn{};
        for (std::size_t a = 0; a < set.atoms.size(); ++a) {
            const vec3 p = scaled(set.atoms[a].mass, mode.displacement[a]);
            const vec3& x = set.atoms[a].x;
            momentum = sum(momentum, p);
            turn = sum(turn, {x[1] * p[2] - x[2] * p[1], x[2] * p[0] - x[0] * p[2],
                              x[0] * p[1] - x[1] * p[0]});
        }
        EXPECT_LT(length(momentum), 1e-10);
        EXPECT_LT(length(turn), 1e-10);
    }
}

}  // namespace
