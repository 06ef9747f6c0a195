#include "flib/excited/qm_file_ci_xpy.h"

#include <algorithm>

#include "flib/excited/detail/amplitude_dump.h"
#include "flib/excited/detail/first_amplitudes.h"
#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/qm_file/type_tag.h"
#include "flib/util/matrix.h"

namespace flib {

std::size_t xpy_count(std::int32_t ni, std::int32_t na, std::int32_t nci) {
    return element_count({na, ni, 2, nci}, "the excitation amplitudes");
}

namespace {

/// A reader of X+Y of the first `nci` roots. A dump that does not tell its layout has `nci` other
/// values before them.
item_reader plus_of(const amplitude_dump& dump, std::int32_t ni, std::int32_t na, std::int32_t nci,
                    std::size_t count) {
    if (dump.layout()) {
        dump.require(ni, na, nci);
        return dump.plus(1, count);
    }
    item_reader values = dump.all_values();
    double passed_over = 0;
    for (std::int32_t i = 0; i < nci; ++i) values.take(passed_over);
    values.begin_reals(count);
    return values;
}

/// Throws io_error if the dump does not tell where X-Y and energies are.
void require_rest(const amplitude_dump& dump, const char* what) {
    if (dump.layout() && dump.layout()->has_rest) return;
    throw io_error(dump.name(), 0, std::string("does not tell where it holds ") + what);
}

}  // namespace

std::int32_t qm_file_dump_record(std::string_view fname) {
    const recognised_file file(fname);
    file.require(tag::gaussian_rwf);
    line_buffer line;
    go_below_dump_heading(file.fid, line);
    return read_dump_heading(file.fid, line.padded()).record;
}

std::optional<dump_layout> qm_file_dump_layout(std::string_view fname) {
    std::int32_t info = 0;
    return amplitude_dump(fname, info).layout();
}

void qm_file_ci_xpy(std::string_view fname, std::int32_t ni, std::int32_t na, std::int32_t nci,
                    std::span<double> xpy, std::int32_t& info) {
    info = -1;
    const std::size_t count = xpy_count(ni, na, nci);
    require_room(fname, count, "amplitudes", xpy.size());
    const amplitude_dump dump(fname, info);
    item_reader values = plus_of(dump, ni, na, nci, count);
    values.take_part(xpy.first(count));
    values.finish();
}

zeroed_array<double> first_amplitudes(std::string_view fname, std::int32_t ni, std::int32_t na,
                                      std::int32_t nci) {
    const std::size_t count = xpy_count(ni, na, nci);
    std::int32_t info = 0;
    const amplitude_dump dump(fname, info);
    // What is not needed of a layout that is told is not read.
    const bool told = dump.layout().has_value();
    const std::int32_t roots = told ? std::min(nci, 1) : nci;
    zeroed_array<double> first({na, ni, std::min(nci, 1)}, "the excitation amplitudes");
    item_reader values = plus_of(dump, ni, na, roots, told ? first.size() : count);
    values.take_part(first.all());
    if (!told) values.check_part(count - first.size());
    values.finish();
    return first;
}

void qm_file_ci_xmy(std::string_view fname, std::int32_t ni, std::int32_t na, std::int32_t nci,
                    std::span<double> xmy, std::int32_t& info) {
    info = -1;
    const std::size_t count = xpy_count(ni, na, nci);
    require_room(fname, count, "amplitudes", xmy.size());
    const amplitude_dump dump(fname, info);
    require_rest(dump, "X-Y");
    dump.require(ni, na, nci);
    item_reader values = dump.minus(1, count);
    values.take_part(xmy.first(count));
    values.finish();
}

void qm_file_ci_energy(std::string_view fname, std::int32_t nci, std::span<double> energy,
                       std::int32_t& info) {
    info = -1;
    const std::size_t count = element_count({nci}, "the excitation energies");
    require_room(fname, count, "excitation energies", energy.size());
    const amplitude_dump dump(fname, info);
    require_rest(dump, "the excitation energies");
    dump.require_roots(nci);
    item_reader values = dump.energies(count);
    values.take_part(energy.first(count));
    values.finish();
}

}  // namespace flib
