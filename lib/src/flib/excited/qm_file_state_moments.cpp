#include "flib/excited/qm_file_state_moments.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <string>
#include <type_traits>
#include <utility>

#include "flib/io/detail/record_file.h"
#include "flib/io/free_format.h"
#include "flib/io/number.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/qm_file/fchk_label.h"
#include "flib/qm_file/type_tag.h"
#include "flib/search/search_word.h"
#include "flib/text/padded_view.h"

namespace flib {
namespace {

constexpr std::string_view first_word = "ETran ";

/// A section's head: label, type, and its value or how many values follow.
struct section {
    std::string_view name;
    std::string_view type;    ///< columns 44 to 49
    std::int64_t at = -1;     ///< where its line begins; -1: nowhere
    std::int32_t number = 0;  ///< from column 50 on
};

struct moment_sections {
    section scalar_count{fchk_label::state_scalar_count, "I"};
    section value_count{fchk_label::state_value_count, "I"};
    section scalars{fchk_label::state_scalars, "I   N="};
    section spin{fchk_label::state_spin, "I   N="};
    section values{fchk_label::state_values, "R   N="};

    std::array<section*, 5> all() {
        return {&scalar_count, &value_count, &scalars, &spin, &values};
    }
};

std::string text(std::int64_t n) {
    return std::to_string(n);
}

/// Throws an error at the head of a section.
[[noreturn]] void fail(std::int32_t fid, const section& of, const std::string& message) {
    input_of(fid).go_to(of.at);
    line_buffer line;
    require_record(fid, line);
    throw error_at_last_record(fid, quoted(of.name) + " " + message);
}

/// Reads the head that is the next record.
//  ETran NETV                                 I               64
//  ETran spin                                 I   N=           4
void read_head(std::int32_t fid, section& of) {
    constexpr std::int32_t number_column = 50;
    const bool is_second = of.at >= 0;
    of.at = input_of(fid).position();
    if (is_second) fail(fid, of, "stands here for the second time");
    line_buffer line;
    require_record(fid, line);
    const padded_view head(line.padded(), record_length);
    if (!head.columns(44, number_column - 1).equals(of.type)) {
        fail(fid, of, "is not of the type " + quoted(of.type));
    }
    const std::string_view number = trim(line.padded().substr(number_column - 1));
    if (parse_integer(number, of.number) != number_error::none || of.number < 0) {
        fail(fid, of, "has " + quoted(number) + " where a count was expected");
    }
}

/// The heads of all sections. False if there is none at all.
bool find_sections(std::int32_t fid, moment_sections& found) {
    constexpr auto width = static_cast<std::int32_t>(first_word.size());
    line_buffer line;
    while (search_word(fid, 1, width, first_word, line)) {
        const padded_view label = padded_view(line.padded(), record_length).columns(1, 40);
        const auto all = found.all();
        const auto known =
            std::ranges::find_if(all, [&](const section* of) { return label.equals(of->name); });
        if (known == all.end()) continue;
        step_back(fid);
        read_head(fid, **known);
    }
    const auto all = found.all();
    const auto is_there = [](const section* of) { return of->at >= 0; };
    const auto one = std::ranges::find_if(all, is_there);
    if (one == all.end()) return false;
    const auto missing = std::ranges::find_if_not(all, is_there);
    if (missing != all.end()) {
        fail(fid, **one, "stands in a file without " + quoted((*missing)->name));
    }
    return true;
}

/// The values of an array, which must end where its head says.
template <class Value>
std::vector<Value> values_of(std::int32_t fid, const section& of) {
    input_of(fid).go_to(of.at);
    skip_records(fid, 1);
    // Memory would grow with a count that may be absurd.
    if (of.number == 0 || of.number > input_of(fid).bytes_left()) {
        fail(fid, of, "cannot have " + text(of.number) + " values here");
    }
    std::vector<Value> values(static_cast<std::size_t>(of.number));
    item_reader items(fid);
    items.take(std::span<Value>(values));
    bool ends = items.ends_record();
    items.finish();
    line_buffer line;
    if (read_record(fid, line)) ends = ends && (line.padded().front() != ' ' || line == "");
    if (!ends) fail(fid, of, "has more than its " + text(of.number) + " values");
    if constexpr (std::is_same_v<Value, double>) {
        const auto is_finite = [](double value) { return std::isfinite(value); };
        const auto bad = std::ranges::find_if_not(values, is_finite);
        if (bad != values.end()) {
            fail(fid, of, "has no finite number as its value " + text(bad - values.begin() + 1));
        }
    }
    return values;
}

/// The rows of derivatives that the scalars tell of must be those of the molecule.
void require_derivatives(std::int32_t fid, const section& scalars, std::int64_t rows) {
    if (rows == 0) return;
    rewind_unit(fid);
    line_buffer line;
    std::int32_t atoms = 0;
    if (search_word(fid, 1, 40, fchk_label::atoms, line)) {
        read_items(held_record{fid, line.padded()}, discard{4}, atoms);
    }
    const std::int64_t expected = std::int64_t{state_layout::fields} + 3 * std::int64_t{atoms};
    if (atoms >= 1 && rows == expected) return;
    fail(fid, scalars,
         "tells of " + text(rows) +
             " derivatives where those by a field and by the coordinates of " + text(atoms) +
             " atoms are " + text(expected));
}

void require_count(std::int32_t fid, const section& of, std::int64_t expected,
                   const std::string& why) {
    if (of.number == expected) return;
    fail(fid, of, "is of " + text(of.number) + " values instead of " + text(expected) + ": " + why);
}

/// Rows of "ETran state values", taken apart.
moment_rows rows_of(std::span<const double> values) {
    moment_rows rows;
    for (; !values.empty(); values = values.subspan(state_layout::values)) {
        const auto add = [&](std::vector<double>& to, std::size_t from, std::size_t count) {
            const auto part = values.subspan(from, count);
            to.insert(to.end(), part.begin(), part.end());
        };
        add(rows.energy, state_layout::energy_at, 1);
        add(rows.dipole, state_layout::dipole_at, 3);
        add(rows.velocity_dipole, state_layout::velocity_dipole_at, 3);
        add(rows.magnetic_dipole, state_layout::magnetic_dipole_at, 3);
        add(rows.velocity_quadrupole, state_layout::velocity_quadrupole_at, 6);
    }
    return rows;
}

// ETran NETS                                 I               20
// ETran NETV                                 I               64
// ETran scalars                              I   N=          20
//            4          16           1          10           1           0
// ...
// ETran state values                         R   N=          64
//  -7.56731884E+01 -5.35435158E-01  0.00000000E+00  0.00000000E+00  2.52430740E-01
state_moments read_moments(std::int32_t fid, const moment_sections& from) {
    constexpr auto row = static_cast<std::int64_t>(state_layout::values);
    const auto scalars = values_of<std::int32_t>(fid, from.scalars);
    if (scalars.size() <= state_layout::derivatives_at) {
        fail(fid, from.scalars, "has only " + text(from.scalars.number) + " values");
    }
    const std::int64_t states = scalars[state_layout::states_at];
    const std::int64_t target = scalars[state_layout::target_at];
    const std::int64_t derivatives = scalars[state_layout::derivatives_at];
    if (states < 1 || target < 1 || target > states) {
        fail(fid, from.scalars,
             "tells of " + text(states) + " states and calls state " + text(target) + " the job's");
    }
    if (scalars[state_layout::values_at] != row) {
        fail(fid, from.scalars,
             "tells of " + text(scalars[state_layout::values_at]) +
                 " values of each state, where " + text(row) + " are known");
    }
    require_derivatives(fid, from.scalars, derivatives);
    const std::string rows = text(states) + " states and " + text(derivatives) + " derivatives";
    require_count(fid, from.values, row * (states + derivatives), "there are " + rows);
    require_count(fid, from.spin, states, "there are " + rows);
    for (const auto& [count, of] : {std::pair(&from.scalar_count, &from.scalars),
                                    std::pair(&from.value_count, &from.values)}) {
        if (count->number == of->number) continue;
        fail(fid, *count,
             "is " + text(count->number) + ", but " + quoted(of->name) + " has " +
                 text(of->number) + " values");
    }

    state_moments moments;
    moments.states = static_cast<std::int32_t>(states);
    moments.target = static_cast<std::int32_t>(target);
    moments.spin = values_of<std::int32_t>(fid, from.spin);
    const auto values = values_of<double>(fid, from.values);
    const auto of_states = std::span(values).first(static_cast<std::size_t>(row * states));
    moments.of_states = rows_of(of_states);
    if (derivatives > 0) {
        moments.derivatives = rows_of(std::span(values).subspan(
            of_states.size() + state_layout::fields * state_layout::values));
    }
    return moments;
}

/// The value of a section that is a real number.
//  Total Energy                               R     -7.567318842789800E+01
std::optional<double> energy_of(std::int32_t fid, std::string_view name) {
    rewind_unit(fid);
    line_buffer line;
    if (!search_word(fid, 1, 40, name, line)) return {};
    double energy = 0;
    read_items(held_record{fid, line.padded()}, discard{3}, energy);
    if (std::isfinite(energy)) return energy;
    throw error_at_last_record(fid, quoted(name) + " is no finite number");
}

/// Whether `printed` is `value` in nine digits.
bool rounds_to(double value, double printed) {
    constexpr double last_digit = 1e-8;
    return std::abs(value - printed) <= last_digit * std::abs(printed);
}

}  // namespace

std::optional<double> state_moments::excitation_energy(std::int32_t state) const {
    if (!ground_energy || state < 1 || state > states) return {};
    if (state == target) return *total_energy - *ground_energy;
    return of_states.energy[static_cast<std::size_t>(state) - 1] - *ground_energy;
}

std::optional<state_moments> qm_file_state_moments(std::string_view fname) {
    const recognised_file file(fname);
    file.require(tag::gaussian_fchk);
    moment_sections sections;
    if (!find_sections(file.fid, sections)) return {};
    state_moments moments = read_moments(file.fid, sections);
    moments.total_energy = energy_of(file.fid, fchk_label::energy);
    const auto target = static_cast<std::size_t>(moments.target) - 1;
    if (moments.total_energy &&
        rounds_to(*moments.total_energy, moments.of_states.energy[target])) {
        moments.ground_energy = energy_of(file.fid, fchk_label::scf_energy);
    }
    return moments;
}

}  // namespace flib
