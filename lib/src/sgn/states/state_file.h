// Result files of single states.
#pragma once

#include <string>

#include "sgn/states/follow.h"

namespace sgn {

/// "NAME_sSTATE.sgn".
std::string state_file_name(const std::string& name, std::int32_t state);

/// Writes the result file of a state of the reference into the working directory, in the layout of
/// stigruz. Throws flib::io_error; an earlier file is then what it was.
void write_reference_state(const reference_set& from, const reference_state& state);

/// The same of what became of a state in a job. Sign and dipole of a lost state are 0, as are those
/// of a job whose sign stigruz cannot tell.
void write_followed_state(const reference_set& from, const job& now, const followed_state& state);

}  // namespace sgn
