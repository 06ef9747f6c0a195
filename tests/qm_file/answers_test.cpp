// What the readers make of files in which something is edited or missing, and the rules of single
// programs that the common questions do not reach.
#include <gtest/gtest.h>

#include "qm_file/ask.h"

namespace {

const std::string cis = "gaussian/water_cis.log";
const std::string freq = "gaussian/water_freq.log";
const std::string no_table = "gaussian/water_no_table.log";
const std::string fchk = "gaussian/water.fchk";
const std::string oniom = "gaussian/oniom.log";
const std::string input = "gaussian/oniom.gjf";

/// The start of an ONIOM log's atom list, and the end of it.
std::string list(const std::string& atoms) {
    return " Charge =  0 again\n" + atoms + " NAtoms= 3\n";
}
const std::string before_list = " Symbolic Z-matrix:\n";

std::string no_line(int at, const std::string& word) {
    return "exit 2: line " + std::to_string(at) + ": the file ends without a line with '" + word +
           "'";
}

struct edit {
    reader who;
    std::string file;
    std::string from;  // every occurrence is replaced; nothing for the file as it is
    std::string to;
    std::string answer;
    std::int32_t atoms = 3;
};

const edit edits[] = {
    // What is found.
    {force_tdip, cis, "", "",
     "-1: 0 0 0.012345678 0.001 0.020000001 -0.006172839 -0.001 -0.020000001 -0.006172839 "
     "-0.5354 0.001 -0.002 0 0 0.7 - - -"},
    {force_tdip, oniom, "0.118000 H", "0.118000 L",
     "-1: 0.002 0.004 0.006 0.004 0.008 0.012 0.4 0.5 0.6 0.7 0.8 0.9 - - -", 2},
    {coord, oniom, "", "", "0: 8.503766949 1.511780791 -7.369931355", 1},
    {natom, "vasp/OUTCAR", "NIONS =      3", "NIONS =x35", "0: 35"},
    {nat, no_table, "", "", "-1: 8 1 1"},
    {mass, freq, "Thermochemistry", "Chemistry", "-1: 15.99491464 1.007825037 1.007825037"},
    {mass, freq, " NAtoms=", " AtmWgt= 1 2 3 4 5 6 7 8 9 10\n AtmWgt= 11.5 12.5\n",
     "-1: 1 2 3 4 5 6 7 8 9 10 11.5 12.5", 12},
    {coord, "numforce/water.out", "Coordinate  Bohr", "Coordinate b", "0: 0 0 0.22298767", 1},
    {coord, "numforce/water.out", "Coordinate  Bohr", "Coordinate", "0: 0 0 0.4213855951", 1},
    {coord, "numforce/water.out", "Coordinate  Bohr", "Coordinate B in", "0: 0 0 0.4213855951", 1},
    {coord, "numforce/water.out", "  Bohr", " Angstrom", "0: 0 0 0.4213855951", 1},
    {coord, "vasp/OUTCAR", "0.11800", "0.529177249", "0: 0 0 1", 1},
    {coord, "gamess_us/water.out", "          ATOMIC W",
     " COORDINATES OF ALL ATOMS ARE (ANGS)\n 1 8 0 0 0.529177249\n", "0: 0 0 1", 1},

    // Nothing to read.
    {natom, "wien2k/case.scf", "", "", "-1: 0"},
    {nat, "wien2k/case.scf", "", "", "-1: - - -"},
    {coord, "wien2k/case.scf", "", "", "-1: - - -", 1},
    {mass, "wien2k/case.scf", "", "", "-1: - - -"},
    {force_tdip, "wien2k/case.scf", "", "", "-1: 0 0 0 - - - - - - - - -", 1},
    {natom, cis, " NAtoms=", "NAtoms=", "-1: 0"},
    {natom, fchk, "Number of atoms", "Atoms", "-1: 0"},
    {natom, "chemshell/water.out", "     ", " x   ", "-1: 0"},
    {natom, "cif/water.cif", "_atom_site_occupancy", "gone", "0: 0"},
    {mass, freq, " Atom ", " ", "-1: - - -"},
    {mass, "nwchem/water.out", "No.", "gone", "-1: - - -"},
    {nat, cis, "", "", "exit 0:   Error!\n  natom =                  -5\n  Stop!", -5},
    {coord, cis, "", "", "exit 0:   Error!\n  natom =                   0\n  Stop!", 0},
    {mass, cis, "", "", "exit 0:   Error!\n  natom =                   0\n  Stop!", 0},

    // Headers that are missing or not in their columns.
    {natom, "qchem/water.out", "--", "++",
     "exit 2: line 26: the file ends where a further line was expected"},
    {nat, no_table, "Mulliken", "gone", no_line(18, "Mulliken charges")},
    {natom, "nwchem/water.out", "No.", "gone", no_line(33, "No.")},
    {nat, "nwchem/water.out", "No.", "gone", no_line(33, "No.")},
    {nat, "evc/water.evc", "   Coordinate", "  Coordinate", no_line(14, "Coordinate")},
    {nat, "numforce/water.out", " Coordinate", "Coordinate", no_line(15, "Coordinate")},
    {coord, no_table, "", "",
     "exit 1: Can not find keyword Center     Atomic      Atomic             Coordinates "
     "(Angstroms) stop!"},
    {coord, "chemshell/water.out", "       Input", "      Input",
     "exit 0:   Error!\n  Can not find coordinate in ChemShell output file, stop!"},
    {coord, "turbomole/ridft.out", "atomic coord", "gone",
     "exit 0:   Error!\n  Can not find coordinate in TURBOMOLE output file, stop!"},
    {force_tdip, cis, "Forces (H", " Forces (H",
     "exit 1: Can not find keyword Center     Atomic                   Forces (Hartrees/Bohr) "
     "stop!"},

    // Items that are none, and numbers of no element.
    {natom, "turbomole/control", "   natoms=3", "natoms=3   ",
     "exit 2: line 8: the line ends where an integer was expected"},
    {nat, fchk, "  8           1", "8.0           1",
     "exit 2: line 12: '8.0' stands where an integer was expected (value 1 of 3)"},
    {mass, "qchem/water.out", "Has Mass", "Mass",
     "exit 2: line 24: the line ends where a real number was expected"},
    {nat, "evc/water.evc", "    1    8", "    1   -1",
     "exit 0: Error!\nnat(1) = -1 is out of [1,118]"},
    {nat, "numforce/water.out", "    3    1", "    3  119",
     "exit 0: Error!\nnat(3) = 119 is out of [1,118]"},
    // The range is checked although nothing was read.
    {nat, "chemshell/water.out", "Input", "gone", "exit 0: Error!\nnat(1) = -77 is out of [1,118]"},

    // ONIOM is named in the first 101 lines, in letters of either case.
    {ifoniom, cis, "", "", "2: 0"},
    {ifoniom, input, "%chk=oniom.chk\n#p oniom", "x#p=OnIoM(", "-1: 1"},
    {ifoniom, input, "%chk=oniom.chk\n#p oniom", std::string(100, '\n') + "ONIOM", "-1: 1"},
    {ifoniom, input, "%chk=oniom.chk\n#p oniom", std::string(101, '\n') + "oniom", "-1: 0"},

    // The layers stand where the first atom line says.
    {layers, oniom, "", "", "-1: 3 5 2 3 4"},
    {layers, oniom, before_list, list(" O 0 0. 0. 0.1 L\n H 0 0. 1. 0. H\n F 0 1. 1. 0. H\n"),
     "-1: 2 3 2 3 -"},
    {layers, oniom, before_list, list(" O 0. 0. 0.1 H\n H 0. 1. 0. L\n F 1. 1. 0. H\n"),
     "-1: 2 3 1 3 -"},
    {layers, oniom, before_list, list("O,0 0. 0. L 0.1\nH,0 0. 1. H 0.\nF,0 1. 1. H 0.\n"),
     "-1: 2 3 2 3 -"},
    {layers, oniom, before_list, list(" O 0 0. 0. 0.1 L H 2 H\n H 0 0. 1. 0. H\n F 0 1. 1. 0. h\n"),
     "-1: 1 3 2 - -"},
    {layers, oniom, before_list, list(" in the old form\n 1 0 0.\n 2 1 0.\n 3, 0 1.\n"),
     "-1: 2 3 1 3 -"},
    {layers, oniom, before_list, list("\n O 0 0. 0. 0.1 L\n H 0 0. 1. 0. H\n F 0 1. 1. 0. L\n"),
     "-1: 1 3 2 - -"},
    {layers, oniom, "Charge =", "Charges", "-1: 0 5 - - -"},
    {layers, oniom, "3.900000 L", "3.900000 -1",
     "exit 1:   Can not find H or L layer (oniom) information in log file\n  Method has not been "
     "implemented\n  Stop"},
    {layers, oniom, "", "", "exit 2: atom 4 is a high-layer atom, but room was made for 2 only", 2},
    {force_tdip, oniom, "", "", "exit 1:  natom != nqm, stop!", 5},
    {layers, fchk, "", "", "-1: 0 - -", 1},
    {layers, input, "", "", "-1: 0 5 2 3 4 -", 4},
    // Programs that draw molecules write a blank before each symbol.
    {layers, input, "\nAr ", "\n Ar ", "-1: 0 5 2 3 4"},
    {layers, input, "oniom", "onion", "-1: 0 - - - -"},
    // Every line is read at the place of the first line's last word, which the others may lack.
    {layers, input, "O    0", "O", "exit 2: line 10: the line ends where an item was expected"},
    {layers, input, "O    0", "O 0 0", "-1: 0 5 2 4 -"},
};

TEST(Readers, AnswerAsTheRowsSay) {
    const support::scratch_directory scratch;
    for (const edit& e : edits) {
        std::string text = support::contents_of(support::data_file(e.file));
        if (!e.from.empty()) text = support::replaced(text, e.from, e.to);
        EXPECT_EQ(ask(e.who, scratch.file("edited", text), e.atoms), e.answer)
            << e.file << " with '" << e.to << "' for '" << e.from << "'";
    }
}

}  // namespace
