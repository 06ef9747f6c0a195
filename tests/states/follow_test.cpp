#include "sgn/states/follow.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <numeric>
#include <sstream>

#include "states/made_up.h"
#include "support/support.h"

namespace {

using sgn::followed_job;
using sgn::followed_state;
using sgn::job;
using sgn::reference_set;

reference_set prepared(job reference) {
    std::vector<std::int32_t> all(static_cast<std::size_t>(reference.states));
    std::iota(all.begin(), all.end(), 1);
    return prepare(std::move(reference), all);
}

/// Numbers with two decimals.
template <class Range>
std::string text_of(const Range& numbers) {
    std::string text;
    for (const double number : numbers) {
        char digits[40];
        std::snprintf(digits, sizeof digits, "%s%.2f", text.empty() ? "" : " ", number + 0.0);
        text += digits;
    }
    return text;
}

/// Everything that is known of a followed job, in a line per state.
std::string text_of(const followed_job& of) {
    std::ostringstream text;
    for (const auto& [state, kind, root, overlap, sign, values, spin, nearest, full, element,
                      overlaps] : of.states) {
        text << state << ' ' << name_of(kind) << ' ' << root << ' ' << sign << ' '
             << text_of(std::array{overlap}) << "; ";
        if (values) text << text_of(std::array{values->energy}) << ' ' << text_of(values->dipole);
        text << "; " << text_of(std::array{element}) << "; " << text_of(overlaps) << '\n';
    }
    if (of.stigruz) {
        text << "stigruz " << of.stigruz->sign << (of.stigruz->agrees ? " agrees" : " disagrees");
    }
    text << (of.clear() ? ", clear" : ", doubt");
    return text.str();
}

/// A job of one occupied orbital and orbitals that are basis functions, so that overlaps are
/// products of amplitudes, "1 0 0, 0 2 0".
job with_roots(const std::string& amplitudes) {
    const auto roots = static_cast<std::int32_t>(std::ranges::count(amplitudes, ',')) + 1;
    job made = made_up({.nbasis = 5, .mi = 1, .ma = 3, .mci = roots, .nfc = 1}, 7, false);
    std::istringstream text(support::replaced(amplitudes + ",", ",", " "));
    for (std::int32_t root = 1; root <= roots; ++root) {
        for (double& amplitude : amplitudes_of(made, root)) {
            std::string number;
            text >> number;
            amplitude = std::stod(number);
        }
        for (std::int32_t k = 1; k <= 3; ++k) made.tdip(k, root) = 10 * root + k;
    }
    return made;
}

TEST(Following, TellsWhatBecomesOfStates) {
    const reference_set from = prepared(with_roots("2 0 0, 0 -3 0, 0 0 5"));
    const auto rows = support::table_of("states/verdicts.txt");
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const sgn::overlap_limits limits{std::stod(rows[i][1]), std::stod(rows[i][2])};
        EXPECT_EQ(text_of(follow(from, with_roots(rows[i][0]), limits)), rows[i][3]) << rows[i][0];
    }
    const sgn::overlap_limits usual;
    EXPECT_EQ(usual.mixed_below, 0.8);
    EXPECT_EQ(usual.lost_below, 0.2);
    // The sign of the largest element is not that of the overlap.
    EXPECT_EQ(text_of(follow(prepared(with_roots("2 1 0.5")), with_roots("-0.25 3 0.5"),
                             {.mixed_below = 0.1, .lost_below = 0})),
              "1 same 1 1 0.39; 0.25 11.00 12.00 13.00; -0.25; 0.39\n"
              "stigruz -1 disagrees, doubt");
    EXPECT_EQ(text_of(follow(prepared(with_roots("-2 1 0.5")), with_roots("-0.25 3 0.5"),
                             {.mixed_below = 0.1, .lost_below = 0})),
              "1 same 1 1 0.54; 0.25 11.00 12.00 13.00; -0.25; 0.54\n"
              "stigruz 1 agrees, clear");
    // stigruz is asked of the first state only.
    const std::vector<std::int32_t> wanted{2, 3};
    const job now = with_roots("1 0 0, 0 3 0, 0 0 4");
    EXPECT_EQ(text_of(follow(prepare(with_roots("2 0 0, 0 -3 0, 0 0 5"), wanted), now, {})),
              "2 same 2 -1 1.00; 0.50 -21.00 -22.00 -23.00; 3.00; 0.00 -1.00 0.00\n"
              "3 same 3 1 1.00; 0.75 31.00 32.00 33.00; 4.00; 0.00 0.00 1.00\n, clear");
}

