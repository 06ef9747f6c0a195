// A job with its states, read from its three files.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "flib/excited/qm_file_state_moments.h"
#include "flib/excited/root_norms.h"
#include "flib/util/matrix.h"
#include "sgn/job/job_atoms.h"
#include "sgn/job/job_counts.h"

namespace sgn {

/// A job's name and files.
struct job_files {
    std::string name;  ///< of the checkpoint, without directory and last extension
    std::string checkpoint;
    std::string log;
    std::string dump;
};

/// The files of the job with this checkpoint, which stays as given: log and dump in the working
/// directory, as stigruz looks for them. Throws flib::run_error if its name is blank.
job_files files_of(const std::string& checkpoint);

/// The same with log and dump in the directory of the checkpoint.
job_files files_beside(const std::string& checkpoint);

/// What a job's files hold of its states: of all roots those that converged and that the log
/// prints.
struct job {
    /// Zeros for so many states. Throws flib::run_error without enough memory.
    job(job_files its_files, const job_counts& sizes, std::int32_t its_states);

    /// Component 1 of the amplitudes of `root` (from 1 on), ma x mi: X+Y of alpha spin.
    std::span<const double> amplitudes(std::int32_t root) const;

    /// The spin of `root`; nullopt if the dump does not tell it.
    std::optional<flib::root_spin> spin_of(std::int32_t root) const;

    job_files files;
    job_counts counts;  ///< mci: roots to seek of the log, else roots of the dump
    std::int32_t states;
    job_atoms atoms;
    flib::matrix<double> force;         ///< 3 x natom, Hartree/Bohr
    std::string no_forces{};            ///< why there are none; empty if there are
    std::int32_t forces_of = 0;         ///< the root that the job was run for; 0: not told
    flib::matrix<double> moc;           ///< nbasis x nbsuse: basis function, orbital
    flib::matrix<double> tdip;          ///< 3 x states, atomic units
    std::vector<double> energy;         ///< of excitation, Hartree
    flib::zeroed_array<double> xpy;     ///< ma x mi x 2 x states (or more)
    std::vector<flib::root_spin> spin;  ///< of every state, or empty
    /// Of all states in nine digits, from the checkpoint; they round to the log's dipoles.
    std::optional<flib::state_moments> moments{};
    std::string no_moments{};  ///< why there are none, with the file's name; empty if there are
};

/// Reads the job with these files. Throws flib::run_error, which names the file, if one of its
/// files is of another kind, cannot be read or changes meanwhile, and if overlaps make no sense
/// with what it holds: a dump of another record or with fewer roots than the log has states, counts
/// that contradict each other, numbers that are not finite, amplitudes that are not normalised as
/// amplitudes are, a root that is neither a singlet nor a triplet. With a `reference`, the job must
/// also have its atoms and sizes; only the numbers of states and roots may be others.
job read_job(const job_files& files, const job* reference = nullptr);

/// The same of files_of() a checkpoint.
job read_job(const std::string& checkpoint, const job* reference = nullptr);

}  // namespace sgn
