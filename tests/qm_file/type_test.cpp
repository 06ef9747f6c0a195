// The finer rules of telling which program wrote a file.
#include <gtest/gtest.h>

#include "qm_file/ask.h"

namespace {

TEST(QmFileType, GoesByTheBanners) {
    const support::scratch_directory scratch;
    for (const auto& row : support::table_of("qm_file_types.txt")) {
        EXPECT_EQ(type_of(scratch.file("sample", row[1])), row[2]) << row[0];
    }
    EXPECT_EQ(type_of(scratch.path() / "missing"), "unset, unset, -1");
}

TEST(QmFileType, CutsToTheCallersLengths) {
    std::string type(8, '#');
    std::string version(3, '#');
    std::int32_t info = 0;
    flib::qm_file_type(support::data_file("gaussian/water_cis.log"), type, version, info);
    EXPECT_EQ(type, "GAUSSIAN");
    EXPECT_EQ(version, "G16");
}

}  // namespace
