// Excited-state jobs of any size, made up and written in the line shapes of a Gaussian log, a
// formatted checkpoint and an amplitude dump.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace support {

using vector3 = std::array<double, 3>;

struct job {
    std::int32_t nfc = 0;
    std::int32_t mi = 0;
    std::int32_t ma = 0;
    std::int32_t nfv = 0;
    std::int32_t mci = 0;
    std::vector<std::int32_t> nat{};
    std::vector<vector3> x{};      // Angstrom
    std::vector<vector3> force{};  // Hartree/Bohr
    vector3 tdip{};                // of state 1
    std::vector<double> moc{};     // nbasis x nbasis, orbital by orbital
    std::vector<double> xpy{};     // ma x mi x 2 x mci, virtual index fastest

    std::int32_t nbasis() const { return nfc + mi + ma + nfv; }
};

/// A job with `natom` hydrogen atoms and random numbers that its files hold exactly.
job random_job(std::mt19937_64& random, std::int32_t natom, std::int32_t nfc, std::int32_t mi,
               std::int32_t ma, std::int32_t nfv, std::int32_t mci);

/// What may differ between files that say the same.
struct writing {
    std::string_view end_of_line = "\n";
    int per_line = 5;
    char dump_exponent = 'D';
    bool layout_told = true;  // by the dump
};

std::string log_text(const job& what, const writing& how = {});
std::string checkpoint_text(const job& what, const writing& how = {});
std::string dump_text(const job& what, const writing& how = {});

/// Writes NAME.log, NAME.fchk and NAME.cis.
void write_job(const std::filesystem::path& directory, std::string_view name, const job& what,
               const writing& how = {});

}  // namespace support
