// What sgn_displace tells when the files are written.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "sgn/inputs/displaced_jobs.h"
#include "sgn_displace/options.h"

namespace sgn_displace {

/// What was written, what was changed against the input, and the commands that come next.
std::string summary(const options& from, const sgn::inputs::job_template& job,
                    const std::vector<sgn::inputs::displaced_job>& jobs,
                    std::span<const sgn::inputs::named_step> steps);

}  // namespace sgn_displace
