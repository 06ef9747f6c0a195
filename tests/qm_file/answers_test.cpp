// What the readers make of files in which something is edited or missing, and the rules of single
// programs that the listing of all files does not reach.
#include <gtest/gtest.h>

#include "qm_file/ask.h"

namespace {

TEST(Readers, AnswerAsTheRowsSay) {
    const support::scratch_directory scratch;
    for (const auto& row : support::table_of("qm_file_answers.txt")) {
        const std::string& from = row[3];
        std::string text = support::contents_of(support::data_file(row[2]));
        if (!from.empty()) text = support::replaced(text, from, row[4]);
        EXPECT_EQ(ask(row[0], scratch.file("edited", text), std::stoi(row[1])), row[5])
            << row[0] << " of " << row[2] << " with '" << row[4] << "' for '" << from << "'";
    }
}

// Before anything is read.
TEST(Readers, TellWhenAnArrayIsTooShort) {
    const struct {
        const char* who;
        std::size_t missing;
        const char* told;
    } rows[] = {
        {"nat", 1, "3 atomic numbers were asked for, but there is room for 2"},
        {"mass", 1, "3 masses were asked for, but there is room for 2"},
        {"coord", 3, "9 coordinates were asked for, but there is room for 6"},
        {"force_tdip", 3, "9 forces were asked for, but there is room for 6"},
        {"layers", 1, "3 positions of high-layer atoms were asked for, but there is room for 2"},
        {"mo", 3, "12 MO coefficients were asked for, but there is room for 9"},
        {"xpy", 1, "48 amplitudes were asked for, but there is room for 47"},
        {"energy", 1, "3 excitation energies were asked for, but there is room for 2"},
    };
    const std::string log = support::data_file("gaussian/oniom.log");
    for (const auto& [who, missing, told] : rows) {
        EXPECT_EQ(ask(who, log, 3, missing), std::string("exit 2: ") + told);
    }
    double x[9];
    std::int32_t info = 0;
    const auto dipoles = support::ending_of([&] {
        flib::qm_file_force_tdip("no file", 3, 4, {x, 3, 3}, {x, 3, 3}, info);
    });
    EXPECT_EQ(dipoles->text,
              "no file: 12 transition dipoles were asked for, but there is room for 9");
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
