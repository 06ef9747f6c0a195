// The X+Y excitation amplitudes, and the energies before them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace flib {

/// The number of amplitudes of `nci` roots with `ni` active occupied and `na` active virtual
/// orbitals: the elements of an `na` x `ni` x 2 x `nci` array. Throws run_error if that cannot be
/// counted in 64 bits.
std::size_t xpy_count(std::int32_t ni, std::int32_t na, std::int32_t nci);

/// Reads the amplitudes of all roots from the dump `fname` of a Gaussian read-write file, as they
/// stand there: neither normalised nor scaled.
///
/// `xpy` is the array (virtual, occupied, component, root) of extents `na`, `ni`, 2, `nci`, first
/// index fastest. `info` is the class code of qm_file_type(). Throws stop_run (status 1) for a file
/// of another kind; io_error if the file cannot be opened or holds too few numbers after its "Dump
/// of file" line, or if `xpy` is too short.
void qm_file_ci_xpy(std::string_view fname, std::int32_t ni, std::int32_t na, std::int32_t nci,
                    std::span<double> xpy, std::int32_t& info);

/// Reads the excitation energies (Hartree) of `nci` roots, which stand before the amplitudes, from
/// the dump `fname` into the first elements of `energy`. `info` and endings are those of
/// qm_file_ci_xpy().
void qm_file_ci_energy(std::string_view fname, std::int32_t nci, std::span<double> energy,
                       std::int32_t& info);

}  // namespace flib