/// A whole set against the table of what is true.
TEST(Following, SeesThroughPhasesAndExchanges) {
    const struct {
        const char* directory;
        const char* table;
        const char* reference;
        int exchanged;
    } sets[] = {{EXAMPLES "/water", "water_states.txt", "h2o_ref", 0},
                {TEST_DATA "/crossing", "crossing/states.txt", "h2ox_ref", 4},
                {TEST_DATA "/dependent", "dependent/states.txt", "wd_ref", 0}};
    const std::filesystem::path home = std::filesystem::current_path();
    for (const auto& [directory, table, name, exchanged] : sets) {
        std::filesystem::current_path(directory);  // of logs and dumps
        const reference_set from = prepared(sgn::read_job(std::string(name) + ".fchk"));
        auto rows = support::table_of(table);
        rows.erase(rows.begin());
        std::map<std::string, double> phase;  // of the reference's states
        std::map<std::string, followed_job> jobs;
        int exchanges = 0;
        for (const auto& row : rows) {
            if (row[0] == name) phase[row[1]] = std::stod(row[4]);
            if (!jobs.contains(row[0])) {
                jobs[row[0]] = follow(from, sgn::read_job(row[0] + ".fchk", &from.reference), {});
            }
            const followed_state& found = jobs[row[0]].states.at(std::stoul(row[1]) - 1);
            const bool same = row[1] == row[2];
            if (!same) ++exchanges;
            std::ostringstream text;
            text << found.state << ' ' << found.root << ' ' << name_of(found.kind);
            EXPECT_EQ(text.str(), row[1] + ' ' + row[2] + (same ? " same" : " exchanged"))
                << row[0];
            EXPECT_NEAR(found.overlap, std::stod(row[3]), 0.001) << row[0];
            EXPECT_EQ(found.sign, std::stod(row[4]) * phase[row[1]]) << row[0] << ' ' << row[1];
            for (std::size_t k = 0; k < 3; ++k) {
                // The log has four decimals.
                EXPECT_NEAR(found.values->dipole[k], phase[row[1]] * std::stod(row[5 + k]), 6e-5);
            }
        }
        EXPECT_EQ(exchanges, exchanged);
    }
    std::filesystem::current_path(home);
}

TEST(Following, KeepsSingletsAndTripletsApart) {
    using enum flib::root_spin;
    job reference = with_roots("1 0 0, 0 1 0, 0 0 1");
    reference.spin = {singlet, triplet, singlet};
    const reference_set from = prepared(std::move(reference));
    // Its triplet looks like the reference's first state, and nothing is left for the third.
    job now = with_roots("0.99 0.1 0, 0.95 0 0.3, 0 1 0.1");
    now.spin = {triplet, singlet, triplet};
    const sgn::overlap_limits none{.mixed_below = 0, .lost_below = 0};
    const followed_job told = follow(from, now, none);
    EXPECT_EQ(text_of(told),
              "1 exchanged 2 1 0.95; 0.50 21.00 22.00 23.00; 0.95; 0.00 0.95 0.00\n"
              "2 exchanged 3 1 1.00; 0.75 31.00 32.00 33.00; 1.00; 0.10 0.00 1.00\n"
              "3 lost 0 0 0.00; ; 0.00; 0.00 0.30 0.00\n"
              "stigruz 1 disagrees, doubt");
    EXPECT_EQ(told.states[0].spin, singlet);
    EXPECT_EQ(told.states[1].spin, triplet);
    EXPECT_EQ(told.states[2].spin, std::nullopt);
    EXPECT_EQ(from.states[1].spin, triplet);
    // A dump that does not tell them does not hinder.
    now.spin.clear();
    EXPECT_EQ(text_of(follow(from, now, none)),
              "1 same 1 1 0.99; 0.25 11.00 12.00 13.00; 0.99; 0.99 0.95 0.00\n"
              "2 exchanged 3 1 1.00; 0.75 31.00 32.00 33.00; 1.00; 0.10 0.00 1.00\n"
              "3 exchanged 2 1 0.30; 0.50 21.00 22.00 23.00; 0.30; 0.00 0.30 0.10\n"
              "stigruz 1 agrees, doubt");
}

