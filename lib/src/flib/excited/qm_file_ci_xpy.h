// The excitation amplitudes, X+Y and X-Y, and the excitation energies that are dumped with them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace flib {

/// The number of amplitudes of `nci` roots with `ni` active occupied and `na` active virtual
/// orbitals: the elements of an `na` x `ni` x 2 x `nci` array. Throws run_error if that cannot be
/// counted in 64 bits.
std::size_t xpy_count(std::int32_t ni, std::int32_t na, std::int32_t nci);

/// The number of the record of a Gaussian checkpoint or read-write file that holds the amplitudes.
inline constexpr std::int32_t amplitude_record = 635;

/// The number of the record that the dump `fname` is of. Throws stop_run (status 1) for a file of
/// another kind; io_error if the file cannot be opened or has no "Dump of file" line with a number.
std::int32_t qm_file_dump_record(std::string_view fname);

/// What a dump of record 635 tells of its own layout in its first twelve values.
struct dump_layout {
    std::int32_t states = 0;      ///< that were asked for and converged: the first of the roots
    std::int32_t roots = 0;       ///< that were kept, some four times as many
    std::int32_t amplitudes = 0;  ///< of one root and spin: active occupied x active virtual
    bool has_rest = false;        ///< X-Y of all roots and their energies stand behind X+Y
};

/// The layout that the dump `fname` tells; nullopt if its first values do not.
///
/// Throws stop_run (status 1) for a file of another kind; io_error if the file cannot be opened,
/// has no "Dump of file" line, or tells what cannot be: counts that contradict each other or the
/// length in that line, an unrestricted job, fewer or more values than the length, a second dump.
std::optional<dump_layout> qm_file_dump_layout(std::string_view fname);

/// Reads the amplitudes of the first `nci` roots from the dump `fname` of a Gaussian checkpoint or
/// read-write file, as they stand there: neither normalised nor scaled.
///
/// `xpy` is the array (virtual, occupied, component, root) of extents `na`, `ni`, 2, `nci`, first
/// index fastest. Of a dump that tells its layout the components are X+Y of alpha and beta spin.
/// Of one that does not, `nci` values are passed over and all that follow are amplitudes. `info` is
/// the class code of qm_file_type().
///
/// Throws what qm_file_dump_layout() throws; io_error also if the layout has other numbers of
/// orbitals or fewer roots, if there are too few numbers, or if `xpy` is too short.
void qm_file_ci_xpy(std::string_view fname, std::int32_t ni, std::int32_t na, std::int32_t nci,
                    std::span<double> xpy, std::int32_t& info);

/// The same of X-Y. Throws io_error also if the dump does not tell where they are.
void qm_file_ci_xmy(std::string_view fname, std::int32_t ni, std::int32_t na, std::int32_t nci,
                    std::span<double> xmy, std::int32_t& info);

/// Reads the excitation energies (Hartree) of the first `nci` roots, which a dump that tells its
/// layout has at its end, into the first elements of `energy`. `info` and endings are those of
/// qm_file_ci_xmy().
void qm_file_ci_energy(std::string_view fname, std::int32_t nci, std::span<double> energy,
                       std::int32_t& info);

}  // namespace flib
