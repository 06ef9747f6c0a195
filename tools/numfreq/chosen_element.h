// The element of a job's transition density by which its sign is judged.
#pragma once

#include "flib/excited/chosen_element.h"

namespace numfreq {

using flib::density_at;
using flib::density_source;
using flib::largest_of_density;
using flib::require_fits_reference;

}  // namespace numfreq
