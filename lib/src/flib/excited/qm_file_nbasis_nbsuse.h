// The numbers of electrons and basis functions.
#pragma once

#include <cstdint>
#include <string_view>

namespace flib {

/// Reads the numbers of alpha (`na`) and beta (`nb`) electrons, of basis functions (`nbasis`) and
/// of independent functions (`nbsuse`) from the Gaussian formatted checkpoint or log `fname`.
///
/// Of a log the last "RedAO=" line is looked for, and from there upwards the nearest "NAE=" line,
/// which gives the numbers. A job step prints them in the other order, so these are the numbers of
/// the step before the last, and a log of a single step has none. `nbsuse` is read from standard
/// input: its next line holds a label and the number. What a checkpoint does not hold is 0, except
/// that `nbsuse` is then `nbasis`; a checkpoint with `nbasis` squared coefficients overrides its
/// own number of independent functions. For a file of another kind all are 0. `info` is always -1.
///
/// Throws io_error if the file cannot be opened or a number cannot be read; stop_run (status 1)
/// for a log without a "RedAO=" line, or without a "NAE=" line above it.
void qm_file_nbasis_nbsuse(std::string_view fname, std::int32_t& na, std::int32_t& nb,
                           std::int32_t& nbasis, std::int32_t& nbsuse, std::int32_t& info);

}  // namespace flib
