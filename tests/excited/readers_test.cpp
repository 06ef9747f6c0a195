// Readers of amplitudes, basis dimensions and MO coefficients.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <numeric>

#include "flib/excited/qm_file_ci_xpy.h"
#include "flib/excited/qm_file_mo_coeff_nbasis_nbsuse.h"
#include "flib/excited/qm_file_nbasis_nbsuse.h"
#include "flib/excited/qm_file_nci.h"
#include "support/support.h"

namespace {

using namespace flib;
using support::ending;
using testing::ElementsAre;
using testing::HasSubstr;

const std::string log_file = support::data_file("gaussian/water_cis.log");
const std::string checkpoint = support::data_file("gaussian/water.fchk");
const std::string dump = support::data_file("gaussian/water.cis");
const ending not_implemented{1, "  The method has not been implemented, stop!", true};

/// The text of `file` with its last `from` replaced, in a new file.
std::string edited(const support::scratch_directory& scratch, const std::string& file,
                   const std::string& from, const std::string& to) {
    std::string text = support::contents_of(file);
    text.replace(text.rfind(from), from.size(), to);
    return scratch.file("edited", text);
}

std::optional<ending> read_nci(const std::string& file, std::array<std::int32_t, 7>& n) {
    return support::ending_of([&] { qm_file_nci(file, n[0], n[1], n[2], n[3], n[4], n[5], n[6]); });
}

TEST(QmFileNci, TakesTheLastStep) {
    std::array<std::int32_t, 7> n{};
    EXPECT_EQ(read_nci(log_file, n), std::nullopt);
    EXPECT_THAT(n, ElementsAre(4, 7, 2, 5, 1, 1, 2));
}

TEST(QmFileNci, EndsTheRunWithoutItsLines) {
    const support::scratch_directory scratch;
    std::array<std::int32_t, 7> n{};
    const auto of = [&](const char* from, const char* to) {
        return read_nci(edited(scratch, log_file, from, to), n);
    };
    EXPECT_EQ(of("roots to seek", "roots"),
              (ending{1, "Can not find keyword roots to seek stop!", true}));
    EXPECT_THAT(of("NFC=     1", "NFC=     l")->text, HasSubstr("'l' stands where an integer"));
    EXPECT_EQ(read_nci(support::data_file("gaussian/water_freq.log"), n),
              (ending{1, "Can not find keyword NAE= stop!", true}));
    EXPECT_EQ(read_nci(checkpoint, n), not_implemented);
    EXPECT_EQ(read_nci((scratch.path() / "missing").string(), n)->status, 2);
}

TEST(QmFileCiXpy, DropsTheEnergiesAndKeepsTheOrderOfTheFile) {
    std::vector<double> xpy(xpy_count(2, 4, 3));
    std::vector<double> expected(48);
    std::iota(expected.begin(), expected.end(), 1.0);
    std::int32_t info = 0;
    qm_file_ci_xpy(dump, 2, 4, 3, xpy, info);
    EXPECT_EQ(xpy, expected);
    EXPECT_EQ(info, 1);
}

TEST(QmFileCiXpy, EndsTheRunForTooFewValuesAndOtherFiles) {
    const support::scratch_directory scratch;
    std::vector<double> xpy(xpy_count(2, 4, 4));
    std::int32_t info = 0;
    const auto of = [&](const std::string& file, std::int32_t nci) {
        return support::ending_of([&] { qm_file_ci_xpy(file, 2, 4, nci, xpy, info); });
    };
    EXPECT_THAT(of(dump, 4)->text, HasSubstr("the file ends where a real number"));
    EXPECT_THAT(of(edited(scratch, dump, "Dump of file", "gone"), 1)->text,
                HasSubstr("'Dump of file'"));
    EXPECT_THAT(of(edited(scratch, dump, "D+00", "X+00"), 3)->text, HasSubstr("X+00' stands"));
    EXPECT_EQ(of(log_file, 3), not_implemented);
    EXPECT_EQ(of(scratch.path().string(), 3)->status, 2);
}

/// na, nb, nbasis, nbsuse, info
std::array<std::int32_t, 5> basis_of(const std::string& file) {
    std::array<std::int32_t, 5> n{-7, -7, -7, -7, -7};
    qm_file_nbasis_nbsuse(file, n[0], n[1], n[2], n[3], n[4]);
    return n;
}

TEST(QmFileNbasisNbsuse, FollowsTheOrderOfACheckpoint) {
    const support::scratch_directory scratch;
    const auto of = [&](const char* from, const char* to) {
        return basis_of(edited(scratch, checkpoint, from, to));
    };
    EXPECT_THAT(basis_of(checkpoint), ElementsAre(5, 4, 4, 3, -1));
    EXPECT_THAT(of("N=          12", "N=          16"), ElementsAre(5, 4, 4, 4, -1));
    EXPECT_THAT(of("independent", "used"), ElementsAre(5, 4, 4, 4, -1));
    EXPECT_THAT(of("Alpha MO", "MO"), ElementsAre(5, 4, 4, 3, -1));
    // A missing line hides those that follow.
    EXPECT_THAT(of("beta electrons", "electrons"), ElementsAre(5, 0, 0, 0, -1));
    EXPECT_THAT(basis_of(dump), ElementsAre(0, 0, 0, 0, -1));
    EXPECT_TRUE(support::ending_of([&] { basis_of((scratch.path() / "missing").string()); }));
}

/// Standard input from a file, for as long as this lives.
class redirected_input {
  public:
    explicit redirected_input(const std::string& file) : before_(dup(STDIN_FILENO)) {
        const int opened = open(file.c_str(), O_RDONLY);
        dup2(opened, STDIN_FILENO);
        close(opened);
    }
    ~redirected_input() {
        before_ < 0 ? close(STDIN_FILENO) : dup2(before_, STDIN_FILENO);
        close(before_);
    }

