#include "sgn/states/follow.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>

#include "flib/excited/density_parts.h"
#include "flib/io/stop_run.h"
#include "sgn/set/set_moments.h"
#include "sgn/states/assignment.h"

namespace sgn {
namespace {

flib::orbital_counts orbitals_of(const job& now) {
    const job_counts& of = now.counts;
    return {of.nbasis, of.nbsuse, of.mi, of.ma, of.nfc, of.nfv};
}

/// The element of `root`'s transition density that is largest.
flib::extremum largest_element(const job& now, std::int32_t root) {
    flib::density_extremum density(orbitals_of(now), now.amplitudes(root));
    density.take(now.moc.view());
    const flib::extremum largest = density.find();
    if (largest.at[0] != 0) return largest;
    throw flib::io_error(now.files.dump, 0,
                         "the transition density of root " + std::to_string(root) +
                             " has no element above zero in magnitude");
}

double density_element(const job& now, std::int32_t root, const flib::element_location& at) {
    flib::density_element element(orbitals_of(now), at);
    element.take(now.moc.view());
    return element.value(now.amplitudes(root));
}

/// A singlet has nothing in common with a triplet, however alike their alpha amplitudes are.
bool of_other_spin(const job& reference, std::size_t row, const job& now, std::size_t column) {
    if (reference.spin.empty() || now.spin.empty()) return false;
    return reference.spin[row] != now.spin[column];
}

/// Nothing where only the log tells.
std::optional<full_digits> full_values(const job& now, std::int32_t root, std::int32_t sign) {
    if (!now.moments) return {};
    return full_digits_of(now.moments->of_states, root, sign);
}

continuation judge(const followed_state& of, double weight, const overlap_limits& limits) {
    // What is not a number is below every threshold.
    if (!(weight >= limits.lost_below)) return continuation::lost;
    if (!(weight >= limits.mixed_below)) return continuation::mixed;
    return of.root == of.state ? continuation::same : continuation::exchanged;
}

followed_state judge_state(const reference_state& state, std::optional<std::size_t> column,
                           const std::vector<double>& overlaps, const job& now,
                           const overlap_limits& limits) {
    followed_state result{.state = state.state, .overlaps = overlaps};
    if (!column) return result;
    const double overlap = overlaps[*column];
    result.root = static_cast<std::int32_t>(*column) + 1;
    result.kind = judge(result, overlap * overlap, limits);
    if (result.kind == continuation::lost) {
        result.root = 0;
        return result;
    }
    result.overlap = std::abs(overlap);
    result.sign = (overlap > 0 ? 1 : 0) - (overlap < 0 ? 1 : 0);
    result.values = values_of(now, result.root);
    result.spin = now.spin_of(result.root);
    result.nearest = nearest_to(now, result.root);
    for (double& component : result.values->dipole) component *= result.sign;
    result.full = full_values(now, result.root, result.sign);
    result.element_value = density_element(now, result.root, state.element);
    return result;
}

}  // namespace

std::string_view name_of(continuation kind) {
    switch (kind) {
        case continuation::same:
            return "same";
        case continuation::exchanged:
            return "exchanged";
        case continuation::mixed:
            return "mixed";
        case continuation::lost:
            break;
    }
    return "lost";
}

double root_values::oscillator_strength() const {
    const auto [x, y, z] = dipole;
    return 2.0 / 3.0 * energy * (x * x + y * y + z * z);
}

root_values values_of(const job& now, std::int32_t root) {
    return {now.energy[static_cast<std::size_t>(root) - 1],
            {now.tdip(1, root), now.tdip(2, root), now.tdip(3, root)}};
}

root_values best_values(root_values values, const std::optional<full_digits>& full) {
    if (full) values.dipole = full->dipole;
    return values;
}

std::optional<near_state> nearest_to(const job& now, std::int32_t root) {
    std::optional<near_state> nearest;
    const double energy = values_of(now, root).energy;
    for (std::int32_t other = 1; other <= now.states; ++other) {
        if (other == root || now.spin_of(other) != now.spin_of(root)) continue;
        const double distance = std::abs(values_of(now, other).energy - energy);
        if (!nearest || distance < nearest->distance) nearest = {other, distance};
    }
    return nearest;
}

reference_set prepare(job&& reference, std::span<const std::int32_t> wanted) {
    overlap_reference overlaps(reference);
    std::vector<reference_state> states;
    for (const std::int32_t state : wanted) {
        const auto [at, value] = largest_element(reference, state);
        states.push_back({state, values_of(reference, state), reference.spin_of(state),
                          nearest_to(reference, state), full_values(reference, state, 1), at,
                          value});
    }
    reference.moc = flib::matrix<double>(0, 0, "");
    reference.xpy = {};
    return {std::move(reference), std::move(overlaps), std::move(states)};
}

bool followed_job::clear() const {
    const auto is_same = [](const followed_state& of) { return of.kind == continuation::same; };
    return std::ranges::all_of(states, is_same) && (!stigruz || stigruz->agrees);
}

followed_job follow(const reference_set& from, const job& now, const overlap_limits& limits) {
    overlap_rows rows = from.overlaps.overlaps(now);
    for (std::size_t row = 0; row < rows.size(); ++row) {
        for (std::size_t column = 0; column < rows[row].size(); ++column) {
            if (of_other_spin(from.reference, row, now, column)) rows[row][column] = 0;
        }
    }
    auto columns = assign(rows);
    for (std::size_t row = 0; row < rows.size(); ++row) {
        // Where nothing better is left, an overlap of 0 is assigned, too.
        auto& column = columns[row];
        if (column && of_other_spin(from.reference, row, now, *column)) column.reset();
    }
    followed_job result;
    for (const reference_state& state : from.states) {
        const auto row = static_cast<std::size_t>(state.state) - 1;
        result.states.push_back(judge_state(state, columns[row], rows[row], now, limits));
        if (state.state != 1) continue;
        const followed_state& first = result.states.back();
        const std::int32_t sign =
            flib::same_sign_d(density_element(now, 1, state.element), state.element_value);
        result.stigruz = {sign, first.root == 1 && first.sign == sign};
    }
    return result;
}

}  // namespace sgn
