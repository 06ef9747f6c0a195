// Result files of single states.
#pragma once

#include <string>
#include <vector>

#include "sgn/set/displaced_set.h"
#include "sgn/states/follow.h"

namespace sgn {

/// Where the atoms of a job are, as its log tells (Angstrom).
std::vector<vec3> coordinates_of(const job& of);

/// The coordinates in full digits (Angstrom); empty where only the log tells them. The moments of a
/// checkpoint that is of another geometry than the log are no longer those of the job then, and
/// job::no_moments says so.
std::vector<vec3> take_full_coordinates(job& of);

/// "NAME_sSTATE.sgn".
std::string state_file_name(const std::string& name, std::int32_t state);

/// What the result file of a state of the reference holds, in the layout of stigruz; its dipole is
/// that of the log, and with it goes what the checkpoint has in more digits, if it does. The name
/// is that of the checkpoint. Without forces of the log they are zeros.
result_file values_of_reference(const reference_set& from, const reference_state& state);

/// The same of what became of a state in a job. Sign and dipole of a lost state are 0, as are those
/// of a job whose sign stigruz cannot tell.
result_file values_of_followed(const reference_set& from, const job& now,
                               const followed_state& state);

/// Writes `values` as the result file `name` in the working directory; the dipole is that of the
/// checkpoint where there is one and `full_digits` wants it. Throws flib::io_error; an earlier file
/// is then what it was.
void write_state_file(const std::string& name, const result_file& values, bool full_digits);

}  // namespace sgn
