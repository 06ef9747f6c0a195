#include "sgn_check/check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "sample.h"
#include "sgn_check/report.h"
#include "support/support.h"

namespace {

using numfreq::sgn_contents;
using sgn_check::doubt;
using sgn_check::result_file;
using sgn_check::thresholds;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

std::vector<doubt> doubts_of(const sgn_check::verdict& verdict) {
    std::vector<doubt> found;
    for (const sgn_check::finding& each : verdict.findings) found.push_back(each.kind);
    return found;
}

/// Water's oxygen moved along x and back, the + job spoilt.
std::vector<sgn_check::verdict> verdicts_of(const std::function<void(sgn_contents&)>& spoil,
                                            const thresholds& limits = {}) {
    static result_file reference;
    static std::vector<result_file> files;
    reference = sample::water("ref");
    files = {sample::water("plus", {0.01, 0, 0.118}), sample::water("minus", {-0.01, 0, 0.118})};
    files[0].contents.corrected_tdip[2] = 0.0091;
    files[1].contents.corrected_tdip[2] = -0.0091;
    spoil(files[0].contents);
    return check(reference, files, limits);
}

TEST(Check, TellsWhatItComparesOfAGoodPair) {
    const auto verdicts = verdicts_of(
        [](sgn_contents& job) {
            job.parameters.tden_maxval = -0.2;
            job.parameters.sign = -1;
        },
        {.min_ratio = 0.4});
    ASSERT_EQ(verdicts.size(), 3U);
    for (const auto& each : verdicts) EXPECT_THAT(doubts_of(each), IsEmpty()) << each.file->name;
    const auto& plus = verdicts[1];
    EXPECT_DOUBLE_EQ(plus.ratio, 0.2 / 0.4367);
    EXPECT_THAT(plus.change, ElementsAre(0, 0, 0.0091));
    EXPECT_NEAR(plus.turn, 0.974, 1e-3);
    EXPECT_EQ(plus.moved->text(plus.file->contents.symbol), "1 O +x 0.0100");
    EXPECT_EQ(verdicts[2].moved->text(plus.file->contents.symbol), "1 O -x 0.0100");
    EXPECT_EQ(plus.partner, verdicts[2].file);
    EXPECT_EQ(verdicts[2].partner, plus.file);
    EXPECT_EQ(plus.asymmetry, 0);
}

struct spoilt {
    const char* name;
    std::function<void(sgn_contents&)> spoil;
    std::vector<doubt> doubts;  // of the file
    std::string text;           // in the first of them
    bool partner_fine = true;
};

class Spoilt : public testing::TestWithParam<spoilt> {};

TEST_P(Spoilt, IsToldInWords) {
    const auto verdicts = verdicts_of(GetParam().spoil);
    EXPECT_EQ(doubts_of(verdicts[1]), GetParam().doubts);
    ASSERT_FALSE(verdicts[1].fine());
    EXPECT_THAT(verdicts[1].findings.front().text, HasSubstr(GetParam().text));
    EXPECT_EQ(verdicts[2].fine(), GetParam().partner_fine);
    EXPECT_TRUE(verdicts[0].fine());
}

const spoilt cases[] = {
    {"sign_zero", [](auto& job) { job.parameters.sign = 0; }, {doubt::sign_zero}, "sign 0"},
    {"small_element",
     [](auto& job) { job.parameters.tden_maxval *= 0.31; },
     {doubt::small_element},
     "small element: 0.310"},
    {"other_element",
     [](auto& job) {
         job.parameters.tden_maxloc = {3, 15};
     },
     {doubt::other_element},
     "3,15 instead of 15,3"},
    {"nmo_and_mci",
     [](auto& job) {
         job.parameters.nmo = 24;
         job.parameters.mci = 5;
     },
     {doubt::other_sizes},
     "nmo 24 instead of 22, mci 5 instead of 4"},
    {"mi", [](auto& job) { job.parameters.mi = 5; }, {doubt::other_sizes}, "mi 5 "},
    {"ma", [](auto& job) { job.parameters.ma = 5; }, {doubt::other_sizes}, "ma 5 "},
    {"nfc", [](auto& job) { job.parameters.nfc = 5; }, {doubt::other_sizes}, "NFC 5 "},
    {"nfv", [](auto& job) { job.parameters.nfv = 5; }, {doubt::other_sizes}, "NFV 5 "},
    {"natom",
     [](auto& job) {
         job.parameters.natom = 2;
         job.x.pop_back();
         job.nat.pop_back();
         job.mass.pop_back();
         job.symbol.pop_back();
     },
     {doubt::other_sizes},
     "natom 2 instead of 3",
     false},
    {"isotope",
     [](auto& job) { job.mass[1] = 2.014; },
     {doubt::other_atoms},
     "atom 2 is H 1 2.0140 instead of H 1 1.0078"},
    {"symbol", [](auto& job) { job.symbol[2] = "D"; }, {doubt::other_atoms}, "atom 3 is D"},
    {"turned",
     [](auto& job) {
         job.x = sample::turned(job.x, {0, 0, 1}, 40);
     },
     {doubt::turned},
     "turned by 40.00 degrees",
     false},
    {"another_reference",
     [](auto& job) { job.parameters.sign = -1; },
     {doubt::sign_conflict},
     "contradicts"},
    {"flipped_dipole",
     [](auto& job) {
         for (double& component : job.corrected_tdip) component = -component;
     },
     {doubt::dipole_turned, doubt::asymmetric_pair},
     "dipole turned by 179",
     false},
    {"asymmetric",
     [](auto& job) { job.corrected_tdip[2] += 0.006; },
     {doubt::asymmetric_pair},
     "not symmetric with minus: 0.0060",
     false},
    {"no_partner", [](auto& job) { job.x[0][0] += 0.001; }, {doubt::no_partner}, "opposite", false},
    {"not_a_number",
     [](auto& job) {
         job.parameters.tden_maxval = nan;
         job.parameters.sign = 0;
     },
     {doubt::not_finite, doubt::sign_zero},
     "not finite"},
    {"infinite_force",
     [](auto& job) { job.frc[0][0] = std::numeric_limits<double>::infinity(); },
     {doubt::not_finite},
     "not finite"},
};

INSTANTIATE_TEST_SUITE_P(Check, Spoilt, testing::ValuesIn(cases),
                         [](const auto& given) { return std::string(given.param.name); });

TEST(Check, GoesByItsThresholds) {
    const auto doubts = [](const std::function<void(sgn_contents&)>& spoil, const thresholds& t) {
        return doubts_of(verdicts_of(spoil, t)[1]);
    };
    const auto shrink = [](sgn_contents& job) { job.parameters.tden_maxval *= 0.9; };
    EXPECT_THAT(doubts(shrink, {}), IsEmpty());
    EXPECT_THAT(doubts(shrink, {.min_ratio = 0.95}), ElementsAre(doubt::small_element));
    const auto turn = [](sgn_contents& job) { job.x = sample::turned(job.x, {1, 2, 3}, 2); };
    EXPECT_THAT(doubts(turn, {.pairs = false}), ElementsAre(doubt::turned));
    EXPECT_THAT(doubts(turn, {.max_rotation = 2.1, .pairs = false}), IsEmpty());
    const auto tilt = [](sgn_contents& job) { job.corrected_tdip = {-0.03, 0.03, 0}; };
    EXPECT_THAT(doubts(tilt, {.pairs = false}), IsEmpty());  // too small to have a direction
    EXPECT_THAT(doubts(tilt, {.min_dipole = 0.04, .pairs = false}),
                ElementsAre(doubt::dipole_turned));
    EXPECT_THAT(doubts(tilt, {.max_turn = 46, .min_dipole = 0.04, .pairs = false}), IsEmpty());
    EXPECT_THAT(doubts(tilt, {}), ElementsAre(doubt::asymmetric_pair));
    EXPECT_THAT(doubts(tilt, {.max_asymmetry = 1}), IsEmpty());
}

TEST(Check, DescribesAnyDisplacement) {
    const auto text = [](std::vector<sgn_check::vec3> x) {
        result_file file = sample::water("one");
        file.contents.x = std::move(x);
        const std::vector<result_file> files{file};
        const result_file reference = sample::water("ref");
        return check(reference, files, {})[1].moved->text(file.contents.symbol);
    };
    const auto x = sample::water("ref").contents.x;
    EXPECT_EQ(text(x), "none");
    EXPECT_EQ(text({{0.03, 0, 0.078}, x[1], x[2]}), "1 O (0.60,0.00,-0.80) 0.0500");
    EXPECT_EQ(text({{0, 0, 0.128}, x[1], {0, -0.78, -0.472}}), "2 atoms, 3 H -y 0.0200");
}

TEST(Table, IsColouredOnlyIfAsked) {
    const auto verdicts = verdicts_of([](sgn_contents& job) { job.parameters.sign = 0; });
    const std::string plain = sgn_check::table(verdicts, false);
    EXPECT_THAT(plain, Not(HasSubstr("\033")));
    std::string coloured = sgn_check::table(verdicts, true);
    EXPECT_THAT(coloured, AllOf(HasSubstr("\033[32mfine\033[0m\n"), HasSubstr("\033[1;31msign 0")));
    for (const std::string_view code : {"\033[32m", "\033[1;31m", "\033[0m"}) {
        for (std::size_t at; (at = coloured.find(code)) != std::string::npos;) {
            coloured.erase(at, code.size());
        }
    }
    EXPECT_EQ(coloured, plain);
}

TEST(ReadBack, GivesWhatWasWritten) {
    const support::scratch_directory scratch;
    result_file file = sample::water(scratch.path() / "job.sgn", {0.01, -12.5, 0.118});
    file.contents.parameters = {-1, 3, 4, 5, 6, 7, 8, 9, {10, 11}, -1.25e-3};
    sample::write(file);
    const sgn_contents read = numfreq::read_sgn_file(file.name);
    EXPECT_EQ(read.parameters.sign, -1);
    EXPECT_EQ(read.parameters.nfv, 9);
    EXPECT_EQ(read.parameters.tden_maxloc, (flib::element_location{10, 11}));
    EXPECT_EQ(read.parameters.tden_maxval, -1.25e-3);
    EXPECT_TRUE(read.symbol[1] == "H");
    EXPECT_EQ(read.nat, file.contents.nat);
    EXPECT_EQ(read.mass, file.contents.mass);
    EXPECT_EQ(read.x, file.contents.x);
    EXPECT_EQ(read.corrected_tdip, file.contents.corrected_tdip);
    EXPECT_EQ(read.frc, file.contents.frc);
}

}  // namespace
