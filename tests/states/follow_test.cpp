#include "states/follow.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "states/made_up.h"
#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using states::followed_job;
using states::followed_state;
using states::job;
using states::read_job;
using states::reference_set;

/// Log and dump are read in the working directory.
class Following : public testing::Test {
  protected:
    ~Following() override { fs::current_path(home_); }

    static std::vector<std::int32_t> all_of(const job& reference) {
        std::vector<std::int32_t> all;
        while (std::ssize(all) < reference.counts.mci) all.push_back(std::int32_t(all.size()) + 1);
        return all;
    }

    static reference_set prepared(job reference) {
        const std::vector<std::int32_t> all = all_of(reference);
        return prepare(std::move(reference), all);
    }

    fs::path home_ = fs::current_path();
};

/// Everything that is known of a followed job, in a line per state.
std::string text_of(const followed_job& of, int decimals = 6) {
    std::string text;
    const auto add = [&](double value) {
        char number[40];
        std::snprintf(number, sizeof number, " %.*f", decimals, value);
        text += number;
    };
    for (const followed_state& each : of.states) {
        text += std::to_string(each.state) + " " + std::string(name_of(each.kind)) + " " +
                std::to_string(each.root) + " " + std::to_string(each.sign);
        add(each.overlap);
        text += " |";
        if (each.values) {
            add(each.values->energy);
            for (const double component : each.values->dipole) add(component + 0.0);
        }
        text += " |";
        add(each.element_value);
        text += " |";
        for (const double overlap : each.overlaps) add(overlap + 0.0);
        text += '\n';
    }
    if (of.stigruz) {
        text += "stigruz " + std::to_string(of.stigruz->sign) +
                (of.stigruz->agrees ? " agrees" : " disagrees");
    }
    return text + (of.clear() ? ", clear" : ", doubt");
}

/// The whole set in a directory against the table of what is true.
void check_set(const fs::path& directory, const std::string& table, const std::string& name,
               std::size_t exchanges) {
    fs::current_path(directory);
    const auto rows = support::table_of(table);
    std::map<int, double> phase;  // of the reference's states
    for (const auto& row : rows) {
        if (row[0] == name) phase[std::stoi(row[1])] = std::stod(row[4]);
    }
    job reference = read_job(name + ".fchk");
    const std::vector<std::int32_t> all{1, 2, 3, 4};
    const reference_set from = prepare(std::move(reference), all);
    std::map<std::string, followed_job> followed;
    std::size_t exchanged = 0;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const auto& row = rows[i];
        if (!followed.contains(row[0])) {
            followed[row[0]] = follow(from, read_job(row[0] + ".fchk", &from.reference), {});
        }
        const int state = std::stoi(row[1]);
        const followed_state& found = followed[row[0]].states[static_cast<std::size_t>(state) - 1];
        EXPECT_EQ(found.state, state);
        EXPECT_EQ(found.root, std::stoi(row[2])) << row[0] << ' ' << state;
        EXPECT_NEAR(found.overlap, std::stod(row[3]), 0.001) << row[0] << ' ' << state;
        EXPECT_EQ(found.sign, std::stod(row[4]) * phase[state]) << row[0] << ' ' << state;
        EXPECT_EQ(found.kind,
                  found.root == state ? states::verdict::same : states::verdict::exchanged);
        if (found.kind == states::verdict::exchanged) ++exchanged;
        for (std::size_t k = 0; k < 3; ++k) {
            // The log has four decimals.
            EXPECT_NEAR(found.values->dipole[k], phase[state] * std::stod(row[5 + k]), 6e-5);
        }
    }
    EXPECT_EQ(exchanged, exchanges);
}

TEST_F(Following, KeepsTheStatesOfTheBundledSet) {
    check_set(EXAMPLES "/water", "water_states.txt", "h2o_ref", 0);
}

TEST_F(Following, SeesThroughExchangesOfStates) {
    check_set(support::data_file("crossing"), "crossing/states.txt", "h2ox_ref", 4);
}

