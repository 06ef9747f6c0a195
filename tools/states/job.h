// A job with all its states, read from its three files.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "flib/util/matrix.h"
#include "numfreq/job_atoms.h"
#include "numfreq/job_counts.h"

namespace states {

/// A job's name and files: the checkpoint as given, log and dump in the working directory.
struct job_files {
    std::string name;  ///< of the checkpoint, without directory and last extension
    std::string checkpoint;
    std::string log;
    std::string dump;
};

/// The files of the job with this checkpoint. Throws flib::run_error if its name is blank.
job_files files_of(const std::string& checkpoint);

/// What a job's files hold.
struct job {
    /// Zeros. Throws flib::run_error without enough memory.
    job(job_files its_files, const numfreq::job_counts& sizes);

    /// Component 1 of the amplitudes of `root` (from 1 on), ma x mi.
    std::span<const double> amplitudes(std::int32_t root) const;

    job_files files;
    numfreq::job_counts counts;
    numfreq::job_atoms atoms;
    flib::matrix<double> force;      ///< 3 x natom, Hartree/Bohr
    flib::matrix<double> moc;        ///< nbasis x nbasis: basis function, orbital
    flib::matrix<double> tdip;       ///< 3 x mci, atomic units
    std::vector<double> energy;      ///< of excitation, Hartree
    flib::zeroed_array<double> xpy;  ///< ma x mi x 2 x mci
};

/// Reads the job with this checkpoint. Throws flib::run_error, which names the file, if one of its
/// files is of another kind, cannot be read or changes meanwhile, and if overlaps make no sense
/// with what it holds: no roots, fewer independent than basis functions, counts that contradict
/// each other, numbers that are not finite, a root without amplitudes. With a `reference`, the job
/// must also have its atoms and sizes; only the number of roots may be another.
job read_job(const std::string& checkpoint, const job* reference = nullptr);

}  // namespace states
