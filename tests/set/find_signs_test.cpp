// Signs drawn at random are found again, or told to be open: never wrong ones.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model.h"
#include "sgn/set/find_signs.h"
#include "sgn/states/job_set.h"
#include "support/support.h"

namespace {

using namespace sgn;
using model::molecule;
using files = std::vector<result_file>;

bool is_zero(const displaced_job& job, const displaced_set& set) {
    return length(job.dipole) < std::max(0.5 * std::pow(10, -set.dipole_decimals), 1e-6);
}

/// Whether `signs` are `expected`, but for those of zeros and, of a dark reference, all.
bool are_right(const std::vector<int>& signs, const std::vector<int>& expected,
               const displaced_set& set) {
    bool same = true;
    bool opposite = is_zero(set.jobs[0], set);
    for (std::size_t j = 0; j < signs.size(); ++j) {
        if (is_zero(set.jobs[j], set)) continue;
        (signs[j] == expected[j] * expected[0] ? opposite : same) = false;
    }
    return same || opposite;
}

/// What comes of so many draws: "right", or why not and by how much derivatives differ.
std::string outcome(const displaced_set& set, int draws = 3) {
    std::mt19937 random(5);
    std::string told;
    for (int n = 0; n < draws; ++n) {
        std::vector<int> drawn;
        for (std::size_t j = 0; j < set.jobs.size(); ++j) {
            drawn.push_back((random() >> 16U & 1U) != 0 ? 1 : -1);
        }
        const found_signs found = find_signs(with_signs(set, drawn));
        std::string now;
        if (found.decided) {
            now = are_right(found.signs, drawn, set) ? "right" : "wrong";
            if (!found.alternatives.empty() || !found.open.empty()) now += ", and more";
        } else {
            now = found.reason;
            const auto right = [&](const auto& signs) { return are_right(signs, drawn, set); };
            if (!found.alternatives.empty()) {
                now += ": " + std::to_string(found.alternatives.size()) + " ways";
                if (found.alternatives.front() != found.signs) now += ", not the first";
                if (std::ranges::none_of(found.alternatives, right)) now += ", none right";
                if (found.largest_change == 0) now += ", of no account";
            }
        }
        if (n > 0 && now != told) return told + " or " + now;
        told = now;
    }
    return told;
}

TEST(FindSigns, OfMolecules) {
    const auto none = [](files&) {};
    molecule faint = model::bent;
    faint.strength = 0.01;
    molecule exact = model::dark;
    exact.dipole_decimals = 8;
    molecule nearly = model::dark;
    nearly.x[1][0] += 0.0005;
    molecule weak = model::diatomic;
    weak.strength = 0.001;
    molecule weaker = weak;
    weaker.strength = 0.0005;
    molecule many = model::dark;
    for (int i = 0; i < 8; ++i) {
        many.numbers.push_back(1);
        many.x.push_back(sgn::scaled(i % 2 == 0 ? 1 : -1, {0.5 * (i / 2), 2.5, 0.3 * (i / 2)}));
    }
    const char* const unfit =
        "with no choice of signs do the sums over all atoms vanish: is a job of another state "
        "among them, or a field around the molecule?";
    const char* const axes = "the signs of 1x+, 1x-, 1y+, 1y-, 1z+ and 25 more are open: 4 ways";
    const struct {
        const char* expected;
        molecule of;
        std::function<void(files&)> change;
    } cases[] = {
        {"right", model::bent, none},
        {"right", model::diatomic, none},
        {"right", model::line, none},
        {"right", faint, none},
        // About a centre nothing links moves along one axis with those along another, ...
        {axes, model::dark, none},
        {axes, exact, none},
        {"the signs of ref, 1x+, 1x-, 1y+, 1y- and 26 more are open: 8 ways", nearly, none},
        {"one choice of signs fits, but there are so many that it may by chance: 1 ways, of no "
         "account",
         weak, none},
        {"the signs of 1x+, 1x-, 1y+, 1y-, 1z+ and 7 more are open: 15 ways", weaker, none},
        {"the signs of 1x+, 1x-, 1y+, 1y-, 2x+ and 71 more are open: too many choices to be tried",
         many, none},
        // ... as moves of all atoms at once do.
        {"right", exact, [=](files& of) { of = model::obliquely_displaced(exact); }},
        {"the sign of ref is open: 2 ways, of no account", nearly,
         [=](files& of) { of = model::obliquely_displaced(nearly); }},
        {"right", model::bent, [](files& of) { of = model::obliquely_displaced(model::bent); }},
        {"the signs of 1x+, 1x-, 1y+, 1y-, 1z+ and 55 more are open: 4 ways", exact,
         [=](files& of) {
             for (auto& each : model::displaced(exact, 0.02)) of.push_back(each);
         }},
        {"right", model::bent,  // half of them one-sided
         [](files& of) {
             for (int i = 1; i <= 12; ++i) of.erase(of.begin() + i);
         }},
        {"right", model::bent,  // one repeated, one not displaced
         [](files& of) {
             of.push_back(of[3]);
             of.push_back(model::reference(model::bent));
         }},
        {"right", model::bent, [](files& of) { of.resize(4); }},
        {"the sign of 1z+ is open: there are no sums, since not all coordinates are displaced: 2 "
         "ways, of no account",
         model::bent, [](files& of) { of.resize(5); }},
        {unfit, model::bent,
         [](files& of) {
             of[6].contents.corrected_tdip = {0.3, 0.1, 0.1};
         }},
        {"the signs of 2x+ and 2x- are open: no smooth dipole fits the others", model::bent,
         [](files& of) {
             of[6].contents.corrected_tdip = {1e300, 0, 0};
         }},
        {unfit, nearly,
         [](files& of) {
             of[6].contents.corrected_tdip = {0.03, 0.1, 0.1};
         }},
    };
    for (const auto& [expected, of, change] : cases) {
        files all = model::displaced(of);
        change(all);
        EXPECT_EQ(outcome(make_set(model::reference(of), all)), expected);
    }
}

TEST(FindSigns, OfTheExample) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(EXAMPLES "/water");
    std::vector<std::string> names;
    for (const char* const move : {"xp", "xm", "yp", "ym", "zp", "zm"}) {
        for (const char* const atom : {"h2o_01", "h2o_02", "h2o_03"}) {
            names.push_back(std::string(atom) + move + ".fchk");
        }
    }
    std::vector<std::string> outcomes;
    for (const int state : {1, 2, 3, 4}) {
        job_set jobs = set_of_jobs("h2o_ref.fchk", names, state);
        outcomes.push_back(outcome(make_set(jobs.reference, jobs.files)));
        jobs.reference.full.reset();
        outcomes.push_back(outcome(make_set(jobs.reference, jobs.files)));
    }
    std::filesystem::current_path(before);
    const char* const dark =
        "the signs of h2o_02xp.fchk, h2o_03xp.fchk, h2o_02xm.fchk and h2o_03xm.fchk are open: 16 "
        "ways";
    EXPECT_THAT(outcomes, testing::ElementsAre("right", "right", dark, dark, "right", "right",
                                               "right", "right"));
}

