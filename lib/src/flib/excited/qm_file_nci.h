// The size of an excitation space.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace flib {

/// Reads from the last job step of the Gaussian log `fname` the numbers of active occupied (`ni`)
/// and active virtual (`na`) orbitals, of roots sought (`nci`), of alpha electrons (`nae`), and of
/// frozen core (`nfc`) and frozen virtual (`nfv`) orbitals. `info` is the class code of
/// qm_file_type().
///
/// Throws stop_run (status 1) for a file of another kind and for a missing "NAE=" or "roots to
/// seek" line; io_error if the file cannot be opened or a count cannot be read.
void qm_file_nci(std::string_view fname, std::int32_t& ni, std::int32_t& na, std::int32_t& nci,
                 std::int32_t& nae, std::int32_t& nfc, std::int32_t& nfv, std::int32_t& info);

/// What qm_file_nci() reads.
struct excitation_space {
    std::int32_t ni = 0;
    std::int32_t na = 0;
    std::int32_t nae = 0;
    std::int32_t nfc = 0;
    std::int32_t nfv = 0;
    std::optional<std::int32_t> nci{};
};

/// The same of a log that need not tell the roots: only one of a route with `#p` does. Ends as
/// qm_file_nci() does, but for a missing "roots to seek" line, without which `nci` is not known.
excitation_space qm_file_excitation_space(std::string_view fname);

}  // namespace flib
