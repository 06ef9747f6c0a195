// What became of the states, as a table, as JSON and as CSV.
#pragma once

#include <string>

#include "common/terminal.h"
#include "sgn/states/follow_jobs.h"
#include "sgn_states/options.h"

namespace sgn_states {

struct set_result {
    sgn::reference_set reference;
    std::vector<sgn::job_result> jobs{};  ///< in the order given
};

/// A row per state of the reference, then per job and state, and lines that sum up.
std::string table(const set_result& result, const options& how, const tools::terminal& on);

/// One object: "reference", "states", "jobs", "thresholds", "unreadable". Energies are in eV, all
/// else in atomic units.
std::string json(const set_result& result, const options& how);

/// A line of names and a line per job and state; RFC 4180. Empty: not known.
std::string csv(const set_result& result);

/// 0 if all states are the same and clear, 1 if something deserves doubt, 2 if a job could not be
/// read.
int status_of(const set_result& result);

}  // namespace sgn_states
