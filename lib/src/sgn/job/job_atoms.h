// The atoms of a job.
#pragma once

#include <cstdint>
#include <string_view>

#include "flib/util/matrix.h"

namespace sgn {

/// Atoms in the order of the log; of an ONIOM job, those of the high layer.
struct job_atoms {
    /// Zeros; throws flib::run_error without enough memory.
    explicit job_atoms(std::int32_t n);

    std::int32_t natom;
    flib::matrix<double> x;                // 3 x natom, Bohr
    flib::zeroed_array<std::int32_t> nat;  // atomic numbers
    flib::zeroed_array<double> mass;       // u
};

/// Reads the `atoms.natom` atoms of the job whose log is `flog`. Ends as the readers do; throws
/// flib::io_error if the high layer of an ONIOM job has another number of atoms.
void read_job_atoms(std::string_view flog, job_atoms& atoms);

}  // namespace sgn
