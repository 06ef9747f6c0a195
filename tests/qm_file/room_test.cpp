// Arrays handed in that are too short for what is asked for: told before anything is read.
#include <gtest/gtest.h>

#include "qm_file/ask.h"

namespace {

using integers = std::span<std::int32_t>;
using reals = std::span<double>;

/// A reader that is asked for `count` columns of `rows` values each, and is given room for `n`.
struct asked_for {
    const char* what;
    std::size_t count;
    std::size_t rows;
    const char* file;
    std::function<void(const std::string& file, integers, reals, std::int32_t n, int& info)> read;
};

const asked_for readers[] = {
    {"atomic numbers", 3, 1, "gaussian/water_cis.log",
     [](auto& file, integers to, reals, int, int& info) { flib::qm_file_nat(file, 3, to, info); }},
    {"masses", 3, 1, "gaussian/water_cis.log",
     [](auto& file, integers, reals to, int, int& info) { flib::qm_file_mass(file, 3, to, info); }},
    {"coordinates", 3, 3, "gaussian/water_cis.log",
     [](auto& file, integers, reals to, int n, int& info) {
         flib::qm_file_coord(file, 3, {to.data(), 3, n}, info);
     }},
    {"forces", 3, 3, "gaussian/water_cis.log",
     [](auto& file, integers, reals to, int n, int& info) {
         double tdip[3];
         flib::qm_file_force_tdip(file, 3, 1, {to.data(), 3, n}, {tdip, 3, 1}, info);
     }},
    {"transition dipoles", 2, 3, "gaussian/water_cis.log",
     [](auto& file, integers, reals to, int n, int& info) {
         double force[9];
         flib::qm_file_force_tdip(file, 3, 2, {force, 3, 3}, {to.data(), 3, n}, info);
     }},
    {"positions of high-layer atoms", 3, 1, "gaussian/oniom.log",
     [](auto& file, integers to, reals, int, int& info) {
         std::int32_t nqmmm = 5;
         flib::qm_file_oniom_index(file, 3, nqmmm, to, info);
     }},
    {"amplitudes", 48, 1, "gaussian/water.cis",
     [](auto& file, integers, reals to, int, int& info) {
         flib::qm_file_ci_xpy(file, 2, 4, 3, to, info);
     }},
    {"excitation energies", 3, 1, "gaussian/water.cis",
     [](auto& file, integers, reals to, int, int& info) {
         flib::qm_file_ci_energy(file, 3, to, info);
     }},
    {"MO coefficients", 12, 1, "gaussian/water.fchk",
     [](auto& file, integers, reals to, int n, int& info) {
         flib::qm_file_mo_coeff_nbasis_nbsuse(file, 4, 3, {to.data(), n, 1}, info);
     }},
};

TEST(Readers, TellWhenAnArrayIsTooShort) {
    for (const auto& [what, count, rows, name, read] : readers) {
        const std::string file = support::data_file(name);
        const std::size_t size = count * rows;
        std::vector<std::int32_t> whole(size + 1, -7);
        std::vector<double> real(size + 1, -7);
        const auto with_room_for = [&](std::size_t n) {
            return support::answer_of(file, [&] {
                int info = 0;
                read(file, integers(whole).first(n * rows), reals(real).first(n * rows),
                     static_cast<std::int32_t>(n), info);
                return "read";
            });
        };
        EXPECT_EQ(with_room_for(count - 1), "exit 2: " + std::to_string(size) + " " + what +
                                                " were asked for, but there is room for " +
                                                std::to_string(size - rows));
        EXPECT_EQ(with_room_for(count), "read") << what;
        EXPECT_NE(whole[size - 1] + real[size - 1], -14) << what << ": the last is not there";
        EXPECT_EQ(whole[size] + real[size], -14) << what << ": one too many";
    }
}

}  // namespace
