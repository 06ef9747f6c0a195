// Every reader asked about every program's file, and about the file with each of its lines taken
// out, moved by a blank and printed twice. The listing below tests/data explains itself.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <regex>

#include "qm_file/ask.h"

namespace {

using answers = std::vector<std::string>;

constexpr const char* questions[] = {"type",       "natom",   "nat",    "coord", "mass",
                                     "force_tdip", "ifoniom", "layers", "nci",   "nbasis",
                                     "mo",         "xpy",     "energy"};

answers answers_of(const std::string& file, std::int32_t atoms = 3) {
    answers all;
    for (const char* const who : questions) all.push_back(ask(who, file, atoms));
    return all;
}

/// How answers differ: . not at all, the exit status of one that ends the run, x in another way.
std::string differences(const answers& before, const answers& after) {
    std::string all;
    for (std::size_t i = 0; i < before.size(); ++i) {
        all += after[i] == before[i] ? '.' : after[i].starts_with("exit ") ? after[i][5] : 'x';
    }
    return all;
}

/// The same file with other digits and other elements.
std::string of_another_molecule(std::string text) {
    for (char& c : text) {
        if (c >= '0' && c <= '9') c = c == '9' ? '1' : static_cast<char>(c + 1);
    }
    for (const char* const oxygen : {" O ", " o ", "\nO "}) {
        for (std::size_t at; (at = text.find(oxygen)) != std::string::npos;) text[at + 1] = 'P';
    }
    return text;
}

class Files : public testing::Test {
  protected:
    // The basis of a log is asked for on standard input, which has nothing to say.
    Files() { EXPECT_NE(std::freopen("/dev/null", "r", stdin), nullptr); }

    answers answers_about(const std::string& text, std::int32_t atoms = 3) const {
        return answers_of(scratch_.file("f", text), atoms);
    }

    /// The least part of a file by which its program is told.
    std::string banner_of(const std::string& text) const {
        const auto tag = [&](std::size_t size) {
            const std::string type = ask("type", scratch_.file("f", text.substr(0, size)));
            const std::size_t from = type.find(": ");
            return type.substr(from, type.find(" [") - from);
        };
        std::size_t size = text.find('\n') + 1;
        while (tag(size) != tag(text.size())) size = text.find('\n', size) + 1;
        return text.substr(0, size);
    }

    std::string listing_of(const std::string& name) const {
        const std::string text = support::contents_of(support::data_file(name));
        const answers before = answers_about(text);
        const std::string other = of_another_molecule(text);
        std::string listing;
        for (std::size_t i = 0; i < before.size(); ++i) {
            if (before[i] != unknown_[i]) listing += questions[i] + (" " + before[i]) + '\n';
        }
        listing +=
            differences(unknown_, answers_about(banner_of(text))) +
            " nothing but its banner, beside a file that is not known\n" +
            differences(answers_about("?\n", 1000), answers_about(text, 1000)) +
            " asked for 1000 atoms, beside a file that is not known\n" +
            differences(before, answers_about(text + other)) + " another molecule behind it\n" +
            differences(before, answers_about(other + text)) + " another molecule before it\n";
        for (std::size_t at = 0, end = 0; at < text.size(); at = end) {
            end = std::min(text.find('\n', at), text.size() - 1) + 1;
            const std::string line = text.substr(at, end - at);
            std::string row;
            for (const std::string& instead : {std::string(), " " + line, line + line}) {
                row += differences(before,
                                   answers_about(text.substr(0, at) + instead + text.substr(end)));
                row += ' ';
            }
            if (row.find_first_not_of(". ") != std::string::npos) listing += row + line;
        }
        return listing;
    }

    const support::scratch_directory scratch_;
    const answers unknown_ = answers_about("nothing that is known\n");
};

TEST_F(Files, AreTakenLineByLineForWhatTheyAre) {
    // A section for each file; one without rows is filled in from the message of the failure.
    const std::string expected = support::contents_of(support::data_file("qm_file_files.txt"));
    std::istringstream lines(expected);
    std::map<std::string, std::string> sections;
    std::string name;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("== ")) {
            name = line.substr(3);
            sections[name];
        } else if (!name.empty()) {
            sections[name] += line + '\n';
        }
    }
    for (const auto& [file, rows] : sections) EXPECT_EQ(listing_of(file), rows) << file;

    // Adding a program means a tag, and a file for it here. Molpro's is not recognised: the test
    // for its banner cannot succeed.
    const std::string header =
        support::contents_of(support::data_file("../../lib/src/flib/qm_file/type_tag.h"));
    const std::regex declaration("std::string_view \\w+ = \"([^\"]+)\"");
    for (std::sregex_iterator at(header.begin(), header.end(), declaration), end; at != end; ++at) {
        const std::string tag = (*at)[1];
        const std::string shows = tag == "MOLPRO" ? "== molpro/" : ": " + tag + " [";
        EXPECT_NE(expected.find(shows), std::string::npos) << tag;
    }
}

TEST_F(Files, NeedNotBeOfAProgram) {
    const auto told = [&](const std::string& file) {
        return differences(unknown_, answers_of(file));
    };
    EXPECT_EQ(told(scratch_.path() / "missing"), ".2222.2222222");
    EXPECT_EQ(told(scratch_.path()), ".2222.2222222");
    EXPECT_EQ(told(scratch_.file("empty", "")), "2222222222222");
    EXPECT_EQ(told(scratch_.file("binary", {"\0\xff\r\x80\0\n\n\x01", 8})), ".............");
}

}  // namespace
