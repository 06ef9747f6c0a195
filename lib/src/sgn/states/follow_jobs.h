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

#include "sgn/states/follow.h"

namespace sgn {

struct follow_options {
    overlap_limits limits{};
    bool write = false;        ///< a result file per job and state, into the working directory
    std::int32_t workers = 1;  ///< jobs at a time
};

/// A job, or why there is nothing to say of it.
struct job_result {
    std::string checkpoint;  ///< as given
    std::string name;
    std::optional<followed_job> followed{};
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
/// reference's cannot be written.
std::vector<job_result> follow_jobs(const reference_set& reference,
                                    std::span<const std::string> checkpoints,
                                    const follow_options& how, const follow_progress& tell = {});

}  // namespace sgn
