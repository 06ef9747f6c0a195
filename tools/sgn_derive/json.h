// A report for other programs.
#pragma once

#include <string>

#include "sgn/check/report.h"

namespace sgn_derive {

/// The report as one JSON object. Coordinates in Angstrom, masses in u, wavenumbers in 1/cm, all
/// else in atomic units; mass-weighted coordinates with electron masses.
std::string json_of(const sgn::report& of);

}  // namespace sgn_derive