  private:
    int before_;
};

TEST(QmFileNbasisNbsuse, TakesTheUsedFunctionsOfALogFromStandardInput) {
    const support::scratch_directory scratch;
    const redirected_input input(scratch.file("input", "\nnbsuse 11 more\nnbsuse 12\nnbsuse x\n"));
    EXPECT_THAT(basis_of(log_file), ElementsAre(5, 4, 12, 11, -1));
    const auto end = [&](const std::string& file) {
        return support::ending_of([&] { basis_of(file); });
    };
    // Above the "RedAO=" line of the first step there is no "NAE=" line, but the count is read.
    EXPECT_EQ(end(edited(scratch, log_file, "RedAO=", "redao=")),
              (ending{1, "Can not find keyword NAE= stop!", true}));
    EXPECT_THAT(end(log_file)->text, HasSubstr("'x' stands where an integer was expected"));
    EXPECT_THAT(end(log_file)->text, HasSubstr("standard input"));
    EXPECT_EQ(end(support::data_file("gaussian/water_freq.log")),
              (ending{1, "Can not find keyword RedAO= stop!", true}));
}

TEST(QmFileMoCoeff, FillsColumnByColumn) {
    std::vector<double> mo(12);
    std::int32_t info = -7;
    qm_file_mo_coeff_nbasis_nbsuse(checkpoint, 4, 3, {mo.data(), 3, 4}, info);
    EXPECT_EQ(info, 0);
    EXPECT_THAT(mo, ElementsAre(-0.5, -0.4, -0.3, -0.2, -0.1, 0, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6));
}

TEST(QmFileMoCoeff, EndsTheRunForBadSizesAndOtherFiles) {
    const support::scratch_directory scratch;
    std::vector<double> mo(10000);
    std::int32_t info = 0;
    const auto of = [&](const std::string& file, std::int32_t nbasis, std::int32_t nbsuse) {
        return support::ending_of([&] {
            qm_file_mo_coeff_nbasis_nbsuse(file, nbasis, nbsuse, {mo.data(), nbsuse, nbasis}, info);
        });
    };
    EXPECT_EQ(of(checkpoint, 0, 0),
              (ending{0, "  Error!\n  nbasis =                   0\n  Stop!", true}));
    EXPECT_EQ(of(log_file, 4, 3), not_implemented);
    EXPECT_THAT(of(checkpoint, 4, 4)->text, HasSubstr("value 13 of 16"));
    EXPECT_THAT(of(checkpoint, 100, 100)->text, HasSubstr("too short to hold 10000 values"));
    EXPECT_THAT(of(edited(scratch, checkpoint, "Alpha MO", "MO"), 4, 3)->text,
                HasSubstr("'Alpha MO"));
}

}  // namespace
