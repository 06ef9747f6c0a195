// qm_file as its users run it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "support/support.h"

namespace {

using support::outcome;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

const std::string water = EXAMPLES "/water/h2o_01xp";

outcome run(std::vector<std::string> arguments, std::string input = "") {
    return support::run({"qm_file", std::move(arguments), "/", std::move(input)});
}

/// All numbers of a text, whatever stands between them.
std::vector<double> numbers_in(const std::string& text) {
    std::vector<double> numbers;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        char* end = nullptr;
        const double number = std::strtod(word.c_str(), &end);
        if (end != word.c_str() && *end == '\0') numbers.push_back(number);
    }
    return numbers;
}

/// Evaluates a python expression of the parsed text `data` and of what python can do.
std::string in_python(const std::string& json, const std::string& expression) {
    const support::scratch_directory scratch;
    const std::string file = scratch.file("text.json", json);
    const std::string command = "import json,struct; data = json.load(open('" + file +
                                "')); print(" + expression + ", end='')";
    return support::run({"/usr/bin/python3", {"-c", command}, "/"}).output;
}

TEST(QmFile, TellsAPersonWhatAFileHolds) {
    const outcome shown = run({water + ".log"});
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.errors, "");
    for (const char* text : {"GAUSSIAN LOG, version G16RevA.03 (class 2)", "3: H2O", "4 roots",
                             "state   1   -0.5353   -0.0000    0.0091",
                             "1  O     0.010000    0.000000    0.118000   15.994915"}) {
        EXPECT_THAT(shown.output, HasSubstr(text));
    }
    EXPECT_THAT(shown.output, testing::Not(HasSubstr("note:")));
}

TEST(QmFile, SaysThatThereAreTwoFrames) {
    std::string log = support::contents_of(water + ".log");
    const std::string row = "0.900000    0.360000";  // of the input orientation
    log.replace(log.find(row), row.size(), "0.901000    0.360000");
    const support::scratch_directory scratch;
    const outcome shown = run({scratch.file("turned.log", log)});
    EXPECT_THAT(shown.output, HasSubstr("differ by more than a shift"));
}

TEST(QmFile, GoesOnAfterAFileThatItCanNotRead) {
    const support::scratch_directory scratch;
    const std::string unknown = scratch.file("notes", "Hello\n");
    const std::string empty = scratch.file("empty", "");
    const std::string missing = scratch.path() / "missing";
    const outcome shown = run({missing, empty, unknown, water + ".fchk"});
    EXPECT_EQ(shown.status, 2);
    EXPECT_THAT(shown.errors, AllOf(HasSubstr("qm_file: " + missing + ": can not be opened"),
                                    HasSubstr("qm_file: " + empty + ": ")));
    EXPECT_THAT(shown.output, AllOf(HasSubstr("not recognised"), HasSubstr("22 functions")));
    EXPECT_EQ(run({unknown}).status, 0);
}

TEST(QmFile, EndsAsTheReaderDoesWhenAskedForOneQuantity) {
    const support::scratch_directory scratch;
    const std::string log = support::contents_of(water + ".log");
    const std::string cut = scratch.file("cut.log", log.substr(0, log.find(" NBasis=")));
    const outcome missing = run({"nci", cut});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.output, "Can not find keyword NAE= stop!\n");
    EXPECT_EQ(run({"nci", water + ".fchk"}).output,
              "  The method has not been implemented, stop!\n");
    EXPECT_EQ(run({"natom", water + ".fchk", cut}).output, "3\n3\n");
    // Of a log the number of independent functions comes from standard input.
    const std::string steps = scratch.file("steps.log", log + " NBasis=    22 RedAO= T\n");
    EXPECT_THAT(run({"nbasis", steps}, "NBsUse= 21\n").output, StartsWith("22 functions, 21 of"));
}

