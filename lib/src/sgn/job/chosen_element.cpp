#include "sgn/job/chosen_element.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <string>

#include "flib/excited/detail/first_amplitudes.h"
#include "flib/excited/detail/mo_columns.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/text/fixed_text.h"

namespace sgn {
namespace {

bool lies_within(std::int32_t nmo, const flib::element_location& at) {
    return std::min(at[0], at[1]) >= 1 && std::max(at[0], at[1]) <= nmo;
}

/// Throws the run_error of an element that the density has not.
void require_within(std::int32_t nmo, const flib::element_location& at, const char* reason) {
    if (lies_within(nmo, at)) return;
    throw flib::run_error("the chosen element of the transition density, row " +
                          std::to_string(at[0]) + " and column " + std::to_string(at[1]) +
                          ", lies outside 1.." + std::to_string(nmo) + reason);
}

template <class Density>
void take_all(flib::mo_columns& moc, Density& density) {
    for (;;) {
        const flib::matrix_view<const double> columns = moc.next();
        if (columns.columns() == 0) return;
        density.take(columns);
    }
}

}  // namespace

void require_fits_reference(const density_source& source) {
    if (source.counts.nbasis < 1) return;  // the reader of the coefficients refuses that
    const std::optional<std::int32_t> told = flib::count_of_mo_coefficients(source.ffch);
    const std::int64_t expected = std::int64_t{source.counts.nbasis} * source.counts.nbasis;
    if (told == expected) return;
    if (!told) {
        const bool empty = flib::has_no_orbitals(flib::input_unit(source.ffch));
        if (!empty) return;
        throw flib::io_error(flib::trim_right(source.ffch), 0, flib::no_orbitals);
    }
    const bool has_fewer_orbitals = *told < expected && *told % source.counts.nbasis == 0;
    throw flib::io_error(
        flib::trim_right(source.ffch), 0,
        "holds " + std::to_string(*told) + " MO coefficients where the " +
            std::to_string(source.counts.nbasis) + " basis functions of the reference make " +
            std::to_string(expected) +
            (has_fewer_orbitals
                 ? ": if linear dependences were removed, the tool sgn_states treats such jobs"
                 : ": does it belong to another molecule or basis set?"));
}

double density_at(const density_source& source, const flib::element_location& at) {
    const auto& [ffch, fcis, counts, mci] = source;
    flib::density_element element(counts, at);
    {
        // As much as a first-level cache holds.
        const std::int32_t at_once = std::max(1, 4096 / std::max(1, counts.nbasis));
        flib::mo_columns moc(ffch, counts.nbasis, counts.nbsuse, at_once);
        if (flib::have_density(counts) && lies_within(counts.nbasis, at)) {
            take_all(moc, element);
        } else {
            moc.check_rest();
        }
    }
    const auto xpy = flib::first_amplitudes(fcis, counts.mi, counts.ma, mci);
    flib::require_density(counts, xpy.size());
    require_within(counts.nbasis, at, ": the reference does not fit this job");
    return element.value(xpy.all());
}

flib::extremum largest_of_density(const density_source& source) {
    const auto& [ffch, fcis, counts, mci] = source;
    flib::zeroed_array<double> xpy;
    // The amplitudes are needed first, but what is wrong with the coefficients is told first.
    std::exception_ptr wrong;
    try {
        xpy = flib::first_amplitudes(fcis, counts.mi, counts.ma, mci);
        flib::require_density(counts, xpy.size());
    } catch (...) {
        wrong = std::current_exception();
    }
    constexpr std::int32_t at_once = 256;  // as many terms as the product takes in one go
    flib::mo_columns moc(ffch, counts.nbasis, counts.nbsuse, at_once);
    if (wrong) {
        moc.check_rest();
        std::rethrow_exception(wrong);
    }
    flib::density_extremum density(counts, xpy.all());
    take_all(moc, density);
    const flib::extremum largest = density.find();
    require_within(counts.nbasis, largest.at,
                   ": no element of the density is above zero in magnitude");
    return largest;
}

}  // namespace sgn
