#include "common/csv.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(Csv, QuotesWhatMustBeQuoted) {
    EXPECT_EQ(tools::csv_line({"a b", "", "x,y", "say \"no\"", "1\n2", "3\r"}),
              "a b,,\"x,y\",\"say \"\"no\"\"\",\"1\n2\",\"3\r\"\r\n");
}

TEST(Csv, WritesRealsThatReadBack) {
    EXPECT_EQ(tools::csv_real(0.1), "0.1");
    EXPECT_EQ(tools::csv_real(-1.5e-300), "-1.5e-300");
    EXPECT_EQ(tools::csv_real(std::numeric_limits<double>::infinity()), "");
    EXPECT_EQ(tools::csv_real(std::numeric_limits<double>::quiet_NaN()), "");
}

}  // namespace
