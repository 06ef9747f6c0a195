#include "flib/excited/qm_file_mo_coeff_nbasis_nbsuse.h"

#include <bit>
#include <span>

#include "flib/excited/basis_functions.h"
#include "flib/excited/detail/mo_columns.h"
#include "flib/io/free_format.h"
#include "flib/qm_file/detail/reader_steps.h"

namespace flib {
namespace {

/// Sets everything to 0 and leaves memory alone that was never written to: the count may be absurd.
void clear(std::span<double> values) {
    for (double& value : values) {
        if (std::bit_cast<std::uint64_t>(value) != 0) value = 0;
    }
}

}  // namespace

void qm_file_mo_coeff_nbasis_nbsuse(std::string_view fname, std::int32_t nbasis,
                                    std::int32_t nbsuse, matrix_view<double> mo,
                                    std::int32_t& info) {
    require_basis_functions(fname, nbasis);
    info = -1;
    clear(mo.all());
    const std::size_t count = element_count({nbsuse, nbasis}, "the MO coefficients");
    require_room(fname, count, "MO coefficients", mo.all().size());
    const recognised_file file(fname);
    go_to_mo_coefficients(file);
    read_items(file.fid, mo.all().first(count));
    info = 0;
}

}  // namespace flib