TEST(QmFile, AgreesWithItselfInAllForms) {
    const std::string log = water + ".log";
    const std::vector<double> bohr = numbers_in(run({"coord", log}).output);
    const std::vector<double> angstrom = numbers_in(run({"--xyz", log}).output);
    ASSERT_EQ(bohr.size(), 12U);      // a number before each row
    ASSERT_EQ(angstrom.size(), 10U);  // the number of atoms first
    const std::string json = run({"--json", log}).output;
    if (std::filesystem::exists("/usr/bin/python3")) {
        EXPECT_EQ(in_python(json, "data[0]['natom'], data[0]['atomic_numbers']"), "3 [8, 1, 1]");
        EXPECT_EQ(in_python(json, "data[0]['transition_dipoles_au'][0]"),
                  "[-0.5353, -0.0, 0.0091]");
        EXPECT_EQ(in_python(json, "data[0]['missing'], data[0]['oniom']"), "{} None");
    }
    std::istringstream raw(run({"probe", "coord", log, "3"}).output);
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            std::string line;
            std::getline(raw, line);
            double value = 0;
            unsigned long long bits = 0;
            std::size_t row = 0;
            std::size_t column = 0;
            ASSERT_EQ(
                std::sscanf(line.c_str(), "x %zu %zu = %lg %llx", &row, &column, &value, &bits), 4);
            EXPECT_EQ(row, k + 1);
            EXPECT_EQ(column, i + 1);
            EXPECT_EQ(std::bit_cast<unsigned long long>(value), bits);
            EXPECT_NEAR(value, bohr[4 * i + 1 + k], 1e-12);
            EXPECT_NEAR(value * 0.529177249, angstrom[3 * i + 1 + k], 1e-9);
            if (std::filesystem::exists("/usr/bin/python3")) {
                char bit_pattern[24];
                std::snprintf(bit_pattern, sizeof bit_pattern, "%016llx", bits);
                EXPECT_EQ(
                    in_python(json, "struct.pack('>d', data[0]['coordinates_bohr'][" +
                                        std::to_string(i) + "][" + std::to_string(k) + "]).hex()"),
                    bit_pattern);
            }
        }
    }
}

TEST(QmFile, ProbesRoutinesOnPresetOutputs) {
    const support::scratch_directory scratch;
    const std::string unknown = scratch.file("notes", "Hello\n");
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{"type", unknown}, "file_type = \"\"\nversion = \"\"\ninfo = -1\n"},
        {{"nat", unknown, "2"}, "nat 1 = -7\nnat 2 = -7\ninfo = -1\n"},
        {{"mass", unknown, "1"}, "mass 1 = -7 c01c000000000000\ninfo = -1\n"},
        {{"force", unknown, "1", "1"},
         "force 1 1 = 0 0000000000000000\nforce 2 1 = 0 0000000000000000\n"
         "force 3 1 = 0 0000000000000000\ntdip 1 1 = -7 c01c000000000000\n"
         "tdip 2 1 = -7 c01c000000000000\ntdip 3 1 = -7 c01c000000000000\ninfo = -1\n"},
        {{"ifoniom", water + ".log"}, "ifoniom = F\ninfo = 2\n"},
        {{"oniomcount", unknown}, "nqm = 0\nnqmmm = -7\ninfo = -1\n"},
        {{"oniomindex", unknown, "1", "5"}, "nqmmm = 5\nidx 1 = -7\ninfo = -1\n"},
        {{"nci", water + ".log"},
         "ni = 4\nna = 17\nnci = 4\nnae = 5\nnfc = 1\nnfv = 0\ninfo = 2\n"},
        {{"natom", water + ".fchk"}, "natom = 3\ninfo = 0\n"},
        {{"nat", water + ".log", "0"}, "  Error!\n  natom =                   0\n  Stop!\n"},
    };
    for (const auto& [arguments, expected] : cases) {
        std::vector<std::string> all{"probe"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        EXPECT_EQ(run(all).output, expected) << arguments.front();
    }
    const outcome xpy = run({"probe", "xpy", water + ".cis", "4", "17", "4"});
    EXPECT_THAT(xpy.output, HasSubstr("\nxpy 17 4 2 4 = "));
    const outcome mo = run({"probe", "mo", water + ".fchk", "22", "22"});
    EXPECT_THAT(mo.output, StartsWith("mo 1 1 = "));
    EXPECT_EQ(run({"probe", "xpy", water + ".cis", "4", "17", "5"}).status, 2);
}

TEST(QmFile, ExplainsItself) {
    EXPECT_THAT(run({"--help"}).output, HasSubstr("usage: qm_file"));
    EXPECT_THAT(run({"--version"}).output, StartsWith("qm_file "));
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{},
                                                      {"natom"},
                                                      {"--yaml", "x"},
                                                      {"probe", "nothing", "x"},
                                                      {"probe", "nat", "x"},
                                                      {"probe", "nat", "x", "three"},
                                                      {"--xyz", "mass", "x"}}) {
        const outcome refused = run(arguments);
        EXPECT_EQ(refused.status, 2);
        EXPECT_THAT(refused.errors, HasSubstr("see qm_file --help"));
    }
}

}  // namespace
