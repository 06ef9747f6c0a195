#include "flib/excited/qm_file_mo_coeff_nbasis_nbsuse.h"

#include <bit>
#include <span>
#include <string>

#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/detail/keyword.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/qm_file/qm_file_type.h"
#include "flib/qm_file/type_tag.h"
#include "flib/search/search_word.h"

namespace flib {
namespace {

/// Sets everything to 0 and leaves memory alone that was never written to: the count may be absurd.
void clear(std::span<double> values) {
    for (double& value : values) {
        if (std::bit_cast<std::uint64_t>(value) != 0) value = 0;
    }
}

}  // namespace

// Alpha MO coefficients                      R   N=         484
//   9.95564210E-01  2.07893465E-02 -1.11022302E-16  1.23456789E-02  0.00000000E+00
void qm_file_mo_coeff_nbasis_nbsuse(std::string_view fname, std::int32_t nbasis,
                                    std::int32_t nbsuse, matrix_view<double> mo,
                                    std::int32_t& info) {
    fail_unless_positive("nbasis", nbasis);
    const line_buffer file_type = type_tag_of(fname);
    info = -1;
    clear(mo.all());
    const input_unit fid(fname);
    if (!(file_type == tag::gaussian_fchk)) stop_not_implemented();
    line_buffer line;
    go_to(fid, keyword::fchk_mo_coefficients, line);
    const std::size_t count = element_count({nbsuse, nbasis}, "the MO coefficients");
    if (count > mo.all().size()) {
        throw io_error(trim_right(fname), 0,
                       "nbsuse x nbasis = " + std::to_string(count) +
                           " MO coefficients were asked for, but there is room for " +
                           std::to_string(mo.all().size()));
    }
    read_items(fid, mo.all().first(count));
    info = 0;
}

}  // namespace flib
