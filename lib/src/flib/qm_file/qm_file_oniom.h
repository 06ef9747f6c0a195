// The layers of an ONIOM calculation.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace flib {

/// Whether the file `fname` is of an ONIOM job: the word ONIOM, in letters of either case, stands
/// in its first 101 lines or in the route of an input file, or a Gaussian log has charges for the
/// model system in front of its atoms. `info` is the class code of qm_file_type(). Throws io_error
/// if the file cannot be opened.
void qm_file_ifoniom(std::string_view fname, bool& ifoniom, std::int32_t& info);

/// Counts the atoms of the high layer (`nqm`) and of the whole system (`nqmmm`) in a Gaussian log,
/// from its "NAtoms=" line and the list of atoms below the charges. What stands in parentheses
/// behind the symbol of an atom does not count.
///
/// `nqm` is 0 for a file of another kind, without such a list or with one that does not tell the
/// layers (of atoms that were read from a checkpoint); `nqmmm` keeps its value for a file
/// of another kind or without an "NAtoms=" line. `info` is always -1. Throws io_error if the file
/// cannot be opened, the list is too short or a parenthesis does not close.
void qm_file_natom_oniom_qm(std::string_view fname, std::int32_t& nqm, std::int32_t& nqmmm,
                            std::int32_t& info);

/// Stores the positions (1-based, ascending) of the high-layer atoms of a Gaussian log or input
/// file in `idx`, which has `nqm` elements; those that are not needed keep their values. `nqmmm` is
/// the number of atoms of a log; for an input file it is set.
///
/// `info` is -1 for a log, else that of qm_file_ifoniom(). Without ONIOM or without an atom list
/// `idx` keeps its values. Throws stop_run (status 1) for a layer that is not made of letters, with
/// a hint if the list of a log tells no layers at all; io_error if `idx` is too short, if there are
/// more than `nqm` high-layer atoms, if the file cannot be opened, if its atom list is too short or
/// if a parenthesis behind a symbol does not close.
void qm_file_oniom_index(std::string_view fname, std::int32_t nqm, std::int32_t& nqmmm,
                         std::span<std::int32_t> idx, std::int32_t& info);

/// Throws io_error unless `atom`, an entry of the index of the file `fname`, is one of the `nqmmm`
/// atoms. A file that changes between two reads of it can leave entries at 0.
void require_in_system(std::string_view fname, std::int32_t atom, std::int32_t nqmmm);

}  // namespace flib
