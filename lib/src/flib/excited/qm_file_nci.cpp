#include "flib/excited/qm_file_nci.h"

#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/detail/keyword.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/qm_file/type_tag.h"
#include "flib/search/search_word.h"

namespace flib {

//  NBasis=    22 NAE=     5 NBE=     5 NFC=     1 NFV=     0
//  NROrb=     21 NOA=     4 NOB=     4 NVA=    17 NVB=    17
//  Max sub-space:    40 roots to seek:     4 dimension of matrix:           68
void qm_file_nci(std::string_view fname, std::int32_t& ni, std::int32_t& na, std::int32_t& nci,
                 std::int32_t& nae, std::int32_t& nfc, std::int32_t& nfv, std::int32_t& info) {
    constexpr std::string_view roots = "roots to seek";
    info = -1;
    const recognised_file file(fname);
    info = file.class_code;
    file.require(tag::gaussian_log);
    const std::int32_t fid = file.fid;
    go_to_end(fid);
    line_buffer line;
    if (!search_word_back(fid, 16, 19, keyword::gaussian_electrons, line)) {
        miss_keyword(keyword::gaussian_electrons);
    }
    read_items(held_record{fid, line.padded()}, discard{3}, nae, discard{3}, nfc, discard{1}, nfv);
    // From the file, not from one record of it: a short row goes on with the next line.
    read_items(fid, discard{3}, ni, discard{3}, na);
    if (!search_word_free(fid, roots, line)) miss_keyword(roots);
    read_items(held_record{fid, line.padded()}, discard{6}, nci);
}

}  // namespace flib
