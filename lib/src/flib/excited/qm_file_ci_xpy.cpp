#include "flib/excited/qm_file_ci_xpy.h"

#include <algorithm>

#include "flib/excited/detail/first_amplitudes.h"
#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/qm_file/type_tag.h"
#include "flib/search/search_word.h"
#include "flib/util/matrix.h"

namespace flib {

std::size_t xpy_count(std::int32_t ni, std::int32_t na, std::int32_t nci) {
    return element_count({na, ni, 2, nci}, "the excitation amplitudes");
}

namespace {

//  Dump of file   635 length        548 (read left to right):
//     0.342852589334D+00    0.418284999711D+00    0.432966384958D+00    0.486109419700D+00 ...
void go_to_values(const recognised_file& file) {
    constexpr std::string_view header = "Dump of file";
    file.require(tag::gaussian_rwf);
    line_buffer line;
    require_found(search_word(file.fid, 2, 13, header, line), file.fid, header);
}

/// Behind the excitation energies of the roots, which come first.
item_reader amplitudes_of(const recognised_file& file, std::int32_t nci) {
    go_to_values(file);
    item_reader values(file.fid);
    double energy = 0;
    for (std::int32_t root = 1; root <= nci; ++root) values.take(energy);
    return values;
}

}  // namespace

void qm_file_ci_xpy(std::string_view fname, std::int32_t ni, std::int32_t na, std::int32_t nci,
                    std::span<double> xpy, std::int32_t& info) {
    info = -1;
    const std::size_t count = xpy_count(ni, na, nci);
    require_room(fname, count, "amplitudes", xpy.size());
    const recognised_file file(fname);
    info = file.class_code;
    item_reader values = amplitudes_of(file, nci);
    values.take(xpy.first(count));
    values.finish();
}

zeroed_array<double> first_amplitudes(std::string_view fname, std::int32_t ni, std::int32_t na,
                                      std::int32_t nci) {
    const std::size_t count = xpy_count(ni, na, nci);
    const recognised_file file(fname);
    item_reader values = amplitudes_of(file, nci);
    values.begin_reals(count);
    zeroed_array<double> first({na, ni, std::min(nci, 1)}, "the excitation amplitudes");
    values.take_part(first.all());
    values.check_part(count - first.size());
    values.finish();
    return first;
}

void qm_file_ci_energy(std::string_view fname, std::int32_t nci, std::span<double> energy,
                       std::int32_t& info) {
    info = -1;
    const std::size_t count = element_count({nci}, "the excitation energies");
    require_room(fname, count, "excitation energies", energy.size());
    const recognised_file file(fname);
    info = file.class_code;
    go_to_values(file);
    read_items(file.fid, energy.first(count));
}

}  // namespace flib
