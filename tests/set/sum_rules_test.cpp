// The sum rules, and the signs that they find wrong.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model.h"
#include "set/suspects.h"

namespace {

using namespace sgn_set;
using model::molecule;

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

    std::string names() const {
        std::string text = dipole.satisfied ? "satisfied" : "failed";
        if (found.unsound) text += ", unsound";
        for (const auto& flips : found.flips) {
            text += ":";
            for (const std::size_t each : flips) text += " " + set.jobs[each].name;
        }
        return text;
    }
};

const molecule all_molecules[] = {model::bent, model::diatomic, model::line, model::dark};

TEST(SumRules, HoldForMoleculesThatMoveAndTurn) {
    for (molecule of : all_molecules) {
        for (const int decimals : {4, 9}) {
            of.dipole_decimals = decimals;
            for (const auto& files : {model::displaced(of), model::obliquely_displaced(of),
                                      model::displaced(of, 0.03)}) {
                const judged set(model::reference(of), files);
                EXPECT_TRUE(set.dipole.judged && set.forces.judged);
                EXPECT_EQ(set.names(), "satisfied");
                EXPECT_TRUE(set.forces.satisfied);
                EXPECT_LT(set.dipole.largest, 5);
                EXPECT_LT(set.dipole.chi2, 40);
                EXPECT_LT(set.forces.largest, 4);
            }
        }
    }
}

TEST(SumRules, AreWhatTheirFormulasSay) {
    // Two atoms, and derivatives without any rule.
    std::vector<atom> atoms(2);
    atoms[0].x = {0, 0, 0};
    atoms[1].x = {0, 0.4 * flib::bohr_radius, 2 * flib::bohr_radius};
    atoms.push_back(atoms[1]);
    atoms[2].x = {3 * flib::bohr_radius, 0, 0};
    const std::vector<double> dipole{0.3, -0.5, 0.7};
    table j(9, 3);
    for (std::size_t i = 0; i < j.values.size(); ++i)
        j.values[i] = std::sin(static_cast<double>(i));
    const sum_rules rules = rules_of(atoms, dipole, j, 1e-3, 0.01);
    const auto e = [](std::size_t a, std::size_t b, std::size_t c) {
        return (static_cast<double>(a) - static_cast<double>(b)) *
               (static_cast<double>(b) - static_cast<double>(c)) *
               (static_cast<double>(c) - static_cast<double>(a)) / 2;
    };
    double chi2 = 0;
    double largest = 0;
    double largest_residue = 0;
    const auto count = [&](double residue, double uncertainty) {
        chi2 += std::pow(residue / uncertainty, 2);
        largest = std::max(largest, std::abs(residue) / uncertainty);
        largest_residue = std::max(largest_residue, std::abs(residue));
    };
    for (std::size_t l = 0; l < 3; ++l) {
        for (std::size_t k = 0; k < 3; ++k) {
            double moved = 0;
            double turned = 0;
            double moved_variance = 0;
            double turned_variance = 0;
            for (std::size_t m = 0; m < 3; ++m) turned -= e(k, l, m) * dipole[m];
            for (std::size_t a = 0; a < 3; ++a) {
                double nearby = 0;
                for (std::size_t i = 0; i < 9; ++i) {
                    nearby = std::max(nearby, std::abs(j(3 * a + i / 3, i % 3)));
                }
                const double variance = 1e-6 + std::pow(0.01 * nearby, 2);
                moved += j(3 * a + l, k);
                moved_variance += variance;
                for (std::size_t i = 0; i < 3; ++i) {
                    double along = 0;
                    for (std::size_t m = 0; m < 3; ++m) {
                        double centre = 0;
                        for (const atom& each : atoms) centre += each.x[m] / 3;
                        along += e(i, l, m) * (atoms[a].x[m] - centre) / flib::bohr_radius;
                    }
                    turned += along * j(3 * a + i, k);
                    turned_variance += along * along * variance;
                }
            }
            EXPECT_NEAR(rules.translation(l, k), moved, 1e-12);
            EXPECT_NEAR(rules.rotation(l, k), turned, 1e-12);
            EXPECT_NEAR(rules.translation_uncertainty(l, k), std::sqrt(moved_variance), 1e-12);
            EXPECT_NEAR(rules.rotation_uncertainty(l, k), std::sqrt(turned_variance), 1e-12);
            count(moved, std::sqrt(moved_variance));
            count(turned, std::sqrt(turned_variance));
        }
    }
    EXPECT_EQ(rules.sums, 18U);
    EXPECT_NEAR(rules.chi2, chi2, 1e-8 * chi2);
    EXPECT_NEAR(rules.largest, largest, 1e-9 * largest);
    EXPECT_NEAR(rules.largest_residue, largest_residue, 1e-12);
    EXPECT_FALSE(rules.satisfied);
}

TEST(SumRules, TakeTheRoundingOfEveryJobIntoAccount) {
    // Equal weights: the uncertainty of a sum over N atoms is that of one derivative times its
    // root.
    molecule of = model::bent;
    of.strength = 1e-9;  // no derivatives, no error of the step
    const judged set(model::reference(of), model::displaced(of));
    const double one = 1e-4 / std::sqrt(24.0) / (0.01 / flib::bohr_radius);
    EXPECT_NEAR(set.dipole.translation_uncertainty(1, 2), 2 * one, 1e-9);
    double arms = 0;
    vec3 centre{};
    for (const vec3& x : of.x) centre = sum(centre, scaled(0.25, x));
    for (const vec3& x : of.x) {
        const vec3 r = scaled(1 / flib::bohr_radius, difference(x, centre));
        arms += r[0] * r[0] + r[2] * r[2];
    }
    // About y; x and z of the dipole itself turn along.
    EXPECT_NEAR(set.dipole.rotation_uncertainty(1, 1), one * std::sqrt(arms), 1e-9);
    EXPECT_NEAR(set.dipole.rotation_uncertainty(1, 0),
                std::hypot(one * std::sqrt(arms), 1e-4 / std::sqrt(12.0)), 1e-9);
}

