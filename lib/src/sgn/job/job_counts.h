// The sizes of a job.
#pragma once

#include <cstdint>
#include <string_view>

namespace sgn {

struct job_counts {
    std::int32_t natom = 0;   ///< atoms; of an ONIOM job, those of the high layer
    std::int32_t nbasis = 0;  ///< basis functions
    std::int32_t nbsuse = 0;  ///< independent functions
    std::int32_t mi = 0;      ///< active occupied orbitals
    std::int32_t ma = 0;      ///< active virtual orbitals
    std::int32_t mci = 0;     ///< roots to seek
    std::int32_t nfc = 0;     ///< frozen core orbitals
    std::int32_t nfv = 0;     ///< frozen virtual orbitals
};

/// Reads the sizes of the job whose log is `flog` and whose checkpoint is `ffch`. Ends as the
/// readers do.
job_counts count_job(std::string_view flog, std::string_view ffch);

/// The same of a log that need not tell the roots; `mci` is then 0.
job_counts count_orbitals(std::string_view flog, std::string_view ffch);

}  // namespace sgn
