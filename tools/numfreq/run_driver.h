// One run of the sign tool.
#pragma once

#include <span>
#include <string_view>

namespace numfreq {

/// Treats one job: makes the sign of its transition dipole that of the reference and writes the
/// result file into the working directory.
///
/// `arguments` are the checkpoint file and, for a mapped run, the reference's result file; any
/// number of arguments but two makes a reference run, which uses the first. Ends with
/// flib::stop_run or flib::run_error if it cannot be done; an earlier result file is then what it
/// was.
void run_driver(std::span<const std::string_view> arguments);

}  // namespace numfreq
