// What each reader does with a file that lacks what it looks for.
#include <gmock/gmock.h>

#include <ostream>

#include "qm_file/ask.h"

namespace {

using support::ending;
using testing::HasSubstr;
using enum reader;

constexpr int quiet = -1;
constexpr const char* orientation =
    "Can not find keyword Center     Atomic      Atomic             Coordinates (Angstroms) stop!";
constexpr const char* forces =
    "Can not find keyword Center     Atomic                   Forces (Hartrees/Bohr) stop!";
constexpr const char* dipoles =
    "Can not find keyword Ground to excited state transition electric dipole moments (Au): stop!";
const std::string out_of_range = "Error!\n";
const std::string to_118 = " is out of [1,118]";

struct damage {
    reader who;
    const char* file;
    const char* from;  // every occurrence is replaced
    const char* to;
    int status;        // quiet: returns
    std::string text;  // all of the message of a stop, part of that of an I/O error
};

std::ostream& operator<<(std::ostream& out, const damage& d) {
    return out << d.file << " without '" << d.from << "'";
}

std::string no_coordinates(const char* program) {
    return std::string("  Error!\n  Can not find coordinate in ") + program + " output file, stop!";
}

const damage damages[] = {
    {natom, "gaussian/water_cis.log", " NAtoms=", "NAtoms=", quiet, ""},
    {natom, "gaussian/water.fchk", "Number of atoms", "Atoms", quiet, ""},
    {natom, "chemshell/water.out", "     ", " x   ", quiet, ""},
    {natom, "nwchem/water.out", "No.", "gone", 2, "'No.'"},
    {natom, "qchem/water.out", "--", "++", 2, "the file ends"},
    {natom, "vasp/OUTCAR", "     3\n", "     3x\n", 2, "'3x' stands where an integer"},
    {natom, "turbomole/control", "   natoms=3", "natoms=3   ", 2, "an integer"},
    {nat, "gaussian/water_no_table.log", "Mulliken", "gone", 2, "Mulliken charges"},
    {nat, "gaussian/water_freq.log", "      1          8", "      1         8x", 2, "'8x' stands"},
    {nat, "gaussian/water.fchk", "  8           1", "8.0           1", 2, "value 1 of 3"},
    {nat, "nwchem/water.out", "No.", "gone", 2, "'No.'"},
    {nat, "evc/water.evc", "   Coordinate", "  Coordinate", 2, "'Coordinate'"},
    {nat, "evc/water.evc", "    1    8", "    1   -1", 0, out_of_range + "nat(1) = -1" + to_118},
    {nat, "numforce/water.out", "    3    1", "    3  119", 0,
     out_of_range + "nat(3) = 119" + to_118},
    {nat, "numforce/water.out", " Coordinate", "Coordinate", 2, "'Coordinate'"},
    // The range is checked although nothing was read.
    {nat, "chemshell/water.out", "Input", "gone", 0, out_of_range + "nat(1) = -77" + to_118},
    {coord, "gaussian/water_no_table.log", "@", "@", 1, orientation},
    {coord, "gaussian/water_freq.log", "0.118000", "0.118O00", 2, "'0.118O00' stands"},
    {coord, "chemshell/water.out", "       Input", "      Input", 0, no_coordinates("ChemShell")},
    {coord, "turbomole/ridft.out", "atomic coord", "gone", 0, no_coordinates("TURBOMOLE")},
    {mass, "gaussian/water_freq.log", " Atom ", " ", quiet, ""},
    {mass, "gaussian/water_freq.log", "17.99916", "17.999l6", 2, "'17.999l6'"},
    {mass, "nwchem/water.out", "No.", "gone", quiet, ""},
    {mass, "qchem/water.out", "Has Mass", "Mass", 2, "the line ends"},
    {force_tdip, "gaussian/water_cis.log", "Forces (H", " Forces (H", 1, forces},
    {force_tdip, "gaussian/water_cis.log", "electric dipole", "gone", 1, dipoles},
    {force_tdip, "gaussian/water_cis.log", "0.012345678", "0.01234567B", 2, "67B' stands"},
};

class Damaged : public testing::TestWithParam<damage> {};

TEST_P(Damaged, EndsAsItsRowSays) {
    const damage& d = GetParam();
    const support::scratch_directory scratch;
    const std::string whole = support::contents_of(support::data_file(d.file));
    const answer a = ask(d.who, scratch.file("damaged", replaced(whole, d.from, d.to)));
    if (d.status == quiet) {
        EXPECT_EQ(a.end, std::nullopt);
        EXPECT_EQ(a.info, -1);
        if (d.who == natom) {
            EXPECT_THAT(a.values, testing::ElementsAre(0));
        }
        if (d.who != natom) {
            EXPECT_TRUE(a.unchanged());
        }
    } else if (d.status == 2) {
        ASSERT_TRUE(a.end && !a.end->stopped);
        EXPECT_THAT(a.end->text, testing::AllOf(HasSubstr(d.text), HasSubstr("/damaged: line ")));
    } else {
        EXPECT_EQ(a.end, (ending{d.status, d.text, true}));
    }
}

INSTANTIATE_TEST_SUITE_P(Every, Damaged, testing::ValuesIn(damages));

// Files that say nothing about their program: what each reader makes of them.
TEST(UnknownFile, EndsTheRunOrLeavesEverything) {
    const support::scratch_directory scratch;
    const std::string missing = scratch.path() / "missing";
    const std::string empty = scratch.file("empty", "");
    const std::string unknown = scratch.file("unknown", "nothing that is known\n");
    const std::string binary = scratch.file("binary", std::string("\0\xff\r\x80\0\n\n\x01", 8));
    for (const reader who : {natom, reader::nat, reader::coord, reader::mass, reader::force_tdip}) {
        for (const std::string& file : {missing, scratch.path().string()}) {
            const answer a = ask(who, file);
            EXPECT_EQ(a.end.has_value(), who != force_tdip);
            if (a.end) {
                EXPECT_EQ(a.end->status, 2);
            }
            EXPECT_EQ(a.info, -1);
        }
        const answer of_empty = ask(who, empty);
        ASSERT_TRUE(of_empty.end);
        EXPECT_THAT(of_empty.end->text, HasSubstr("empty: the file ends"));
        for (const std::string& file : {unknown, binary}) {
            const answer a = ask(who, file);
            EXPECT_EQ(a.end, std::nullopt);
            EXPECT_EQ(a.info, -1);
            if (who == natom) {
                EXPECT_EQ(a.values[0], 0);
            }
            if (who != natom && who != force_tdip) {
                EXPECT_TRUE(a.unchanged());
            }
            if (who == force_tdip) {
                EXPECT_EQ(a.values.back(), untouched);
            }
        }
    }
}

}  // namespace
