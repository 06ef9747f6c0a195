// What a call may write, and what it must leave alone.
#include "common/outputs.h"

#include <gtest/gtest.h>

#include <map>

#include "support/session.h"

namespace {

namespace fs = std::filesystem;
using sgn::output_kind;
using tools::planned_output;
using strings = std::vector<std::string>;

/// Every tool's outputs are known by their first bytes, and what others write is not.
TEST(OutputKinds, AreKnownByTheirBeginning) {
    const auto kind_of = [](const std::string& fixture) {
        return sgn::kind_that_begins(
            support::contents_of(support::data_file(fixture)).substr(0, 256));
    };
    for (const auto& [fixture, kind] : {std::pair{"sgn_check.json", output_kind::json},
                                        {"sgn_derive/water.json", output_kind::json},
                                        {"page/diatomic.html", output_kind::page},
                                        {"sgn_derive/water.fchk", output_kind::checkpoint},
                                        {"sgn_derive/whole.fchk", output_kind::checkpoint},
                                        {"sgn_derive/water.molden", output_kind::modes},
                                        {"h2o_ref.sgn", output_kind::result_file}}) {
        EXPECT_EQ(kind_of(fixture), kind) << fixture;
    }
    for (const char* fixture : {"sgn_check.csv", "sgn_derive/water.txt", "gaussian/water.fchk",
                                "sgn_displace/h2o.gjf", "sgn_check_runs.txt"}) {
        EXPECT_EQ(kind_of(fixture), std::nullopt) << fixture;
    }
    for (const char* text :
         {"", "{", "{\n  \"reference\": \"h2o\"", "[\n  {\n    \"file\": \"x\"",
          "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
          "<title>",
          "[Molden Format]\n[Title]\n\n[Atoms] AU\n", "INFORMATION\n"}) {
        EXPECT_EQ(sgn::kind_that_begins(text), std::nullopt) << text;
    }
}

class Places : public testing::Test {
  protected:
    Places() {
        fs::create_directory(path("there"));
        fs::create_directory_symlink("there", path("way"));
        write("input", "mine");
        write("notes", "mine");
        write("empty", "");
        write("old.json", "{\n  \"written_by\": \"sgn_check\"");
        write("all.json", "[\n  {\n    \"written_by\": \"qm_file\"");
        write("old.result", "INFORMATION\n Transden_sign");
        fs::create_hard_link(path("input"), path("there/hard"));
        fs::create_symlink("hard", path("there/link"));
        fs::create_symlink("there/none", path("to-none"));
        fs::create_symlink("loop", path("loop"));
    }
    std::string path(const std::string& name) const { return scratch_.path() / name; }
    void write(const std::string& name, const std::string& text) const {
        support::write_file(path(name), text);
    }
    /// What is said against outputs of a kind, without the directory; what with --force, if that is
    /// something else.
    std::string said(output_kind kind, const strings& outputs) const {
        std::vector<planned_output> planned;
        for (const std::string& each : outputs) {
            planned.push_back({"--" + std::string(1, static_cast<char>('a' + planned.size())),
                               each == "-" ? each : path(each), kind});
        }
        const strings inputs{path("input"), path("absent")};
        const auto answer = [&](bool overwrite) {
            const std::string told = support::answer_of("", [&] {
                tools::require_harmless(planned, inputs, overwrite);
                return "fine";
            });
            return support::replaced(told + path(""), path(""), "") + "\n";
        };
        const std::string with_force = answer(true);
        return answer(false) + (with_force == answer(false) ? "" : "--force: " + with_force);
    }

    support::scratch_directory scratch_;
};

TEST_F(Places, AreRefusedByWhateverName) {
    const std::map<std::string, output_kind> kinds{{"JSON", output_kind::json},
                                                   {"page", output_kind::page},
                                                   {"result", output_kind::result_file}};
    for (const auto& [step, expected] : support::session_of("outputs.txt")) {
        const auto row = support::fields_of(step, 2);
        EXPECT_EQ(said(kinds.at(row[0]), support::words_of(row[1])), expected) << "$ " << step;
    }
}

}  // namespace
