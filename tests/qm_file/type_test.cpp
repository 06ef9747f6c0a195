// The finer rules of telling which program wrote a file.
#include <gtest/gtest.h>

#include "flib/qm_file/qm_file_type.h"
#include "qm_file/ask.h"

namespace {

struct sample {
    std::string name;
    std::string text;
    std::string tag;  // empty: not recognised
    std::string version;
    std::int32_t info;
};

const std::string gaussian = " Entering Gaussian System, Link 0=g16\n";
const std::string stars = " *****************\n";
const std::string basis = "Number of basis functions                  ";

const sample samples[] = {
    {"BannerOnLine1000", std::string(999, '\n') + gaussian + stars + " Gaussian 16:  A-B-C\n",
     "GAUSSIAN LOG", "B-C", 2},
    {"BannerOnLine1001", std::string(1000, '\n') + gaussian + stars + " Gaussian 16:  A-B\n", "",
     "", -1},
    {"AsterisksHaveNoLimit", gaussian + std::string(2000, '\n') + stars + " Gaussian 16:  Rev\n",
     "GAUSSIAN LOG", "Rev", 2},
    {"BannerWithoutAsterisks", gaussian + " ****************\n", "GAUSSIAN LOG", "", -1},
    {"BannerWithoutAsterisksYieldsToOthers", gaussian + "$couplingvector\n", "TURBOMOLE CTRL", "0",
     1},
    {"AsterisksAboveTheBannerDoNotCount", stars + gaussian, "GAUSSIAN LOG", "", -1},
    {"MatrixElementsWithoutVersion", "XXXX Label Gaussian matrix elements NLab= 11\n",
     "GAUSSIAN MAT", "Label", -1},
    {"CheckpointItem", basis + "I               22\n", "GAUSSIAN FCHK", "UNKNOWN", -1},
    {"CheckpointItemIsReal", basis + "R               22\n a ChemShell 3.7\n", "CHEMSHELL", "3.7",
     4},
    {"CheckpointNotInColumnOne", " " + basis + "I 22\n", "", "", -1},
    {"MolproInItsColumn", std::string(66, ' ') + "MOLPRO\n", "", "", -1},
    {"TurbomoleRevision", " TURBOMOLE rev. V7.5.1 (b8a2)\n", "TURBOMOLE", "  .", 1},
    {"TurbomoleBeforeControl", "$couplingvector\n ridft : TURBOMOLE V7.2b ( 1 )\n", "TURBOMOLE",
     "7.2", 1},
    {"RwfColumns", "  dumping /fiocom/\n", "", "", -1},
    {"EvcWithoutVersion", " EVC MOLECULAR INFO\n ends here\n", "EVC", "here", 3},
    {"NumforceVersionFarBelow",
     " NUMERICAL FREQUENCY\n" + std::string(1500, '\n') + " VERSION, 3\n", "NUMFORCE", "3", 3},
    {"VaspIsLowerCase", "VASP 5.4\n", "", "", -1},
    {"NwchemBeforeCif", "_cell_length_a 1\n Chemistry Package (NWChem) a b 6.5 \n", "NWCHEM", "6.5",
     0},
    {"CifBeforeWien2k", "  bandindex: 1\n_cell_length_a 1\n", "CIF", "0", 0},
    {"Wien2kBeforeWien2kSpe", "  bandindex: 1\n          POTENTIAL PARAMETERS\n", "WIEN2K_1", "0",
     0},
    {"GamessWithoutAsterisk", " GAMESS VERSION = 20 APR 2017\n", "GAMESS_US", "", 0},
    {"GamessWithoutEqualsSign", " * US GAMESS VERSION 6 *\n", "GAMESS_US", "", 0},
    {"OrcaWithoutColon", "  This ORCA version is new\n", "ORCA", "This ORCA version is new", 0},
    {"HessianBeforeOutput", "ORCA version: 5\n$orca_hessian_file\n", "ORCA_HESSIAN", "0", 0},
    {"LettersOfTheOtherCase", "entering gaussian system\nNWCHEM\nteraChem V\n", "", "", -1},
};

class Sample : public testing::TestWithParam<sample> {};

TEST_P(Sample, IsToldByItsBanners) {
    const support::scratch_directory scratch;
    const std::string file = scratch.file("sample", GetParam().text);
    std::string type(200, '#');
    std::string version(200, ' ');
    std::int32_t info = untouched;
    flib::qm_file_type(file, type, version, info);
    EXPECT_EQ(flib::trim_right(type),
              GetParam().tag.empty() ? std::string(200, '#') : GetParam().tag);
    EXPECT_EQ(flib::trim_right(version), GetParam().version);
    EXPECT_EQ(info, GetParam().info);
}

INSTANTIATE_TEST_SUITE_P(Every, Sample, testing::ValuesIn(samples),
                         [](const auto& row) { return row.param.name; });

TEST(QmFileType, CutsToTheCallersLengths) {
    std::string type(8, '#');
    std::string version(3, '#');
    std::int32_t info = 0;
    flib::qm_file_type(support::data_file("gaussian/water_cis.log"), type, version, info);
    EXPECT_EQ(type, "GAUSSIAN");
    EXPECT_EQ(version, "G16");
}

TEST(QmFileType, LeavesEverythingForAFileThatDoesNotOpen) {
    const support::scratch_directory scratch;
    std::string type = "type";
    std::string version = "version";
    std::int32_t info = 0;
    flib::qm_file_type((scratch.path() / "missing").string(), type, version, info);
    EXPECT_EQ(type + version, "typeversion");
    EXPECT_EQ(info, -1);
    const auto end = support::ending_of(
        [&] { flib::qm_file_type(scratch.file("empty", ""), type, version, info); });
    ASSERT_TRUE(end);
    EXPECT_EQ(end->status, 2);
}

}  // namespace
