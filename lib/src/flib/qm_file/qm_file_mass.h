// The atomic masses of a molecule.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace flib {

/// Reads the masses (u) of `natom` atoms, in file order, from the file `fname`: those that the
/// program printed or, without them, those of the elements in its first atom table. `mass` has
/// `natom` elements; those that the file does not give keep their values.
///
/// `info` becomes 0 after an NWChem table and stays -1 after every other, read or not. Throws
/// stop_run (status 0) if `natom` is below 1; io_error if the file cannot be opened or a table is
/// too short. A missing keyword is no error.
void qm_file_mass(std::string_view fname, std::int32_t natom, std::span<double> mass,
                  std::int32_t& info);

}  // namespace flib
