// Readers of amplitudes, basis dimensions and MO coefficients, asked through the tool that shows
// what a routine makes of its results.
#include <gmock/gmock.h>

#include "support/support.h"

namespace {

const std::string cis = "gaussian/water_cis.log";
const std::string freq = "gaussian/water_freq.log";
const std::string fchk = "gaussian/water.fchk";
const std::string dump = "gaussian/water.cis";

struct edit {
    const char* reader;
    std::string file;
    std::string from;  // every occurrence is replaced; nothing for the file as it is
    std::string to;
    std::string answer;  // the exit status and a part of what is written
    std::vector<std::string> sizes{};
    std::string input = "";
};

const edit edits[] = {
    {"nci", cis, "", "", "0: ni = 4\nna = 7\nnci = 2\nnae = 5\nnfc = 1\nnfv = 1\ninfo = 2\n"},
    {"nci", cis, "roots to seek", "roots", "1: Can not find keyword roots to seek stop!\n"},
    {"nci", cis, "NFC=     1", "NFC=     l", "2: qm_file: edited: line 94: 'l' stands where an in"},
    {"nci", freq, "", "", "1: Can not find keyword NAE= stop!\n"},
    {"nci", fchk, "", "", "1:   The method has not been implemented, stop!\n"},

    // The energies come first; the rest keeps the order of the file.
    {"xpy", dump, "", "", "0: xpy 1 1 1 1 = 1 ", {"2", "4", "3"}},
    {"xpy", dump, "", "", "\nxpy 4 2 2 3 = 48 4048000000000000\ninfo = 1\n", {"2", "4", "3"}},
    {"xpy", dump, "", "", "2: qm_file: edited: line 19: the file ends where", {"2", "4", "4"}},
    {"xpy", dump, "D+01", "X+01", "'1.000000000000X+01' stands where a real", {"2", "4", "3"}},
    {"xpy", dump, "Dump of", "gone", "the file ends without a line with 'Dump", {"2", "4", "3"}},
    {"xpy", cis, "", "", "1:   The method has not been implemented, stop!\n", {"2", "4", "3"}},

    {"nbasis", fchk, "", "", "0: na = 5\nnb = 4\nnbasis = 4\nnbsuse = 3\ninfo = -1\n"},
    {"nbasis", fchk, "Charge ", "Alpha MO coefficients R N= 16\n", "\nnbasis = 4\nnbsuse = 4\n"},
    {"nbasis", fchk, "independent", "used", "\nnbasis = 4\nnbsuse = 4\n"},
    {"nbasis", fchk, "Alpha MO", "MO", "\nnbasis = 4\nnbsuse = 3\n"},
    // A missing line hides those that follow.
    {"nbasis", fchk, "beta electrons", "electrons", "0: na = 5\nnb = 0\nnbasis = 0\nnbsuse = 0\n"},
    {"nbasis", dump, "", "", "0: na = 0\nnb = 0\nnbasis = 0\nnbsuse = 0\n"},
    {"nbasis", freq, "", "", "1: Can not find keyword RedAO= stop!\n"},
    // Of a log, the number of independent functions is the second item of standard input, which is
    // read before the line above the first "RedAO=" is missed.
    {"nbasis", cis, "", "", "nb = 4\nnbasis = 12\nnbsuse = 11\n", {}, "\nNBsUse= 11 more\nx 2\n"},
    {"nbasis", cis, "", "", "2: qm_file: standard input: line 1: 'x' stands", {}, "NBsUse= x\n"},
    {"nbasis", cis, " NBasis=    13 RedAO=", "", "1: Can not find keyword NAE=", {}, "NBsUse= 1\n"},
    {"nbasis", cis, " NBasis=    13 RedAO=", "", "2: qm_file: standard input: line 1: the"},

    {"mo", fchk, "", "", "0: mo 1 1 = -0.5 bfe0000000000000\nmo 2 1 = -0.4", {"4", "3"}},
    {"mo", fchk, "", "", "\nmo 3 4 = 0.59999999999999998 3fe3333333333333\ninfo", {"4", "3"}},
    {"mo", fchk, "", "", "0:   Error!\n  nbasis =                   0\n  Stop!\n", {"0", "0"}},
    {"mo", fchk, "", "", "'Total' stands where a real number was expected (value 13", {"4", "4"}},
    {"mo", fchk, "", "", "too short to hold 10000 values", {"100", "100"}},
    {"mo", fchk, "Alpha MO", "MO", "the file ends without a line with 'Alpha", {"4", "3"}},
    {"mo", cis, "", "", "1:   The method has not been implemented, stop!\n", {"4", "3"}},
};

TEST(ExcitedStateReaders, AnswerAsTheRowsSay) {
    const support::scratch_directory scratch;
    for (const edit& e : edits) {
        std::string text = support::contents_of(support::data_file(e.file));
        if (!e.from.empty()) text = support::replaced(text, e.from, e.to);
        scratch.file("edited", text);
        std::vector<std::string> arguments{"probe", e.reader, "edited"};
        arguments.insert(arguments.end(), e.sizes.begin(), e.sizes.end());
        const auto ended = support::run({"qm_file", arguments, scratch.path(), e.input});
        EXPECT_THAT(std::to_string(ended.status) + ": " + ended.output + ended.errors,
                    testing::HasSubstr(e.answer))
            << e.reader << " of " << e.file << " with '" << e.to << "' for '" << e.from << "'";
    }
}

}  // namespace
