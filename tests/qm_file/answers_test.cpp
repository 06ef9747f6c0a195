// What the readers make of files in which something is edited or missing, and the rules of single
// programs that the listing of all files does not reach.
#include <gtest/gtest.h>

#include "qm_file/ask.h"

namespace {

TEST(Readers, AnswerAsTheRowsSay) {
    const support::scratch_directory scratch;
    for (const auto& row : support::table_of("qm_file_answers.txt")) {
        const std::string whole = support::contents_of(support::data_file(row[2]));
        const std::string text = support::edited(whole, row[3], row[4]);
        EXPECT_EQ(ask(row[0], scratch.file("edited", text), std::stoi(row[1])), row[5])
            << row[0] << " of " << row[2] << " with '" << row[4] << "' for '" << row[3] << "'";
    }
}

TEST(QmFileType, GoesByTheBanners) {
    const support::scratch_directory scratch;
    for (const auto& row : support::table_of("qm_file_types.txt")) {
        EXPECT_EQ(ask("type", scratch.file("sample", row[1])), row[2]) << row[0];
    }
}

TEST(QmFileType, CutsToTheCallersLengths) {
    std::string type(8, '#');
    std::string version(3, '#');
    std::int32_t info = 0;
    flib::qm_file_type(support::data_file("gaussian/water_cis.log"), type, version, info);
    EXPECT_EQ(type + version, "GAUSSIANG16");
}

TEST(Layers, PositionsLieWithinTheSystem) {
    for (const std::int32_t atom : {0, 1, 3, 4}) {
        const auto end = support::ending_of([&] { flib::require_in_system("f ", atom, 3); });
        EXPECT_EQ(end ? end->text : "within 3", atom % 4 == 0
                                                    ? "f: the index of the high layer names atom " +
                                                          std::to_string(atom) + " of 3"
                                                    : "within 3");
    }
}

}  // namespace
