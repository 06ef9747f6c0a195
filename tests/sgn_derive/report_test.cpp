// What sgn_derive makes of the two water sets, and of what may be wrong with them.
#include "sgn/check/report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "sgn/check/check.h"
#include "support/sets.h"

namespace {

using sgn::report;
using testing::HasSubstr;

const sets::set_files* both[] = {&sets::water(), &sets::crossing()};

report analyse(const sets::set_files& set) {
    return sgn::analyse(set.reference, set.files);
}

/// "NAME: file, file; NAME: file ..." of all findings, in their order.
std::string findings_of(const report& of) {
    std::string text;
    for (const auto& each : of.findings) {
        text += (text.empty() ? "" : "; ") + std::string(name_of(each.kind));
        if (each.job != each.whole_set) text += " " + of.set.jobs[each.job].name;
    }
    return text;
}

TEST(Report, HasTheDerivativesAndModesOfTheTables) {
    const auto rows = support::table_of("derivatives.txt");
    for (const sets::set_files* set : both) {
        const report made = analyse(*set);
        EXPECT_TRUE(made.fine()) << findings_of(made);
        EXPECT_EQ(verdict_of(made), "All 19 files are fine: no sign is wrong.");
        std::size_t coordinate = 0;
        std::size_t mode = 0;
        for (const auto& row : rows) {
            if (row[0] != set->name) continue;
            if (row[1] == "mode") {
                const auto& one = made.modes.at(mode++);
                EXPECT_NEAR(one.wavenumber, std::stod(row[2]), 0.01);
                EXPECT_NEAR(one.reduced_mass / std::stod(row[3]), 1, 1e-5);
                EXPECT_NEAR(std::abs(one.dipole_derivative[0]), std::abs(std::stod(row[4])), 2e-5);
            } else {
                const double uncertainty = made.derivatives.dipole_rounding[coordinate];
                for (std::size_t k = 0; k < 3; ++k) {
                    EXPECT_NEAR(made.derivatives.dipole(coordinate, k), std::stod(row[2 + k]),
                                4 * uncertainty);
                }
                EXPECT_NEAR(uncertainty, 0.00108, 0.00001);
                ++coordinate;
            }
        }
        EXPECT_EQ(coordinate, 9U);
        EXPECT_EQ(mode, 3U);
        EXPECT_FALSE(made.stationary());
    }
}

TEST(Report, NamesEveryReversedSign) {
    for (const sets::set_files* set : both) {
        for (std::size_t i = 0; i < set->files.size(); ++i) {
            const std::string& name = set->files[i].name;
            sets::set_files wrong = *set;
            sets::reverse(wrong.files[i], false);
            EXPECT_THAT(findings_of(analyse(wrong)),
                        testing::AllOf(testing::StartsWith("suspect_sign " + name),
                                       HasSubstr("sign_conflict " + name)));
            // With the element turned round too no file shows it by itself.
            wrong.files[i].contents.parameters.tden_maxval *= -1;
            const report made = analyse(wrong);
            EXPECT_THAT(findings_of(made), testing::Not(HasSubstr("sign_conflict")));
            EXPECT_EQ(verdict_of(made), "One sign is wrong: " + name);
            if (i % 2 == 1) continue;
            sets::reverse(wrong.files[i + 1], true);
            EXPECT_EQ(verdict_of(analyse(wrong)),
                      "2 signs are wrong: " + name + ", " + set->files[i + 1].name);
        }
    }
}

TEST(Report, IsNotFineWithAFileExchangedForAnother) {
    for (std::size_t i = 0; i < 18; ++i) {
        sets::set_files wrong = sets::water();
        auto& contents = wrong.files[i].contents;
        contents = sets::water().files[(i + 5) % 18].contents;
        EXPECT_FALSE(analyse(wrong).fine()) << i;
        contents = sets::crossing().files[i].contents;
        EXPECT_THAT(findings_of(analyse(wrong)), HasSubstr("no_partner")) << i;
        contents.x = sets::water().files[i].contents.x;
        EXPECT_THAT(findings_of(analyse(wrong)), HasSubstr("force_sum_rules")) << i;
    }
}

/// Which displacements are a pair is one rule, to the last digit of a result file.
TEST(Report, PairsAsSgnCheckDoes) {
    for (const double off : {1e-6, 5e-6, 6e-6, -5e-6, -6e-6}) {
        for (const std::size_t axis : {0, 2}) {
            sets::set_files set = sets::water();
            double& x = set.files[5].contents.x[0][axis];  // of h2o_01zp.sgn
            x = std::round((x + off) * 1e6) / 1e6;
            const bool fine = std::abs(off) < 5.5e-6;
            EXPECT_EQ(analyse(set).fine(), fine) << off << " along " << axis;
            EXPECT_EQ(sgn::check(set.reference, set.files, {}).fine(), fine) << off;
        }
    }
}

TEST(Report, TellsWhetherTheReferenceIsStationary) {
    sets::set_files downhill = sets::water();
    for (auto& force : downhill.reference.contents.frc) force = sgn::scaled(-1, force);
    report slope = analyse(downhill);
    EXPECT_NEAR(slope.largest_force, 0.083903333, 1e-12);
    slope.largest_force = 4.5e-4;
    EXPECT_TRUE(slope.stationary());
    slope.largest_force = 4.6e-4;
    EXPECT_FALSE(slope.stationary());
}

}  // namespace
