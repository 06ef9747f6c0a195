// Tables for spreadsheets and scripts.
#pragma once

#include <string>

#include "sgn/check/report.h"

namespace sgn_derive {

/// The derivatives of the dipole, a line for each coordinate, and their uncertainties (au by Bohr).
std::string derivatives_csv(const sgn::report& of);

/// The normal modes, a line each; units are those of sgn::normal_mode.
std::string modes_csv(const sgn::report& of);

}  // namespace sgn_derive
