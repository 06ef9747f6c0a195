// The atomic numbers of a molecule.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace flib {

/// Reads the atomic numbers of `natom` atoms, in file order, from the first atom table of the file
/// `fname`. `nat` has `natom` elements; those that the file does not give (another kind of file, an
/// element symbol that is not known) keep their values.
///
/// `info` becomes 0 after an NWChem table and stays -1 after every other, read or not. Throws
/// stop_run (status 0) if `natom` is below 1, and for the kinds that check it when an atomic number
/// is not in 0 to 118; io_error if the file cannot be opened, has no table, or a table too short.
void qm_file_nat(std::string_view fname, std::int32_t natom, std::span<std::int32_t> nat,
                 std::int32_t& info);

}  // namespace flib