TEST_F(Following, TellsVerdicts) {
    // Every orbital is a basis function, so that overlaps are products of amplitudes.
    const numfreq::job_counts counts{.nbasis = 5, .mi = 1, .ma = 3, .mci = 3, .nfc = 1};
    const auto with = [&](const std::vector<std::vector<double>>& roots) {
        numfreq::job_counts its = counts;
        its.mci = static_cast<std::int32_t>(roots.size());
        job made = made_up(its, 7, false);
        for (std::int32_t root = 1; root <= its.mci; ++root) {
            std::ranges::copy(roots[static_cast<std::size_t>(root) - 1],
                              amplitudes_of(made, root).begin());
            for (std::int32_t k = 1; k <= 3; ++k) made.tdip(k, root) = 10 * root + k;
        }
        return made;
    };
    const reference_set from = prepared(with({{2, 0, 0}, {0, -3, 0}, {0, 0, 5}}));
    const auto what_of = [&](const std::vector<std::vector<double>>& roots,
                             const states::thresholds& limits = {}) {
        return text_of(follow(from, with(roots), limits), 2);
    };
    EXPECT_EQ(what_of({{1, 0, 0}, {0, 3, 0}, {0, 0, 4}}),
              "1 same 1 1 1.00 | 0.25 11.00 12.00 13.00 | 1.00 | 1.00 0.00 0.00\n"
              "2 same 2 -1 1.00 | 0.50 -21.00 -22.00 -23.00 | 3.00 | 0.00 -1.00 0.00\n"
              "3 same 3 1 1.00 | 0.75 31.00 32.00 33.00 | 4.00 | 0.00 0.00 1.00\n"
              "stigruz 1 agrees, clear");
    EXPECT_TRUE(what_of({{1, 0, 0}, {0, 3, 0}, {0, 0, 4}}, {.mixed_below = 1, .lost_below = 1})
                    .ends_with("clear"));
    // State 1 at root 2, which stigruz does not see; a fourth root; state 3 is nowhere.
    EXPECT_EQ(what_of({{0, -1, 0}, {-1, 0, 0}, {0, 0, 0.3}, {0.5, 0.1, 0}}),
              "1 exchanged 2 -1 1.00 | 0.50 -21.00 -22.00 -23.00 | -1.00 | 0.00 -1.00 0.00 0.98\n"
              "2 exchanged 1 1 1.00 | 0.25 11.00 12.00 13.00 | -1.00 | 1.00 0.00 0.00 -0.20\n"
              "3 same 3 1 1.00 | 0.75 31.00 32.00 33.00 | 0.30 | 0.00 0.00 1.00 0.00\n"
              "stigruz 0 disagrees, doubt");
    // 0.8 and 0.2 of state 1 and 2 are in root 1 and 2.
    const std::vector<std::vector<double>> turned{{2, -1, 0}, {1, 2, 0}, {0, 0, -1}};
    const std::string states_of_turned =
        "1 same 1 1 0.89 | 0.25 11.00 12.00 13.00 | 2.00 | 0.89 0.45 0.00\n"
        "2 same 2 -1 0.89 | 0.50 -21.00 -22.00 -23.00 | 2.00 | 0.45 -0.89 0.00\n"
        "3 same 3 -1 1.00 | 0.75 -31.00 -32.00 -33.00 | -1.00 | 0.00 0.00 -1.00\n";
    EXPECT_EQ(what_of(turned, {.mixed_below = 0.799, .lost_below = 0.1}),
              states_of_turned + "stigruz 1 agrees, clear");
    EXPECT_EQ(what_of(turned, {.mixed_below = 0.801, .lost_below = 0.1}),
              support::replaced(support::replaced(states_of_turned, "1 same 1", "1 mixed 1"),
                                "2 same 2", "2 mixed 2") +
                  "stigruz 1 agrees, doubt");
    EXPECT_EQ(what_of(turned, {.mixed_below = 0.9, .lost_below = 0.801}),
              "1 lost 0 0 0.00 | | 0.00 | 0.89 0.45 0.00\n"
              "2 lost 0 0 0.00 | | 0.00 | 0.45 -0.89 0.00\n"
              "3 same 3 -1 1.00 | 0.75 -31.00 -32.00 -33.00 | -1.00 | 0.00 0.00 -1.00\n"
              "stigruz 1 disagrees, doubt");
    // Fewer roots than states.
    EXPECT_EQ(what_of({{0, 1, 1}, {-1, 3, -2}}, {.mixed_below = 0.3}),
              "1 lost 0 0 0.00 | | 0.00 | 0.00 -0.27\n"
              "2 same 2 -1 0.80 | 0.50 -21.00 -22.00 -23.00 | 3.00 | -0.71 -0.80\n"
              "3 exchanged 1 1 0.71 | 0.25 11.00 12.00 13.00 | 1.00 | 0.71 -0.53\n"
              "stigruz 0 disagrees, doubt");
    // What is not a number is nobody's continuation.
    const std::string not_a_number = what_of({{NAN, 0, 0}, {0, 1, 0}, {0, 0, 1}});
    EXPECT_TRUE(not_a_number.starts_with("1 lost 0 0 0.00 | | 0.00 | ")) << not_a_number;
    // The sign of the largest element is not that of the overlap.
    const reference_set spread = prepared(with({{2, 1, 0.5}}));
    EXPECT_EQ(
        text_of(follow(spread, with({{-0.25, 3, 0.5}}), {.mixed_below = 0.1, .lost_below = 0}), 2),
        "1 same 1 1 0.39 | 0.25 11.00 12.00 13.00 | -0.25 | 0.39\nstigruz -1 disagrees, doubt");
}

TEST_F(Following, AsksStigruzOnlyForTheFirstState) {
    const numfreq::job_counts counts{.nbasis = 5, .mi = 2, .ma = 3, .mci = 3};
    const std::vector<std::int32_t> wanted{2, 3};
    const job now = made_up(counts, 4);
    const followed_job followed = follow(prepare(made_up(counts, 4), wanted), now, {});
    EXPECT_EQ(followed.stigruz, std::nullopt);
    ASSERT_EQ(followed.states.size(), 2U);
    EXPECT_EQ(followed.states[0].root, 2);
    EXPECT_EQ(followed.states[1].root, 3);
}

