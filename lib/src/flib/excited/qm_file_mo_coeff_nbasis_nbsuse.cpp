#include "flib/excited/qm_file_mo_coeff_nbasis_nbsuse.h"

#include <bit>
#include <span>
#include <string>

#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/detail/keyword.h"
#include "flib/qm_file/detail/reader_steps.h"
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
    require_positive("nbasis", nbasis);
    info = -1;
    clear(mo.all());
    const std::size_t count = element_count({nbsuse, nbasis}, "the MO coefficients");
    require_room(fname, count, "MO coefficients", mo.all().size());
    const recognised_file file(fname);
    file.require(tag::gaussian_fchk);
    line_buffer line;
    go_to(file.fid, keyword::fchk_mo_coefficients, line);
    read_items(file.fid, mo.all().first(count));
    info = 0;
}

}  // namespace flib
