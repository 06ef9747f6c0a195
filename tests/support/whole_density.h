// The element of a transition density by the library's public routines, all of it in memory and
// each number read alone: what the sign tool's shorter ways must agree with.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

#include "flib/excited/detail/first_amplitudes.h"
#include "flib/excited/get_ci_density_nbasis_nbsuse.h"
#include "flib/excited/qm_file_ci_xpy.h"
#include "flib/excited/qm_file_mo_coeff_nbasis_nbsuse.h"
#include "flib/io/detail/columns.h"
#include "flib/io/stop_run.h"
#include "flib/util/math.h"
#include "flib/util/matrix.h"
#include "sgn/job/chosen_element.h"

namespace support {

/// Numbers in columns are read one by one as long as this lives.
class without_vectors {
  public:
    without_vectors() { flib::allow_scan_columns(false); }
    ~without_vectors() { flib::allow_scan_columns(true); }
    without_vectors(const without_vectors&) = delete;
    without_vectors& operator=(const without_vectors&) = delete;
};

/// The density's element at `at`, or, without, the one of largest magnitude.
inline flib::extremum whole_density(const sgn::density_source& source,
                                    const flib::element_location* at) {
    const without_vectors choice;
    const auto& [nbasis, nbsuse, mi, ma, nfc, nfv] = source.counts;
    flib::matrix<double> moc(nbasis, nbasis, "all coefficients");
    flib::matrix<double> den(nbasis, nbasis, "all of the density");
    std::int32_t info = 0;
    flib::qm_file_mo_coeff_nbasis_nbsuse(source.ffch, nbasis, nbsuse, moc.view(), info);
    flib::zeroed_array<double> xpy({ma, mi, 2, source.mci}, "all amplitudes");
    if (flib::qm_file_dump_layout(source.fcis)) {
        // What is not needed of such a dump is not read, and may be damaged.
        xpy = flib::first_amplitudes(source.fcis, mi, ma, source.mci);
    } else {
        flib::qm_file_ci_xpy(source.fcis, mi, ma, source.mci, xpy.all(), info);
    }
    flib::get_ci_density_nbasis_nbsuse(nbasis, nbsuse, mi, ma, nfc, nfv, moc.view(), xpy.all(),
                                       den.view());
    flib::extremum chosen;
    if (at != nullptr) {
        chosen.at = *at;
    } else {
        flib::mat_abs_maxval_d(nbasis, den.view(), chosen.at);
    }
    const auto [row, column] = chosen.at;
    const bool inside = row >= 1 && row <= nbasis && column >= 1 && column <= nbasis;
    if (!inside) throw flib::run_error("it lies outside 1..nmo");
    chosen.value = den(row, column);
    return chosen;
}

/// The element that `way` returns, to the last bit, or how it ends.
template <class Way>
std::string told_by(Way&& way) {
    try {
        const flib::extremum chosen = way();
        const double value = chosen.value;
        char text[100];
        std::snprintf(text, sizeof text, "(%d, %d) = %a", chosen.at[0], chosen.at[1],
                      std::isnan(value) ? std::abs(value) : value);
        return text;
    } catch (const flib::ending& end) {
        const std::string text = end.what();
        constexpr const char* outside = "lies outside 1..";
        const bool is_outside = text.find(outside) != std::string::npos;
        return "status " + std::to_string(end.status()) + ": " + (is_outside ? outside : text);
    }
}

/// The same by the sign tool's way.
inline std::string told_by_tool(const sgn::density_source& source,
                                const flib::element_location* at) {
    return told_by([&] {
        if (at == nullptr) return sgn::largest_of_density(source);
        return flib::extremum{*at, sgn::density_at(source, *at)};
    });
}

}  // namespace support
