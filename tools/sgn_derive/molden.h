// Normal modes for viewers.
#pragma once

#include <string>

#include "sgn/check/report.h"

namespace sgn_derive {

/// The geometry, the wavenumbers and the Cartesian displacements in Molden format (Bohr).
std::string molden_of(const sgn::report& of);

}  // namespace sgn_derive
