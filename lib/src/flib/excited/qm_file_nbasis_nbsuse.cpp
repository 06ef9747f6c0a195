#include "flib/excited/qm_file_nbasis_nbsuse.h"

#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/detail/keyword.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/qm_file/type_tag.h"
#include "flib/search/search_word.h"

namespace flib {
namespace {

struct basis_counts {
    std::int32_t na = 0;
    std::int32_t nb = 0;
    std::int32_t nbasis = 0;
    std::int32_t nbsuse = 0;
};

// Number of independent functions            I               22
// Alpha MO coefficients                      R   N=         484
bool take_sixth_item(std::int32_t fid, std::string_view word, std::int32_t& count) {
    line_buffer line;
    if (!search_word_free(fid, word, line)) return false;
    read_items(held_record{fid, line.padded()}, discard{5}, count);
    return true;
}

// Number of alpha electrons                  I                5
// Number of beta electrons                   I                5
// Number of basis functions                  I               22
// Number of independent functions            I               22
void gaussian_fchk_basis(std::int32_t fid, basis_counts& counts) {
    // In the order of the file: nothing is rewound, so a missing line hides those that follow.
    take_sixth_item(fid, "Number of alpha electrons", counts.na);
    take_sixth_item(fid, "Number of beta electrons", counts.nb);
    take_sixth_item(fid, keyword::fchk_basis_functions, counts.nbasis);
    if (!take_sixth_item(fid, "Number of independent functions", counts.nbsuse)) {
        counts.nbsuse = counts.nbasis;
    }
    rewind_unit(fid);
    std::int32_t coefficients = 0;
    const auto squared = std::int64_t{counts.nbasis} * counts.nbasis;
    if (take_sixth_item(fid, keyword::fchk_mo_coefficients, coefficients) &&
        squared == coefficients) {
        counts.nbsuse = counts.nbasis;
    }
}

//  NBasis=    22 RedAO= T EigKep=  2.41D-02  NBF=    22
//  NBasis=    22 NAE=     5 NBE=     5 NFC=     1 NFV=     0
void gaussian_log_basis(std::int32_t fid, basis_counts& counts) {
    constexpr std::string_view reduced_basis = "RedAO=";
    line_buffer line;
    go_to_end(fid);
    if (!search_word_back(fid, 16, 21, reduced_basis, line)) miss_keyword(reduced_basis);
    read_items(held_record{fid, line.padded()}, discard{1}, counts.nbasis);
    // Not from the log: the caller supplies it.
    read_items(standard_input{}, discard{1}, counts.nbsuse);
    if (!search_word_back(fid, 16, 19, keyword::gaussian_electrons, line)) {
        miss_keyword(keyword::gaussian_electrons);
    }
    read_items(held_record{fid, line.padded()}, discard{1}, counts.nbasis, discard{1}, counts.na,
               discard{1}, counts.nb);
}

constexpr reader_row<basis_counts&> basis_table[] = {
    {tag::gaussian_fchk, gaussian_fchk_basis},
    {tag::gaussian_log, gaussian_log_basis},
};

}  // namespace

void qm_file_nbasis_nbsuse(std::string_view fname, std::int32_t& na, std::int32_t& nb,
                           std::int32_t& nbasis, std::int32_t& nbsuse, std::int32_t& info) {
    basis_counts counts;
    info = -1;
    const recognised_file file(fname);
    read_by_row(file, basis_table, counts, info);
    na = counts.na;
    nb = counts.nb;
    nbasis = counts.nbasis;
    nbsuse = counts.nbsuse;
}

}  // namespace flib
