#include "states/assignment.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <random>

namespace {

using states::overlap_rows;

/// "2 1 -": the column of each row, from 1 on.
std::string assigned(const overlap_rows& rows) {
    std::string text;
    for (const auto& column : states::assign(rows)) {
        if (!text.empty()) text += ' ';
        text += column ? std::to_string(*column + 1) : "-";
    }
    return text;
}

TEST(Assignment, HasTheLargestSum) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const struct {
        overlap_rows rows;
        const char* assigned;
    } cases[] = {
        {{}, ""},
        {{{}, {}}, "- -"},
        {{{0.1}}, "1"},
        {{{0.9, 0.1}, {0.2, 0.8}}, "1 2"},
        {{{0.1, -0.9}, {-0.8, 0.2}}, "2 1"},
        // The largest element belongs to nobody here.
        {{{0.9, 0.8}, {0.8, 0.1}}, "2 1"},
        {{{0.1, 0.3, 0.2, 0.9}, {0.2, 0.7, 0.1, 0.8}}, "4 2"},
        {{{0.3, 0.4}, {0.9, 0.5}, {0.1, 0.8}}, "- 1 2"},
        {{{0.7}, {0.2}, {-0.8}}, "- - 1"},
        {{{nan, 0.1}, {0.2, 0.25}}, "2 1"},
        {{{infinity, 0.1}, {0.2, -infinity}}, "2 1"},
    };
    for (const auto& [rows, expected] : cases) EXPECT_EQ(assigned(rows), expected);
}

TEST(Assignment, IsNoWorseThanAnyOther) {
    std::mt19937_64 bits(5);
    std::uniform_real_distribution<double> range(-1, 1);
    for (int round = 0; round < 300; ++round) {
        const std::size_t states = 1 + bits() % 5;
        const std::size_t roots = 1 + bits() % 5;
        overlap_rows rows(states, std::vector<double>(roots));
        for (auto& row : rows) std::ranges::generate(row, [&] { return range(bits); });
        double found = 0;
        std::vector<bool> taken(roots, false);
        const auto columns = states::assign(rows);
        for (std::size_t row = 0; row < states; ++row) {
            if (!columns[row]) continue;
            EXPECT_FALSE(taken[*columns[row]]);
            taken[*columns[row]] = true;
            found += std::abs(rows[row][*columns[row]]);
        }
        // All ways to give the rows different places, of which the last ones may be empty.
        std::vector<std::size_t> places(std::max(states, roots));
        std::iota(places.begin(), places.end(), 0U);
        double best = 0;
        do {
            double sum = 0;
            for (std::size_t row = 0; row < states; ++row) {
                if (places[row] < roots) sum += std::abs(rows[row][places[row]]);
            }
            best = std::max(best, sum);
        } while (std::ranges::next_permutation(places).found);
        EXPECT_NEAR(found, best, 1e-12);
    }
}

}  // namespace