TEST(SumRules, CountNoRotationAboutALine) {
    molecule along_z{{8, 6, 1}, {{0, 0, -1.1}, {0, 0, 0}, {0, 0, 1.2}}};
    const judged upright(model::reference(along_z), model::displaced(along_z));
    EXPECT_EQ(upright.dipole.sums, 15U);
    EXPECT_EQ(upright.forces.sums, 45U);
    EXPECT_EQ(upright.names(), "satisfied");
    const judged oblique(model::reference(model::line), model::displaced(model::line));
    EXPECT_EQ(oblique.dipole.sums, 18U);

    // A dipole across the line turns along only if the line turns.
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
    EXPECT_EQ(judged(reference, files).names(), "satisfied");
    set_across(files[0]);
    model::reverse(files[0]);
    EXPECT_EQ(judged(reference, files).names(), "failed: 1x+");

    const molecule single{{8}, {{0.1, 0.2, 0.3}}};
    EXPECT_EQ(judged(model::reference(single), model::displaced(single)).dipole.sums, 9U);
}

TEST(SumRules, JudgeNoSetWithHoles) {
    auto files = model::displaced(model::bent);
    files.erase(files.begin() + 3);
    const judged one(model::reference(model::bent), files);
    EXPECT_EQ(one.dipole.why_not, "1 displacement is one-sided (1y+)");
    EXPECT_FALSE(one.dipole.judged || one.dipole.satisfied || one.forces.judged);
    EXPECT_EQ(one.names(), "failed");
    files.erase(files.begin());
    EXPECT_EQ(judged(model::reference(model::bent), files).dipole.why_not,
              "2 displacements are one-sided (1x-, ...)");
    files.pop_back();
    files.pop_back();
    EXPECT_EQ(judged(model::reference(model::bent), files).dipole.why_not,
              "not all coordinates are displaced");
    files = model::displaced(model::bent);
    result_file reference = model::reference(model::bent);
    for (result_file& each : files) each.contents.frc.assign(4, {0, 0, 0});
    reference.contents.frc = files[0].contents.frc;
    const judged without(reference, files);
    EXPECT_EQ(without.forces.why_not, "the files hold no forces");
    EXPECT_EQ(without.names(), "satisfied");
}

TEST(SumRules, FailForATurnedFrameAndForForcesOfAnotherState) {
    auto files = model::displaced(model::bent);
    for (vec3* v : {&files[4].contents.corrected_tdip}) std::swap((*v)[0], (*v)[1]);
    EXPECT_EQ(judged(model::reference(model::bent), files).names(), "failed, unsound");
    files = model::displaced(model::bent);
    for (vec3& force : files[9].contents.frc) force = scaled(1.2, force);
    const judged other_state(model::reference(model::bent), files);
    EXPECT_TRUE(other_state.dipole.satisfied);
    EXPECT_FALSE(other_state.forces.satisfied);
    // Squares that are too large for a number.
    files[9].contents.frc[1] = {1e300, -1e300, 1e300};
    files[2].contents.corrected_tdip[1] = 1e300;
    const judged absurd(model::reference(model::bent), files);
    EXPECT_FALSE(absurd.dipole.satisfied || absurd.forces.satisfied);
    EXPECT_TRUE(absurd.found.unsound);
}

TEST(Suspects, AreTheSignsThatWereReversed) {
    for (const molecule& of : {model::bent, model::diatomic, model::line}) {
        for (const bool oblique : {false, true}) {
            const auto good = oblique ? model::obliquely_displaced(of) : model::displaced(of);
            const result_file reference = model::reference(of);
            result_file other = reference;
            model::reverse(other);
            EXPECT_EQ(judged(other, good).names(), "failed: ref");
            for (std::size_t i = 0; i < good.size(); ++i) {
                auto files = good;
                model::reverse(files[i]);
                EXPECT_EQ(judged(reference, files).names(), "failed: " + files[i].name);
                if (i % 2 == 1) continue;
                model::reverse(files[i + 1]);
                EXPECT_THAT(judged(reference, files).names(),
                            testing::EndsWith(": " + files[i].name + " " + files[i + 1].name));
                const std::size_t third = (i + 5) % good.size();
                model::reverse(files[third]);
                const judged three(reference, files);
                ASSERT_EQ(three.found.flips.size(), 1U);
                EXPECT_THAT(three.found.flips[0],
                            testing::UnorderedElementsAre(i + 1, i + 2, third + 1));
                EXPECT_TRUE(three.found.mended.satisfied);
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
        EXPECT_EQ(judged(reference, files).names(), "failed: " + files[i].name);
        model::reverse(files[i ^ 1U]);
        EXPECT_THAT(judged(reference, files).names(), testing::StartsWith("failed: "));
    }
    EXPECT_GT(visible, 20);

    // One of each pair reversed: all derivatives vanish, and so do their sums.
    auto files = good;
    for (std::size_t i = 0; i < files.size(); i += 2) model::reverse(files[i]);
    const judged vanished(reference, files);
    EXPECT_TRUE(vanished.found.unsound || !vanished.found.flips.empty());
}

TEST(Suspects, AreNotSoughtBeyondAFew) {
    auto files = model::displaced(model::bent);
    std::swap(files[2].contents.corrected_tdip, files[12].contents.corrected_tdip);
    files[2].contents.corrected_tdip[0] += 0.3;
    EXPECT_EQ(judged(model::reference(model::bent), files).names(), "failed, unsound");
}

}  // namespace