TEST(Following, TellsTheNearestStateOfTheSameSpin) {
    using enum flib::root_spin;
    const auto with = [](std::vector<double> energies, std::vector<flib::root_spin> spins) {
        job made = with_roots("1 0 0, 0 1 0, 0 0 1");
        made.energy = std::move(energies);
        made.spin = std::move(spins);
        return made;
    };
    const auto text = [](const auto& state) {
        if (!state.nearest) return std::string("none");
        return std::to_string(state.nearest->root) + " at " +
               std::to_string(state.nearest->distance) + (state.nearest->is_near() ? " near" : "");
    };
    const auto told = [&](const auto& states) {
        std::vector<std::string> all;
        for (const auto& each : states) all.push_back(text(each));
        return all;
    };
    const reference_set from = prepared(with({0.3, 0.3036, 0.3074}, {}));
    EXPECT_THAT(told(from.states),
                testing::ElementsAre("2 at 0.003600 near", "1 at 0.003600 near", "2 at 0.003800"));
    const auto among = [&](const job& now) { return told(follow(from, now, {}).states); };
    EXPECT_THAT(among(with({0.4, 0.3, 0.301}, {singlet, triplet, singlet})),
                testing::ElementsAre("3 at 0.099000", "none", "1 at 0.099000"));
    EXPECT_THAT(among(with({0.4, 0.3, 0.301}, {})),
                testing::ElementsAre("3 at 0.099000", "3 at 0.001000 near", "2 at 0.001000 near"));
}

TEST(Following, DoesNotDependOnPhasesAndOrderOfOrbitals) {
    const sgn::job_counts counts{.nbasis = 9, .mi = 2, .ma = 5, .mci = 3, .nfc = 1, .nfv = 1};
    const reference_set from = prepared(made_up(counts, 1));
    job now = made_up(counts, 2);
    const sgn::overlap_limits none{.mixed_below = 0, .lost_below = 0};
    const std::string before = text_of(follow(from, now, none));
    for (std::int32_t p = 1; p <= 9; ++p) {
        now.moc(p, 3) *= -1;                      // the second occupied orbital
        std::swap(now.moc(p, 5), now.moc(p, 7));  // the second and the fourth virtual one
    }
    for (std::int32_t root = 1; root <= 3; ++root) {
        const std::span<double> x = amplitudes_of(now, root);
        for (double& amplitude : x.last(5)) amplitude *= -1;
        for (const std::size_t occupied : {0, 5}) std::swap(x[occupied + 1], x[occupied + 3]);
    }
    EXPECT_EQ(text_of(follow(from, now, none)), before);
}

TEST(Following, NeedsADensityThatIsNotZero) {
    job vanishing = made_up({.nbasis = 3, .mi = 1, .ma = 2, .mci = 1}, 1, false);
    for (std::int32_t i = 1; i <= 3; ++i) vanishing.moc(i, i) = 0.5;
    for (double& amplitude : amplitudes_of(vanishing, 1)) amplitude = 5e-324;
    EXPECT_EQ(support::ending_of([&] { prepared(std::move(vanishing)); })->text,
              "made.cis: the transition density of root 1 has no element above zero in magnitude");
}

TEST(OscillatorStrength, IsTwoThirdsOfTheEnergyTimesTheSquaredDipole) {
    EXPECT_DOUBLE_EQ((sgn::root_values{0.75, {1, -2, 3}}).oscillator_strength(), 7);
}

}  // namespace
