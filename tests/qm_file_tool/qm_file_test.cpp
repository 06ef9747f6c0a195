// qm_file as its users run it.
#include <fnmatch.h>
#include <gtest/gtest.h>

#include <bit>
#include <cstdlib>
#include <iterator>
#include <sstream>

#include "support/support.h"

namespace {

namespace fs = std::filesystem;

/// "STATUS: OUTPUT", and "errors: ERRORS" if there are any.
std::string run(const fs::path& directory, const std::string& arguments, std::string input = "") {
    std::istringstream words(arguments);
    const std::vector<std::string> list{std::istream_iterator<std::string>(words), {}};
    const auto ended = support::run({"qm_file", list, directory, std::move(input)});
    const std::string errors = ended.errors.empty() ? "" : "errors: " + ended.errors;
    return std::to_string(ended.status) + ": " + ended.output + errors;
}

TEST(QmFile, WritesAsTheRowsSay) {
    const support::scratch_directory scratch;
    const std::string log = support::contents_of(EXAMPLES "/water/h2o_01xp.log");
    fs::create_directory_symlink(EXAMPLES "/water", scratch.path() / "water");
    scratch.file("notes", "Hello\n");
    scratch.file("empty", "");
    scratch.file("cut.log", log.substr(0, log.find(" NBasis=")));
    scratch.file("steps.log", log + " NBasis=    22 RedAO= T\n");
    scratch.file("damaged.log", support::replaced(log, "NAtoms=      3", "NAtoms=      x"));
    scratch.file("noforce.log", support::replaced(log, "Forces (Hartrees/Bohr)", "Forces"));
    scratch.file("ref.sgn", support::contents_of(support::data_file("h2o_ref.sgn")));
    std::string turned = log;
    const std::string hydrogen = "0.900000    0.360000";  // of the input orientation
    scratch.file("turned.log", turned.replace(log.find(hydrogen), 8, "0.901000"));
    for (const auto& row : support::table_of("qm_file_runs.txt")) {
        const std::string written = run(scratch.path(), row[0], row[1]);
        EXPECT_EQ(fnmatch(row[2].c_str(), written.c_str(), 0), 0) << row[0] << '\n' << written;
    }
}

// Whoever reads the first lines only has got what he wants.
TEST(QmFile, EndsSilentlyWhenItsReaderHasLeft) {
    const std::string tool = TOOL_DIRECTORY "/qm_file";
    const auto ended = support::run(
        {"/bin/bash",
         {"-c", "{ " + tool + " h2o_*.log h2o_*.log h2o_*.log; echo $? >&2; } | head -n 1"},
         EXAMPLES "/water"});
    EXPECT_EQ(ended.output, "h2o_01xm.log\n");
    EXPECT_EQ(ended.errors, "0\n");
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

TEST(QmFile, AgreesWithItselfInAllForms) {
    const fs::path water = EXAMPLES "/water";
    const std::vector<double> bohr = numbers_in(run(water, "coord h2o_01xp.log"));
    const std::vector<double> angstrom = numbers_in(run(water, "--xyz h2o_01xp.log"));
    ASSERT_EQ(bohr.size(), 12U);      // a number before each row
    ASSERT_EQ(angstrom.size(), 10U);  // the number of atoms first
    std::istringstream probed(run(water, "probe coord h2o_01xp.log 3").substr(3));
    std::string all_bits;
    for (std::size_t i = 0; i < 9; ++i) {
        std::string x, equals, bits;
        std::size_t row = 0;
        std::size_t column = 0;
        double value = 0;
        ASSERT_TRUE(probed >> x >> row >> column >> equals >> value >> bits);
        EXPECT_EQ(x + equals, "x=");
        EXPECT_EQ(row, i % 3 + 1);
        EXPECT_EQ(column, i / 3 + 1);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(value), std::stoull(bits, nullptr, 16));
        EXPECT_NEAR(value, bohr[i + i / 3 + 1], 1e-12);
        EXPECT_NEAR(value * 0.529177249, angstrom[i + 1], 1e-9);
        all_bits += ' ' + bits;
    }
    const std::string python = "/usr/bin/python3";
    if (!fs::exists(python)) GTEST_SKIP() << "no " << python << " to read JSON";
    const std::string program =
        "import json, struct, sys\n"
        "[file] = json.loads(sys.stdin.read())\n"
        "print(file['natom'], file['atomic_numbers'], file['transition_dipoles_au'][0],\n"
        "      sorted(file['missing']), file['oniom'],\n"
        "      *(struct.pack('>d', x).hex() for xyz in file['coordinates_bohr'] for x in xyz))\n";
    const std::string json = run(water, "--json h2o_01xp.log").substr(3);
    EXPECT_EQ(
        support::run({python, {"-c", program}, "/", json}).output,
        "3 [8, 1, 1] [-0.5353, -0.0, 0.0091] ['dump', 'nbasis', 'oniom'] None" + all_bits + "\n");
}

}  // namespace
