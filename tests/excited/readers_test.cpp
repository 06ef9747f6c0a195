// Readers of amplitudes, basis dimensions and MO coefficients, asked through the tool that shows
// what a routine makes of its results.
#include <gmock/gmock.h>

#include <sstream>

#include "flib/excited/qm_file_ci_xpy.h"
#include "flib/excited/qm_file_mo_coeff_nbasis_nbsuse.h"
#include "support/session.h"

namespace {

TEST(ExcitedStateReaders, AnswerAsTheRowsSay) {
    const support::scratch_directory scratch;
    for (const auto& [step, said] : support::session_of("excited_answers.txt")) {
        const auto row = support::fields_of(step, 5);
        const std::string whole = support::contents_of(support::data_file(row[1]));
        scratch.file("edited", support::edited(whole, row[2], row[3]));
        const auto ended =
            support::run({"qm_file", support::words_of(row[0]), scratch.path(), row[4]});
        EXPECT_EQ(support::elided(support::said_in(ended), said), said) << "$ " << step;
    }
}

TEST(Dumps, GiveTheRestIfTheyTellWhereItIs) {
    const auto told = [](const char* name, auto routine, std::size_t room) {
        const std::string file = support::data_file(std::string("gaussian/") + name);
        std::vector<double> values(room, -7);
        std::int32_t info = -9;
        std::ostringstream text;
        text << support::answer_of(file, [&] {
            routine(file, values, info);
            return "read";
        });
        for (const double value : values) text << ' ' << value;
        text << " (" << info << ')';
        return text.str();
    };
    const auto minus = [](const std::string& file, auto& values, auto& info) {
        flib::qm_file_ci_xmy(file, 1, 2, 2, values, info);
    };
    const auto energies = [](const std::string& file, auto& values, auto& info) {
        flib::qm_file_ci_energy(file, 2, values, info);
    };
    EXPECT_EQ(told("roots.cis", minus, 9), "read 0.5 1 0.5 1 0.5 -1 -0.5 1 -7 (1)");
    EXPECT_EQ(told("roots.cis", minus, 7),
              "exit 2: 8 amplitudes were asked for, but there is room for 7"
              " -7 -7 -7 -7 -7 -7 -7 (-1)");
    EXPECT_EQ(told("roots.cis", energies, 3), "read 0.31 0.32 -7 (1)");
    for (const char* const name : {"plus.cis", "water.cis"}) {
        EXPECT_EQ(told(name, minus, 8),
                  "exit 2: does not tell where it holds X-Y -7 -7 -7 -7 -7 -7 -7 -7 (1)");
        EXPECT_EQ(told(name, energies, 2),
                  "exit 2: does not tell where it holds the excitation energies -7 -7 (1)");
    }
}

TEST(MoCoefficients, AreZeroBeforeAnythingIsRead) {
    const support::scratch_directory scratch;
    const std::string whole = support::contents_of(support::data_file("gaussian/water.fchk"));
    const std::string log = support::data_file("gaussian/water_cis.log");
    const std::string short_one =
        scratch.file("short", whole.substr(0, whole.find("-5.00000000E-01")));
    for (const std::string& file : {log, short_one}) {
        flib::matrix<double> mo(3, 5, "coefficients");
        std::ranges::fill(mo.view().all(), -7.0);
        std::int32_t info = 0;
        EXPECT_TRUE(support::ending_of(
            [&] { flib::qm_file_mo_coeff_nbasis_nbsuse(file, 4, 3, mo.view(), info); }));
        EXPECT_THAT(mo.view().all(), testing::Each(0.0)) << file;
    }
}

}  // namespace
