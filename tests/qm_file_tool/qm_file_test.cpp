// qm_file as its users run it.
#include <gtest/gtest.h>

#include "support/support.h"

namespace {

/// The fixtures, and files made of them.
class QmFile : public testing::Test {
  protected:
    QmFile() {
        const std::string log = support::contents_of(support::data_file("gaussian/water_cis.log"));
        for (const char* name : {"gaussian", "h2o_ref.sgn", "orca"}) {
            std::filesystem::create_symlink(support::data_file(name), scratch_.path() / name);
        }
        scratch_.file("notes", "Hello\n");
        scratch_.file("natom", "");
        scratch_.file(
            "a\x01"
            "b",
            "");
        scratch_.file("cis.log", log);
        scratch_.file("cut.log", log.substr(0, log.find(" NBasis=")));
        scratch_.file("onestep.log", log.substr(0, log.find(" NBasis=    12 NAE=")));
        scratch_.file("damaged.log", support::replaced(log, "NAtoms=", "NAtoms=   x"));
        scratch_.file("noforce.log", support::replaced(log, "Forces (Hartrees/Bohr)", "Forces"));
    }

    support::scratch_directory scratch_{};
};

TEST_F(QmFile, WritesAsTheRowsSay) {
    const bool terminals = support::has_terminals();
    for (const auto& row : support::table_of("qm_file_runs.txt")) {
        support::command line{"qm_file", support::words_of(row[0]), scratch_.path(), row[1]};
        if (row[0].starts_with("TERMINAL ")) {
            if (!terminals) continue;
            line.arguments.erase(line.arguments.begin());
            line.terminal = "dumb";
        }
        EXPECT_EQ(support::written_by(line), row[2]) << row[0];
    }
}

}  // namespace
