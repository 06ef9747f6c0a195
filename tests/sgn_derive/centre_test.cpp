// Sets whose first file is not their reference.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sgn/set/centre.h"
#include "support/sets.h"

namespace {

using sgn::result_file;

/// The file that fits better with file `first` of "h2o_*.sgn" as the reference, of those for which
/// `among` is true.
std::string better_than(std::size_t first, bool (*among)(const std::string& name)) {
    std::vector<result_file> all;
    for (const result_file& each : sets::water().files) {
        if (among(each.name)) all.push_back(each);
    }
    if (among("h2o_ref.sgn")) all.push_back(sets::water().reference);
    const result_file reference = all.at(first);
    all.erase(all.begin() + static_cast<std::ptrdiff_t>(first));
    const auto better = sgn::better_reference(reference, all);
    return better ? all.at(*better).name : "none";
}

bool any(const std::string&) {
    return true;
}

TEST(BetterReference, IsThatWithTheOthersInPairsAroundIt) {
    EXPECT_EQ(better_than(0, any), "h2o_ref.sgn");
    EXPECT_EQ(better_than(11, any), "h2o_ref.sgn");
    EXPECT_EQ(better_than(18, any), "none");
    // Only + displacements; no reference; a pair and its centre.
    EXPECT_EQ(better_than(3, [](const std::string& name) { return name[7] != 'm'; }), "none");
    EXPECT_EQ(better_than(3, [](const std::string& name) { return name[4] != 'r'; }), "none");
    EXPECT_EQ(
        better_than(0, [](const std::string& name) { return name[4] == 'r' || name[5] == '1'; }),
        "h2o_ref.sgn");
}

TEST(BetterReference, IsNotLookedForInWhatIsNoSet) {
    std::vector<result_file> files = sets::water().files;
    const result_file first = files.front();
    files.front() = sets::water().reference;
    ASSERT_EQ(sgn::better_reference(first, files), 0U);
    for (const auto spoil : {+[](result_file& file) { file.contents.x.pop_back(); },
                             +[](result_file& file) { file.contents.x[0][0] = std::nan(""); },
                             +[](result_file& file) { file.contents.x.clear(); }}) {
        std::vector<result_file> spoilt = files;
        spoil(spoilt[0]);
        EXPECT_EQ(sgn::better_reference(first, spoilt), std::nullopt);
    }
    EXPECT_EQ(sgn::better_reference(first, {}), std::nullopt);
    std::vector<result_file> mixed = files;
    mixed.back().contents.x.emplace_back();
    EXPECT_EQ(sgn::better_reference(first, mixed), std::nullopt);
}

}  // namespace