TEST_F(Following, NeedsADensityThatIsNotZero) {
    job vanishing = made_up({.nbasis = 3, .mi = 1, .ma = 2, .mci = 1}, 1, false);
    for (std::int32_t i = 1; i <= 3; ++i) vanishing.moc(i, i) = 0.5;
    for (double& amplitude : amplitudes_of(vanishing, 1)) amplitude = 5e-324;
    const auto end = support::ending_of([&] { prepared(std::move(vanishing)); });
    ASSERT_TRUE(end);
    EXPECT_EQ(end->text,
              "made.cis: the transition density of root 1 has no element above zero in magnitude");
}

/// What has no meaning: phases and order of orbitals, turns among degenerate ones, phases and order
/// of roots.
TEST_F(Following, DoesNotDependOnPhasesAndOrders) {
    fs::current_path(support::data_file("crossing"));
    const reference_set from = prepared(read_job("h2ox_ref.fchk"));
    const job plain = read_job("h2ox_02yp.fchk");
    const followed_job expected = follow(from, plain, {});
    const auto [natom, n, nbsuse, mi, ma, mci, nfc, nfv] = plain.counts;
    std::mt19937_64 bits(11);
    for (int round = 0; round < 20; ++round) {
        job now = read_job("h2ox_02yp.fchk");
        // Turns pairs of occupied and of virtual orbitals; by 90 or 180 degrees they are a change
        // of order or of phase.
        for (int turn = 0; turn < 12; ++turn) {
            const bool of_virtuals = turn % 2 == 0;
            const auto count = static_cast<std::uint64_t>(of_virtuals ? ma : mi);
            const auto j = static_cast<std::int32_t>(bits() % count) + 1;
            const auto k = static_cast<std::int32_t>(bits() % count) + 1;
            if (j == k) continue;
            const double angle = std::acos(-1.0) * static_cast<double>(bits() % 12) / 6;
            const auto turned = [&](double& a, double& b) {
                const double before = a;
                a = std::cos(angle) * before + std::sin(angle) * b;
                b = std::cos(angle) * b - std::sin(angle) * before;
            };
            const std::int32_t first = nfc + (of_virtuals ? mi : 0);
            for (std::int32_t p = 1; p <= n; ++p)
                turned(now.moc(p, first + j), now.moc(p, first + k));
            for (std::int32_t root = 1; root <= mci; ++root) {
                const flib::matrix_view<double> x(amplitudes_of(now, root).data(), ma, mi);
                for (std::int32_t other = 1; other <= (of_virtuals ? mi : ma); ++other) {
                    of_virtuals ? turned(x(j, other), x(k, other))
                                : turned(x(other, j), x(other, k));
                }
            }
        }
        // Puts the roots into another order, some of them reversed.
        std::vector<std::int32_t> from_root{1, 2, 3, 4};
        std::ranges::shuffle(from_root, bits);
        const std::vector<double> before(now.xpy.all().begin(), now.xpy.all().end());
        const std::size_t block = before.size() / 4;
        std::vector<double> phase(4);
        for (std::int32_t root = 1; root <= mci; ++root) {
            const std::int32_t source = from_root[static_cast<std::size_t>(root) - 1];
            const double sign = bits() % 2 == 0 ? 1 : -1;
            phase[static_cast<std::size_t>(root) - 1] = sign;
            const std::span<double> amplitudes = amplitudes_of(now, root);
            for (std::size_t i = 0; i < amplitudes.size(); ++i) {
                amplitudes[i] = sign * before[block * static_cast<std::size_t>(source - 1) + i];
            }
            for (std::int32_t k = 1; k <= 3; ++k) now.tdip(k, root) = sign * plain.tdip(k, source);
            now.energy[static_cast<std::size_t>(root) - 1] =
                plain.energy[static_cast<std::size_t>(source) - 1];
        }
        const followed_job found = follow(from, now, {});
        for (std::size_t s = 0; s < 4; ++s) {
            const followed_state& a = expected.states[s];
            const followed_state& b = found.states[s];
            const auto root = static_cast<std::size_t>(b.root) - 1;
            ASSERT_EQ(from_root[root], a.root);
            EXPECT_EQ(b.sign, a.sign * phase[root]);
            EXPECT_NEAR(b.overlap, a.overlap, 1e-9);
            EXPECT_NEAR(b.element_value, phase[root] * a.element_value, 1e-9);
            EXPECT_EQ(b.values->energy, a.values->energy);
            for (std::size_t k = 0; k < 3; ++k)
                EXPECT_EQ(b.values->dipole[k] + 0.0, a.values->dipole[k] + 0.0);
        }
    }
}

TEST(OscillatorStrength, IsTwoThirdsOfTheEnergyTimesTheSquaredDipole) {
    EXPECT_DOUBLE_EQ((states::root_values{0.75, {1, -2, 3}}).oscillator_strength(), 7);
}

}  // namespace
