// Arrays handed in that are too short for what is asked for: told before anything is read.
#include <gtest/gtest.h>

#include <array>

#include "flib/excited/qm_file_ci_xpy.h"
#include "flib/excited/qm_file_mo_coeff_nbasis_nbsuse.h"
#include "qm_file/ask.h"

namespace {

TEST(Readers, TellWhenAnArrayIsTooShort) {
    const std::string log = support::data_file("gaussian/water_cis.log");
    const std::string fchk = support::data_file("gaussian/water.fchk");
    const std::string cis = support::data_file("gaussian/water.cis");
    std::array<double, 40> reals{};
    std::array<std::int32_t, 8> whole{};
    std::int32_t info = 0;
    const flib::matrix_view<double> room_for_8(reals.data(), 3, 8);
    const auto all = std::span(reals);
    const auto ending = [](const std::string& file, const std::function<void()>& reader) {
        return support::answer_of(file, [&] {
            reader();
            return std::string("read");
        });
    };
    const auto too_short = [](const std::string& asked_for, int room) {
        return "exit 2: " + asked_for + " were asked for, but there is room for " +
               std::to_string(room);
    };
    EXPECT_EQ(ending(log, [&] { flib::qm_file_nat(log, 9, whole, info); }),
              too_short("9 atomic numbers", 8));
    EXPECT_EQ(ending(log, [&] { flib::qm_file_mass(log, 9, all.first(8), info); }),
              too_short("9 masses", 8));
    EXPECT_EQ(ending(log, [&] { flib::qm_file_coord(log, 9, room_for_8, info); }),
              too_short("27 coordinates", 24));
    EXPECT_EQ(
        ending(log, [&] { flib::qm_file_force_tdip(log, 9, 1, room_for_8, room_for_8, info); }),
        too_short("27 forces", 24));
    EXPECT_EQ(
        ending(log, [&] { flib::qm_file_force_tdip(log, 3, 9, room_for_8, room_for_8, info); }),
        too_short("27 transition dipoles", 24));
    std::int32_t nqmmm = 9;
    EXPECT_EQ(ending(log, [&] { flib::qm_file_oniom_index(log, 9, nqmmm, whole, info); }),
              too_short("9 positions of high-layer atoms", 8));
    EXPECT_EQ(ending(cis, [&] { flib::qm_file_ci_xpy(cis, 2, 4, 3, all, info); }),
              too_short("48 amplitudes", 40));
    EXPECT_EQ(ending(cis, [&] { flib::qm_file_ci_energy(cis, 41, all, info); }),
              too_short("41 excitation energies", 40));
    EXPECT_EQ(
        ending(fchk, [&] { flib::qm_file_mo_coeff_nbasis_nbsuse(fchk, 7, 4, room_for_8, info); }),
        too_short("28 MO coefficients", 24));
    // The last place may be used: two amplitudes of one root, after its energy.
    EXPECT_EQ(ending(cis, [&] { flib::qm_file_ci_xpy(cis, 1, 1, 1, all.first(2), info); }), "read");
}

}  // namespace
