// The number of atoms of a system.
#pragma once

#include <cstdint>
#include <string_view>

namespace flib {

/// Reads the number of atoms from the file `fname` of any program with a row in the table.
///
/// `natom` is 0, and `info` -1, for a file of another kind, and where a Gaussian or ChemShell file
/// lacks the keyword; else `info` is 0. Throws io_error if the file cannot be opened or ends
/// before the count was found.
void qm_file_natom(std::string_view fname, std::int32_t& natom, std::int32_t& info);

}  // namespace flib
