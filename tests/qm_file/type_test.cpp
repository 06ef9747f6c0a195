// The finer rules of telling which program wrote a file.
#include <gtest/gtest.h>

#include "qm_file/ask.h"

namespace {

struct sample {
    const char* what;
    std::string text;
    const char* told;
};

const std::string gaussian = " Entering Gaussian System, Link 0=g16\n";
const std::string stars = " *****************\n";
const std::string basis = "Number of basis functions                  ";

const sample samples[] = {
    {"a banner on line 1000", std::string(999, '\n') + gaussian + stars + " Gaussian 16:  A-B-C\n",
     "GAUSSIAN LOG, B-C, 2"},
    {"a banner on line 1001", std::string(1000, '\n') + gaussian + stars + " Gaussian 16:  A-B\n",
     "unset, unset, -1"},
    {"asterisks have no limit", gaussian + std::string(2000, '\n') + stars + " Gaussian 16:  Rev\n",
     "GAUSSIAN LOG, Rev, 2"},
    {"no asterisks", gaussian + " ****************\n", "GAUSSIAN LOG, unset, -1"},
    {"no asterisks: others win", gaussian + "$couplingvector\n", "TURBOMOLE CTRL, 0, 1"},
    {"asterisks above the banner", stars + gaussian, "GAUSSIAN LOG, unset, -1"},
    {"matrix elements without version", "XXXX Label Gaussian matrix elements NLab= 11\n",
     "GAUSSIAN MAT, Label, -1"},
    {"checkpoint", basis + "I               22\n", "GAUSSIAN FCHK, UNKNOWN, -1"},
    {"real checkpoint item", basis + "R               22\n a ChemShell 3.7\n", "CHEMSHELL, 3.7, 4"},
    {"checkpoint not in column 1", " " + basis + "I 22\n", "unset, unset, -1"},
    {"Molpro in its column", std::string(66, ' ') + "MOLPRO\n", "unset, unset, -1"},
    {"Turbomole revision", " TURBOMOLE rev. V7.5.1 (b8a2)\n", "TURBOMOLE,   ., 1"},
    {"Turbomole before control", "$couplingvector\n ridft : TURBOMOLE V7.2b ( 1 )\n",
     "TURBOMOLE, 7.2, 1"},
    {"dump in column 3", "  dumping /fiocom/\n", "unset, unset, -1"},
    {"no version: the last line's", " EVC MOLECULAR INFO\n ends here\n", "EVC, here, 3"},
    {"version far below", " NUMERICAL FREQUENCY\n" + std::string(1500, '\n') + " VERSION, 3\n",
     "NUMFORCE, 3, 3"},
    {"NWChem before CIF", "_cell_length_a 1\n Chemistry Package (NWChem) a b 6.5 \n",
     "NWCHEM, 6.5, 0"},
    {"CIF before WIEN2k", "  bandindex: 1\n_cell_length_a 1\n", "CIF, 0, 0"},
    {"WIEN2k's two", "  bandindex: 1\n          POTENTIAL PARAMETERS\n", "WIEN2K_1, 0, 0"},
    {"GAMESS without asterisk", " GAMESS VERSION = 20 APR 2017\n", "GAMESS_US, , 0"},
    {"GAMESS without equals sign", " * US GAMESS VERSION 6 *\n", "GAMESS_US, , 0"},
    {"ORCA without colon", "  This ORCA version is new\n", "ORCA, This ORCA version is new, 0"},
    {"Hessian before output", "ORCA version: 5\n$orca_hessian_file\n", "ORCA_HESSIAN, 0, 0"},
    {"other case", "entering gaussian system\nNWCHEM\nVASP 5.4\nteraChem V\n", "unset, unset, -1"},
    {"empty", "", "exit 2: the file ends where a further line was expected (the file is empty)"},
};

TEST(QmFileType, GoesByTheBanners) {
    const support::scratch_directory scratch;
    for (const sample& s : samples) {
        EXPECT_EQ(type_of(scratch.file("sample", s.text)), s.told) << s.what;
    }
    EXPECT_EQ(type_of(scratch.path() / "missing"), "unset, unset, -1");
}

TEST(QmFileType, CutsToTheCallersLengths) {
    std::string type(8, '#');
    std::string version(3, '#');
    std::int32_t info = 0;
    flib::qm_file_type(support::data_file("gaussian/water_cis.log"), type, version, info);
    EXPECT_EQ(type, "GAUSSIAN");
    EXPECT_EQ(version, "G16");
}

}  // namespace
