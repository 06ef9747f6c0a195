// What a call may write, and what it must leave alone.
#include "common/outputs.h"

#include <gtest/gtest.h>

#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using tools::output_kind;
using tools::planned_output;
using strings = std::vector<std::string>;

/// Every tool's outputs are known by their first bytes, and what others write is not.
TEST(OutputKinds, AreKnownByTheirBeginning) {
    const auto kind_of = [](const std::string& fixture) {
        return tools::kind_that_begins(
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
        EXPECT_EQ(tools::kind_that_begins(text), std::nullopt) << text;
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
    /// What is said against an output, or two, of JSON, without the directory.
    std::string said(const strings& outputs, bool overwrite = false,
                     output_kind kind = output_kind::json) const {
        std::vector<planned_output> planned;
        for (const std::string& each : outputs) {
            planned.push_back({"--" + std::string(1, static_cast<char>('a' + planned.size())),
                               each == "-" ? each : path(each), kind});
        }
        const strings inputs{path("input"), path("absent")};
        const auto ending =
            support::ending_of([&] { tools::require_harmless(planned, inputs, overwrite); });
        if (!ending) return {};
        EXPECT_EQ(ending->status, 2);
        std::string text = ending->text;
        for (std::size_t at; (at = text.find(path(""))) != std::string::npos;) {
            text.erase(at, path("").size());
        }
        return text.substr(0, text.find(';')) +
               (text.ends_with("--force overwrites it") ? " (force)" : "");
    }

    support::scratch_directory scratch_;
};

TEST_F(Places, OfInputsAreRefusedByWhateverName) {
    for (const bool overwrite : {false, true}) {
        for (const std::string name :
             {"input", "./input", "there/../input", "there/hard", "way/link"}) {
            EXPECT_EQ(said({name}, overwrite),
                      "--a (" + name + ") would write over input, which this call reads");
        }
        // An input that is not there is not made, either.
        EXPECT_EQ(said({"way/../absent"}, overwrite),
                  "--a (way/../absent) would write over absent, which this call reads");
    }
}

TEST_F(Places, OfOtherOutputsAreRefused) {
    for (const auto& [one, other] : {std::pair{"new", "./new"},
                                     {"there/none", "to-none"},
                                     {"way/new", "there/x/../new"},
                                     {"old.json", "way/../old.json"}}) {
        EXPECT_EQ(said({one, other}, true),
                  std::string("--a (") + one + ") and --b (" + other + ") are the same file");
    }
    EXPECT_EQ(said({"-", "-"}), "--a and --b both write to standard output");
    EXPECT_EQ(said({"-", "new", "there/new", "none/new", "loop"}), "");
}

TEST_F(Places, OfFilesThatAreNotOursNeedForce) {
    const std::string not_json = ", which is not JSON of these tools (force)";
    EXPECT_EQ(said({"notes"}), "--a would write over notes" + not_json);
    EXPECT_EQ(said({"notes"}, true), "");
    for (const char* ours : {"empty", "old.json", "all.json", "there", "none"}) {
        EXPECT_EQ(said({ours}), "") << ours;
    }
    // Another kind of ours is missed all the same, and a result file always.
    EXPECT_EQ(said({"old.json"}, false, output_kind::page),
              "--a would write over old.json, which is not a page of these tools (force)");
    for (const bool overwrite : {false, true}) {
        for (const std::string name : {"old.result", "new.sgn"}) {
            EXPECT_EQ(said({name}, overwrite), "--a would write over the result file " + name);
        }
    }
    EXPECT_EQ(said({"old.result", "new.sgn"}, false, output_kind::result_file), "");
    EXPECT_EQ(said({"old.json"}, false, output_kind::result_file),
              "--a would write over old.json, which is not a result file of these tools (force)");
}

}  // namespace
