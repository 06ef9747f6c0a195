// The layers of an ONIOM job, from a Gaussian log that is open.
#pragma once

#include <cstdint>
#include <span>

namespace flib {

/// qm_file_ifoniom() of an open file, from its start; leaves the unit where the search ended.
bool names_oniom(std::int32_t fid);

struct layer_counts {
    std::int32_t nqm = 0;    ///< atoms of the high layer
    std::int32_t nqmmm = 0;  ///< atoms of the whole system
};

/// qm_file_natom_oniom_qm() of an open Gaussian log, from its start. Counts that the log does not
/// give keep their values.
void count_layers(std::int32_t fid, layer_counts& counts);

/// qm_file_oniom_index() of an open Gaussian log, from its start.
void read_layer_index(std::int32_t fid, std::int32_t nqmmm, std::span<std::int32_t> idx);

}  // namespace flib
