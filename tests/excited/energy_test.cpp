// The energies before the amplitudes of a dump.
#include <gtest/gtest.h>

#include "flib/excited/qm_file_ci_xpy.h"
#include "support/support.h"

namespace {

/// What the reader makes of room for `room` values when asked for `nci` energies.
std::string energies(const std::string& file, std::int32_t nci, std::size_t room) {
    std::vector<double> values(room, -1);
    return support::answer_of(file, [&] {
        std::int32_t info = 0;
        flib::qm_file_ci_energy(file, nci, values, info);
        std::string answer = std::to_string(info) + ":";
        for (const double value : values) answer += " " + std::to_string(value);
        return answer;
    });
}

TEST(ExcitationEnergies, StandBeforeTheAmplitudes) {
    const std::string dump = std::string(EXAMPLES) + "/water/h2o_ref.cis";
    EXPECT_EQ(energies(dump, 3, 4), "1: 0.342853 0.418285 0.432966 -1.000000");
    EXPECT_EQ(energies(dump, 4, 4), "1: 0.342853 0.418285 0.432966 0.486109");
    EXPECT_EQ(energies(dump, 0, 1), "1: -1.000000");
    EXPECT_EQ(energies(dump, 4, 3),
              "exit 2: 4 excitation energies were asked for, but there is room for 3");
    EXPECT_EQ(energies(std::string(EXAMPLES) + "/water/h2o_ref.log", 3, 4),
              "exit 1:   The method has not been implemented, stop!");
    const support::scratch_directory scratch;
    const std::string cut = scratch.file("cut", support::contents_of(dump).substr(0, 420));
    EXPECT_EQ(energies(cut, 4, 4),
              "exit 2: line 12: the file ends where a real number was expected (value 2 of 4)");
}

}  // namespace
