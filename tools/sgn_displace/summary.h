// What sgn_displace tells when the files are written.
#pragma once

#include <string>
#include <vector>

#include "sgn_displace/displaced_jobs.h"
#include "sgn_displace/options.h"

namespace sgn_displace {

/// What was written, what was changed against the input, and the commands that come next.
std::string summary(const options& from, const job_template& job,
                    const std::vector<displaced_job>& jobs);

}  // namespace sgn_displace
