// qm_file as its users run it.
#include <gtest/gtest.h>

#include "support/session.h"
#include "support/support.h"

namespace {

TEST(QmFile, SaysWhatStandsBelowEachCommand) {
    const support::scratch_directory scratch;
    for (const char* name : {"gaussian", "h2o_ref.sgn", "orca"}) {
        std::filesystem::create_symlink(support::data_file(name), scratch.path() / name);
    }
    const bool terminals = support::has_terminals();
    for (const auto& [command, said] : support::session_of("qm_file_runs.txt")) {
        if (!terminals && command.find("TERMINAL ") != std::string::npos) continue;
        EXPECT_EQ(support::said_by(command, scratch.path()), said) << "$ " << command;
    }
}

}  // namespace
