// The result file, for rooms that still know it by this name.
#pragma once

#include "sgn/result/sgn_file.h"

namespace numfreq {

using sgn::read_sgn_file;
using sgn::report_symbol;
using sgn::write_sgn_body;
using sgn::write_sgn_parameters;

}  // namespace numfreq
