#include "common/number_ranges.h"

#include <gtest/gtest.h>

#include "support/support.h"

namespace {

TEST(NumberRanges, AreReadFromAList) {
    const struct {
        const char* list;
        const char* numbers;  // up to 9, then the largest
    } cases[] = {{"1-3,7", "1 2 3 7 of 7"},
                 {"4", "4 of 4"},
                 {"5,2-3,3-4", "2 3 4 5 of 5"},
                 {"3-3", "3 of 3"},
                 {"8-2147483647", "8 9 of 2147483647"},
                 {"12,10-11", "of 12"}};
    for (const auto& [list, expected] : cases) {
        const auto ranges = tools::parse_ranges("--atoms", list);
        std::string text;
        for (const std::int32_t number : tools::numbers_in(ranges, 9)) {
            text += std::to_string(number) + " ";
        }
        EXPECT_EQ(text + "of " + std::to_string(tools::largest_in(ranges)), expected);
    }
    for (const std::string list :
         {"", ",", "1,", ",1", "0", "-1", "3-", "1-2-3", "x", "1x", "1 ", "2147483648"}) {
        const auto end = support::ending_of([&] { tools::parse_ranges("--atoms", list); });
        ASSERT_TRUE(end) << list;
        EXPECT_EQ(end->text, "--atoms: expected numbers like 1-3,7, not '" + list + "'");
    }
    const auto end = support::ending_of([] { tools::parse_ranges("--states", "1,3-2"); });
    EXPECT_EQ(end->text, "--states: '3-2' ends before it begins");
}

}  // namespace
