// Numbers in the columns in which checkpoints and dumps hold them, many at a time.
#pragma once

#include <cstddef>

#pragma GCC visibility push(hidden)
namespace flib {

/// Reads whole lines of five numbers each from `at` on, the start of a line: fields of 16 columns
/// as in a formatted checkpoint (` -9.95564210E-01`); of 20 behind one blank as rwfdump prints them
/// (`     -0.15494406D-05`); of 20 or 22 with twelve decimals (`-0.136409605669D-15`). Stops before
/// the first line that is not exactly so, that does not end before `end` or that holds more numbers
/// than `most` leaves; before a number whose rounding is in doubt, too, and where the processor has
/// not the instructions. All these are for the reader of single numbers.
///
/// Returns how many numbers were read into `values`, correctly rounded; `at` then stands behind the
/// newline of their last line. If `values` is null, they are only looked at.
std::size_t scan_columns(const char*& at, const char* end, double* values, std::size_t most);

/// Whether scan_columns() may read anything, for the whole process: to compare both ways.
void allow_scan_columns(bool allowed);

}  // namespace flib
#pragma GCC visibility pop
