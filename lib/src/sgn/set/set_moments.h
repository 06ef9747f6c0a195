// What the checkpoints of a set's jobs tell of its state, where they lie beside the result files.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "flib/excited/qm_file_state_moments.h"
#include "sgn/set/derivatives.h"
#include "sgn/set/displaced_set.h"
#include "sgn/set/table.h"

namespace sgn {

/// The state of a job whose dipole, with the sign of the result file, rounds to the one there.
struct job_moments {
    std::int32_t state = 0;              ///< from 1 on; 0: the job takes no part in the set
    std::int32_t target = 0;             ///< the state that the job was run for
    flib::moment_rows row{};             ///< one row: the state's moments with that sign
    std::optional<double> excitation{};  ///< energy of excitation, Hartree
};

struct set_moments {
    /// Of all jobs of the set in their order; or of the reference alone; or none.
    std::vector<job_moments> jobs;
    std::string why_not;  ///< why not of all, in words that name the file; empty if of all

    bool of_all() const { return why_not.empty() && !jobs.empty(); }
};

/// The name of a file of the job that the result file `name` is of, its checkpoint (".fchk") or
/// log: NAME.fchk beside NAME.sgn or, where there is none, beside NAME_sK.sgn.
std::string file_beside(const std::string& name, const std::string& suffix);

/// One row: that of `state` (from 1 on) times `sign`, since the phase of a state turns all of its
/// moments round.
flib::moment_rows state_row(const flib::moment_rows& rows, std::int32_t state, double sign);

/// Reads them. Whatever is missing, damaged or of another run is told by `why_not`.
set_moments read_set_moments(const displaced_set& set);

/// Derivatives of one of the moments, of `columns` components, by all coordinates: 3N x columns, au
/// by Bohr. Empty if not all jobs have moments.
table derivatives_of(const set_moments& moments, std::vector<double> flib::moment_rows::*moment,
                     std::size_t columns, const derivatives& of);

/// The derivatives of the energy of excitation by all coordinates, Hartree/Bohr. Empty if it is not
/// told of all jobs.
std::vector<double> excitation_gradient(const set_moments& moments, const derivatives& of);

}  // namespace sgn
