// A reference and its jobs, from their files to what became of the states.
#pragma once

#include <cstddef>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "sgn_states/options.h"
#include "states/follow.h"

namespace sgn_states {

/// A job, or why there is nothing to say of it.
struct job_result {
    std::string checkpoint;  ///< as given
    std::string name;
    std::optional<states::followed_job> followed{};
    std::size_t written_files = 0;
    std::exception_ptr failure{};  // turned into words where there is time and memory for it

    /// One line that names the file; blank if there is no failure.
    std::string reason() const;
};

struct set_result {
    states::reference_set reference;
    std::vector<job_result> jobs{};  ///< in the order given
};

/// Is told of every job that is done: how many are, of how many.
using progress = std::function<void(std::size_t done, std::size_t all)>;

/// Reads the reference and follows its states into every job; with `write`, result files are
/// written on the way. A job given twice is treated once. Throws flib::run_error if the reference
/// cannot be read, if it has not all the states asked for, and if a result file would be that of
/// another job.
set_result run(const options& how, const progress& tell);

}  // namespace sgn_states
