#include "flib/excited/qm_file_ci_xpy.h"

#include <string>

#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/qm_file/qm_file_type.h"
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
void go_to_values(std::int32_t fid, const line_buffer& file_type) {
    constexpr std::string_view header = "Dump of file";
    if (!(file_type == tag::gaussian_rwf)) stop_not_implemented();
    line_buffer line;
    fail_unless_found(search_word(fid, 2, 13, header, line), fid, header);
}

void fail_unless_room(std::string_view fname, std::size_t count, std::string_view what,
                      std::size_t room) {
    if (count <= room) return;
    throw io_error(trim_right(fname), 0,
                   std::to_string(count) + " " + std::string(what) +
                       " were asked for, but there is room for " + std::to_string(room));
}

}  // namespace

void qm_file_ci_xpy(std::string_view fname, std::int32_t ni, std::int32_t na, std::int32_t nci,
                    std::span<double> xpy, std::int32_t& info) {
    line_buffer file_type;
    line_buffer version;
    qm_file_type(fname, file_type, version, info);
    const input_unit fid(fname);
    go_to_values(fid, file_type);
    item_reader values(fid);
    // The roots' excitation energies come first.
    double energy = 0;
    for (std::int32_t root = 1; root <= nci; ++root) values.take(energy);
    const std::size_t count = xpy_count(ni, na, nci);
    fail_unless_room(fname, count, "amplitudes", xpy.size());
    values.take(xpy.first(count));
    values.finish();
}

void qm_file_ci_energy(std::string_view fname, std::int32_t nci, std::span<double> energy,
                       std::int32_t& info) {
    line_buffer file_type;
    line_buffer version;
    qm_file_type(fname, file_type, version, info);
    const input_unit fid(fname);
    go_to_values(fid, file_type);
    const std::size_t count = element_count({nci}, "the excitation energies");
    fail_unless_room(fname, count, "excitation energies", energy.size());
    read_items(fid, energy.first(count));
}

}  // namespace flib
