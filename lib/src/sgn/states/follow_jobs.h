// A reference's states, followed into many jobs at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "sgn/set/displaced_set.h"
#include "sgn/states/follow.h"

namespace sgn {

struct follow_options {
    overlap_limits limits{};
    bool keep = false;  ///< what result files would hold, in job_result::values
    /// Also written, a result file per job and state, into the working directory: with the
    /// dipoles of the checkpoints if all jobs have them, else with those of the logs.
    bool write = false;
    std::int32_t workers = 1;  ///< jobs at a time
    /// Where the log and the dump of a checkpoint are: files_of or files_beside.
    job_files (*find)(const std::string& checkpoint) = files_of;
};

/// A job, or why there is nothing to say of it.
struct job_result {
    std::string checkpoint;  ///< as given
    std::string name;
    std::optional<followed_job> followed{};
    std::vector<result_file> values{};  ///< of each state of the reference, if they are kept
    std::string no_full_digits{};       ///< why there are none, with the file's name
    std::string no_forces{};            ///< why there are none, with the file's name
    std::int32_t forces_of = 0;         ///< the root that the job was run for; 0: not told
    std::size_t written_files = 0;
    std::exception_ptr failure{};  // turned into words where there is time and memory for it

    /// One line that names the file; blank if there is no failure.
    std::string reason() const;
};

/// Is told of every job that is done: how many are, of how many. Never by two threads at a time.
using follow_progress = std::function<void(std::size_t done, std::size_t all)>;

/// Follows the states of the reference into the job of every checkpoint, in their order. A job
/// given twice is treated once; what is wrong with a job stands in its result. Throws
/// flib::run_error if a result file would be that of another job, and flib::io_error if the
/// reference's cannot be written or its log has no forces for it.
std::vector<job_result> follow_jobs(const reference_set& reference,
                                    std::span<const std::string> checkpoints,
                                    const follow_options& how, const follow_progress& tell = {});

/// The state at `place` among those of the reference, if another one of its spin comes near to it,
/// there or in a job that was followed; where it is lost, nothing is near it.
std::optional<state_with_others> near_anywhere(const reference_set& reference,
                                               std::span<const job_result> jobs, std::size_t place);

/// Why the dipoles of the logs count and not the more exact ones of the checkpoints, of which all
/// jobs that were followed or none must have them: names the first file. Empty if they do.
std::string why_not_full_digits(const reference_set& reference, std::span<const job_result> jobs);

}  // namespace sgn
