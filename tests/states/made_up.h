// Jobs that never were files.
#pragma once

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "sgn/job/job.h"

/// A job with random orbitals, amplitudes, dipoles and energies, all of its roots being states. It
/// has as many orbitals as basis functions unless `nbsuse` is given. Without `mixed_orbitals` every
/// orbital is a basis function.
inline sgn::job made_up(sgn::job_counts counts, unsigned seed, bool mixed_orbitals = true) {
    if (counts.nbsuse == 0) counts.nbsuse = counts.nbasis;
    std::mt19937_64 bits(seed);
    std::uniform_real_distribution<double> range(-1, 1);
    const auto fill = [&](auto values) {
        std::ranges::generate(values, [&] { return range(bits); });
    };
    sgn::job made({"made", "made.fchk", "made.log", "made.cis"}, counts, counts.mci);
    fill(made.xpy.all());
    fill(made.tdip.view().all());
    for (std::int32_t root = 1; root <= counts.mci; ++root) made.energy.push_back(0.25 * root);
    if (mixed_orbitals) fill(made.moc.view().all());
    for (std::int32_t i = 1; i <= counts.nbsuse; ++i) made.moc(i, i) += mixed_orbitals ? 2 : 1;
    return made;
}

/// Component 1 of the amplitudes of a root, to be changed.
inline std::span<double> amplitudes_of(sgn::job& of, std::int32_t root) {
    const std::span<const double> block = of.amplitudes(root);
    return of.xpy.all().subspan(static_cast<std::size_t>(block.data() - of.xpy.data()),
                                block.size());
}
