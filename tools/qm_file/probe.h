// One reader's raw outputs, for bug reports and exact comparisons.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace qm_file {

/// Names of the routines and of their integer inputs, one per line.
std::string probe_usage();

/// Calls `routine` on `file` and returns one value a line: name, indices, "=", value. Outputs are
/// preset (integers -7, reals -7.0, texts blank), so that what is left unchanged shows. Ends as the
/// routine does; throws flib::run_error for an unknown routine or a wrong number of inputs.
std::string probe(std::string_view routine, std::string_view file,
                  std::span<const std::int32_t> inputs);

}  // namespace qm_file