TEST(FindSigns, AreGivenToASet) {
    displaced_set set = make_set(model::reference(model::bent), model::displaced(model::bent));
    set.jobs[2].moments = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9, 10, 11, 12}};
    std::vector<int> signs(set.jobs.size(), 1);
    signs[2] = -1;
    const displaced_set other = with_signs(set, signs);
    EXPECT_EQ(other.jobs[1].dipole, set.jobs[1].dipole);
    EXPECT_EQ(other.jobs[2].dipole, scaled(-1, set.jobs[2].dipole));
    EXPECT_EQ(other.jobs[2].sign, -1);
    const other_moments& moments = *other.jobs[2].moments;
    EXPECT_EQ(moments.velocity_dipole, (vec3{-1, -2, -3}));
    EXPECT_EQ(moments.magnetic_dipole, (vec3{-4, -5, -6}));
    EXPECT_THAT(moments.velocity_quadrupole, testing::ElementsAre(-7, -8, -9, -10, -11, -12));
    signs[3] = 0;
    EXPECT_EQ(support::ending_of([&] { with_signs(set, signs); })->text,
              "the sign of 1y+ is 0, not 1 or -1");
    signs.pop_back();
    EXPECT_EQ(support::ending_of([&] { with_signs(set, signs); })->text,
              "there are 24 signs instead of 25");
}

}  // namespace
