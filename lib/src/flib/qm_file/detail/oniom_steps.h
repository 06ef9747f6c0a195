// The layers of an ONIOM job, from a file that is open.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#pragma GCC visibility push(hidden)
namespace flib {

/// qm_file_ifoniom() of an open file of kind `tag`, which is blank if it is not known, from its
/// start; leaves the unit where the search ended.
bool is_oniom(std::int32_t fid, std::string_view tag);

struct layer_counts {
    std::int32_t nqm = 0;    ///< atoms of the high layer
    std::int32_t nqmmm = 0;  ///< atoms of the whole system
};

/// The atoms of the whole system alone, from the start of an open Gaussian log. The count keeps its
/// value if the log does not give it.
void count_atoms(std::int32_t fid, layer_counts& counts);

/// qm_file_natom_oniom_qm() of an open Gaussian log, from its start. Counts that the log does not
/// give keep their values.
void count_layers(std::int32_t fid, layer_counts& counts);

/// qm_file_oniom_index() of an open Gaussian log, from its start.
void read_layer_index(std::int32_t fid, std::int32_t nqmmm, std::span<std::int32_t> idx);

/// The layer of each atom of an open formatted checkpoint, from its start: 1 (the high one), 2 or
/// 3. Empty if it does not tell them; a job without layers may have all its atoms in the first.
///
///     Atom Layers                                I   N=           6
///                1           1           1           2           2           2
std::vector<std::int32_t> read_checkpoint_layers(std::int32_t fid);

}  // namespace flib
#pragma GCC visibility pop
