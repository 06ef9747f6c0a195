#include "flib/excited/basis_functions.h"

#include <string>

#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/detail/keyword.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/search/search_word.h"

namespace flib {

bool has_no_orbitals(std::int32_t fid) {
    line_buffer line;
    if (!search_word(fid, 1, 25, keyword::fchk_basis_functions, line)) return false;
    std::int32_t count = 0;
    read_items(held_record{fid, line.padded()}, discard{5}, count);
    return count == 0;
}

void require_basis_functions(std::string_view fname, std::int32_t nbasis) {
    if (nbasis >= 1) return;
    std::string hint;
    try {
        if (has_no_orbitals(input_unit(fname))) hint = no_orbitals;
    } catch (const run_error&) {
        // The number is wrong all the same.
    }
    require_positive("nbasis", nbasis, hint);
}

}  // namespace flib
