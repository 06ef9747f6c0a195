#include "sgn/states/assignment.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <random>

namespace {

using sgn::overlap_rows;

/// "2 1 -": the column of each row, from 1 on.
std::string assigned(const overlap_rows& rows) {
    std::string text;
    for (const auto& column : sgn::assign(rows)) {
        text += (text.empty() ? "" : " ") + (column ? std::to_string(*column + 1) : "-");
    }
    return text;
}

TEST(Assignment, IsMadeOfWhatThereIs) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(assigned({}), "");
    EXPECT_EQ(assigned({{}, {}}), "- -");
    // The largest element belongs to nobody here.
    EXPECT_EQ(assigned({{0.9, -0.8}, {0.8, 0.1}}), "2 1");
    EXPECT_EQ(assigned({{0.1, 0.3, 0.2, 0.9}, {0.2, 0.7, 0.1, -0.8}}), "4 2");
    EXPECT_EQ(assigned({{0.3, 0.4}, {0.9, 0.5}, {0.1, 0.8}}), "- 1 2");
    EXPECT_EQ(assigned({{nan, 0.1}, {0.2, 0.25}}), "2 1");
    EXPECT_EQ(assigned({{infinity, 0.1}, {0.2, -infinity}}), "2 1");
}

TEST(Assignment, HasTheLargestSum) {
    std::mt19937_64 bits(5);
    std::uniform_real_distribution<double> range(-1, 1);
    for (int round = 0; round < 300; ++round) {
        const std::size_t roots = 1 + bits() % 5;
        overlap_rows rows(1 + bits() % 5, std::vector<double>(roots));
        for (auto& row : rows) std::ranges::generate(row, [&] { return range(bits); });
        // Columns beyond the last root are those of nobody.
        std::vector<std::size_t> columns(std::max(rows.size(), roots));
        const auto sum = [&] {
            double all = 0;
            for (std::size_t row = 0; row < rows.size(); ++row) {
                if (columns[row] < roots) all += std::abs(rows[row][columns[row]]);
            }
            return all;
        };
        std::size_t next_empty = roots;
        std::vector<bool> taken(roots, false);
        const auto found = sgn::assign(rows);
        for (std::size_t row = 0; row < rows.size(); ++row) {
            columns[row] = found[row] ? *found[row] : next_empty++;
            if (!found[row]) continue;
            EXPECT_FALSE(taken[*found[row]]);
            taken[*found[row]] = true;
        }
        const double its_sum = sum();
        std::iota(columns.begin(), columns.end(), 0U);
        double best = 0;
        do {
            best = std::max(best, sum());
        } while (std::ranges::next_permutation(columns).found);
        EXPECT_NEAR(its_sum, best, 1e-12) << round;
    }
}

}  // namespace
