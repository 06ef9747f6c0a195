// One element of a transition density.
#pragma once

#include <cstdint>

#include "flib/util/math.h"
#include "states/job.h"

namespace states {

/// The element at row and column `at` of the transition density of `root`, both from 1 on, with
/// the bits that flib::get_ci_density_nbasis_nbsuse() gives it.
double density_element(const job& now, std::int32_t root, const flib::element_location& at);

}  // namespace states
