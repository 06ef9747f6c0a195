#include "flib/excited/qm_file_nci.h"

#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/detail/keyword.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/qm_file/type_tag.h"
#include "flib/search/search_word.h"

namespace flib {

namespace {

constexpr std::string_view roots = "roots to seek";

//  NBasis=    22 NAE=     5 NBE=     5 NFC=     1 NFV=     0
//  NROrb=     21 NOA=     4 NOB=     4 NVA=    17 NVB=    17
void read_orbitals(std::int32_t fid, std::int32_t& ni, std::int32_t& na, std::int32_t& nae,
                   std::int32_t& nfc, std::int32_t& nfv) {
    go_to_end(fid);
    line_buffer line;
    if (!search_word_back(fid, 16, 19, keyword::gaussian_electrons, line)) {
        miss_keyword(keyword::gaussian_electrons);
    }
    read_items(held_record{fid, line.padded()}, discard{3}, nae, discard{3}, nfc, discard{1}, nfv);
    // From the file, not from one record of it: a short row goes on with the next line.
    read_items(fid, discard{3}, ni, discard{3}, na);
}

/// Behind the orbitals. False if it is not told.
//  Max sub-space:   160 roots to seek:    16 dimension of matrix:          136
bool read_roots(std::int32_t fid, std::int32_t& nci) {
    line_buffer line;
    if (!search_word_free(fid, roots, line)) return false;
    read_items(held_record{fid, line.padded()}, discard{6}, nci);
    return true;
}

}  // namespace

void qm_file_nci(std::string_view fname, std::int32_t& ni, std::int32_t& na, std::int32_t& nci,
                 std::int32_t& nae, std::int32_t& nfc, std::int32_t& nfv, std::int32_t& info) {
    info = -1;
    const recognised_file file(fname);
    info = file.class_code;
    file.require(tag::gaussian_log);
    read_orbitals(file.fid, ni, na, nae, nfc, nfv);
    if (!read_roots(file.fid, nci)) miss_keyword(roots);
}

excitation_space qm_file_excitation_space(std::string_view fname) {
    const recognised_file file(fname);
    file.require(tag::gaussian_log);
    excitation_space found;
    read_orbitals(file.fid, found.ni, found.na, found.nae, found.nfc, found.nfv);
    if (std::int32_t nci = 0; read_roots(file.fid, nci)) found.nci = nci;
    return found;
}

}  // namespace flib
