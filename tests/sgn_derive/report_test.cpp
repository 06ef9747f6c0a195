// What sgn_derive makes of the two water sets, and of what may be wrong with them.
#include "sgn_derive/report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "sets.h"

namespace {

using sgn_derive::report;
using testing::ElementsAre;
using testing::HasSubstr;

const sets::set_files* both[] = {&sets::water(), &sets::crossing()};

report analyse(const sets::set_files& set) {
    return sgn_derive::analyse(set.reference, set.files);
}

/// "NAME: file, file; NAME: file ..." of all findings, in their order.
std::string findings_of(const report& of) {
    std::string text;
    for (const auto& each : of.findings) {
        text += (text.empty() ? "" : "; ") + each.name;
        if (each.job != each.no_job) text += " " + of.set.jobs[each.job].name;
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
                const double uncertainty = made.derivatives.dipole_uncertainty[coordinate];
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
    int named = 0;
    for (const sets::set_files* set : both) {
        for (std::size_t i = 0; i < set->files.size(); ++i) {
            const std::string& name = set->files[i].name;
            for (const bool element : {false, true}) {
                sets::set_files wrong = *set;
                sets::reverse(wrong.files[i], element);
                const report made = analyse(wrong);
                EXPECT_THAT(findings_of(made), testing::StartsWith("suspect_sign " + name));
                EXPECT_EQ(findings_of(made).find("sign_conflict") == std::string::npos, element);
                EXPECT_EQ(verdict_of(made), "One sign is wrong: " + name);
                ++named;
            }
        }
    }
    EXPECT_EQ(named, 72);
}

TEST(Report, NamesBothOfAPairThatIsReversed) {
    for (const sets::set_files* set : both) {
        for (std::size_t i = 0; i < set->files.size(); i += 2) {
            sets::set_files wrong = *set;
            sets::reverse(wrong.files[i], true);
            sets::reverse(wrong.files[i + 1], true);
            const report made = analyse(wrong);
            EXPECT_THAT(made.suspects.flips, ElementsAre(ElementsAre(i + 1, i + 2)));
            EXPECT_EQ(verdict_of(made),
                      "2 signs are wrong: " + set->files[i].name + ", " + set->files[i + 1].name);
            EXPECT_THAT(made.findings[0].text, HasSubstr("this sign and others are reversed"));
        }
    }
}

TEST(Report, IsNotFineWithAFileExchangedForAnother) {
    for (const sets::set_files* set : both) {
        const sets::set_files& others = set == both[0] ? *both[1] : *both[0];
        for (std::size_t i = 0; i < set->files.size(); i += 3) {
            const auto findings = [&](const numfreq::sgn_contents& instead, bool at_its_place) {
                sets::set_files wrong = *set;
                wrong.files[i].contents = instead;
                if (at_its_place) wrong.files[i].contents.x = set->files[i].contents.x;
                return findings_of(analyse(wrong));
            };
            EXPECT_NE(findings(set->files[(i + 5) % 18].contents, false), "");
            EXPECT_THAT(findings(set->reference.contents, false), HasSubstr("one_sided"));
            EXPECT_THAT(findings(others.files[i].contents, false), HasSubstr("one_sided"));
            EXPECT_THAT(findings(others.files[i].contents, true), HasSubstr("force_sum_rules"));
        }
    }
}

TEST(Report, TellsWhatElseDeservesDoubt) {
    const auto findings = [](const std::function<void(sets::set_files&)>& change) {
        sets::set_files set = sets::water();
        change(set);
        return findings_of(analyse(set));
    };
    EXPECT_EQ(findings([](auto& set) { set.files.erase(set.files.begin() + 3); }),
              "one_sided h2o_01ym.sgn");
    EXPECT_EQ(findings([](auto& set) { set.files[3].contents.parameters.nmo = 23; }),
              "other_sizes h2o_01yp.sgn");
    EXPECT_EQ(findings([](auto& set) {
                  set.reference.contents.mass[2] = 0;
                  for (auto& each : set.files) each.contents.mass[2] = 0;
              }),
              "no_masses");
    EXPECT_THAT(findings([](auto& set) {
                    // The values of two mirror images: no sum sees that.
                    std::swap(set.files[9].contents.frc, set.files[14].contents.frc);
                    std::swap(set.files[9].contents.corrected_tdip,
                              set.files[14].contents.corrected_tdip);
                }),
                HasSubstr("asymmetric_forces"));
    EXPECT_THAT(findings([](auto& set) {
                    set.files[0].contents.corrected_tdip = {0.1, 0.2, 0.3};
                    set.files[5].contents.corrected_tdip = {-0.3, 0.5, 0.2};
                }),
                testing::StartsWith("dipole_sum_rules; unsound"));
    // Three times the geometry, three times the step.
    EXPECT_THAT(findings([](auto& set) {
                    for (auto& each : set.files) {
                        for (std::size_t a = 0; a < 3; ++a) {
                            auto& x = each.contents.x[a];
                            const auto& at = set.reference.contents.x[a];
                            for (std::size_t k = 0; k < 3; ++k) x[k] = at[k] + 10 * (x[k] - at[k]);
                        }
                    }
                }),
                HasSubstr("large_step"));
}

}  // namespace
