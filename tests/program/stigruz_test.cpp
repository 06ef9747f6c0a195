// The sign tool as its users run it: files in a directory, arguments, exit status, streams.
#include <gtest/gtest.h>

#include "support/session.h"

namespace {

namespace fs = std::filesystem;
using support::contents_of;
using support::data_file;
using support::outcome;

TEST(Stigruz, SaysAndWritesThis) {
    const support::scratch_directory scratch;
    for (const char* const into : {"water", "oniom", "expected"}) {
        fs::create_directory(scratch.path() / into);
    }
    fs::copy(EXAMPLES "/water", scratch.path() / "water");
    fs::copy(data_file("oniom"), scratch.path() / "oniom");
    for (const char* const result : {"h2o_ref.sgn", "water_results.txt"}) {
        fs::copy(data_file(result), scratch.path() / "expected");
    }
    support::expect_session("program/session.txt", scratch.path());
}

/// Whatever is wrong, the status and the message are as stated, and an earlier result stays what it
/// was.
TEST(Stigruz, EndsAsStatedAndLeavesTheEarlierResult) {
    for (const auto& [step, expected] : support::session_of("program/endings.txt")) {
        const auto row = support::fields_of(step, 5);
        const bool layers = row[1].starts_with("layers");
        const bool mapped = row[1].ends_with("map");
        const support::scratch_directory scratch;
        fs::copy(layers ? data_file("oniom") : EXAMPLES "/water", scratch.path());
        const auto run = [&](const std::vector<std::string>& arguments) {
            return support::run({"stigruz", arguments, scratch.path()});
        };
        const std::string reference = layers ? "h2o_oniom_ref" : "h2o_ref";
        const std::string name = mapped && !layers ? "h2o_01xm" : reference;
        run({reference + ".fchk"});
        fs::copy(scratch.path() / (reference + ".sgn"), scratch.path() / "ref.sgn");
        std::vector<std::string> arguments{name + ".fchk"};
        if (mapped) arguments.emplace_back("ref.sgn");
        EXPECT_EQ(run(arguments).status, 0) << step;
        const fs::path result = scratch.path() / (name + ".sgn");
        const std::string before = contents_of(result);
        const fs::path file = scratch.path() / row[2];
        if (row[3] == "GONE") {
            fs::remove(file);
        } else {
            support::write_file(file, support::edited(contents_of(file), row[3], row[4]));
        }
        const auto names = scratch.names();

        EXPECT_EQ(support::elided(support::said_in(run(arguments)), expected), expected) << step;
        EXPECT_EQ(scratch.names(), names) << step;
        EXPECT_EQ(contents_of(result), before) << step;
    }
}

}  // namespace
