// Whether a checkpoint has basis functions at all.
#pragma once

#include <cstdint>
#include <string_view>

namespace flib {

/// What a checkpoint without basis functions is, in words.
inline constexpr std::string_view no_orbitals =
    "0 basis functions: the checkpoint of an ONIOM job whose low level is a force field holds no "
    "orbitals; orbitals, amplitudes and transition dipole are in the files of the high model's own "
    "job";

/// Whether an open formatted checkpoint says that it has no basis functions ("Number of basis
/// functions"), from its start.
bool has_no_orbitals(std::int32_t fid);

/// Ends the run if `nbasis`, the number of basis functions of the checkpoint `fname`, is below 1:
/// stop_run (status 0), with no_orbitals as its hint if the checkpoint says so itself.
void require_basis_functions(std::string_view fname, std::int32_t nbasis);

}  // namespace flib
