// A set of one state, straight from jobs.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "sgn/set/displaced_set.h"
#include "sgn/states/follow_jobs.h"

namespace sgn {

/// What result files of a state would hold, made of jobs whose states were followed.
struct job_set {
    std::int32_t state = 0;  ///< of the reference, from 1 on
    result_file reference;
    std::vector<result_file> files;
    /// Why the dipoles are those of the logs, in four decimals; empty if they are those of the
    /// checkpoints. There is one source for all.
    std::string no_full_digits;
    /// Why there are no forces, which are then zeros: those of a log belong to the state that its
    /// job was run for. Names the first job. Empty if there are.
    std::string no_forces;
    std::optional<state_with_others> near{};  ///< if another state comes near anywhere
    std::vector<std::string> mixed;           ///< a line for each job in which the state is mixed
};

/// Reads the jobs with these checkpoints and follows `state` of the reference into all of them;
/// without, the state that the reference was run for. A job given twice, and the reference among
/// the jobs, count once. Throws flib::run_error, which names the file, if a job cannot be read or
/// no root of it continues the state.
job_set set_of_jobs(const std::string& reference, std::span<const std::string> checkpoints,
                    std::optional<std::int32_t> state, const follow_options& how = {},
                    const follow_progress& tell = {});

}  // namespace sgn
