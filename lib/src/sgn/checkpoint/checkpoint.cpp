#include "sgn/checkpoint/checkpoint.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <optional>
#include <span>
#include <string_view>

#include "flib/excited/qm_file_state_moments.h"
#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "flib/util/elements.h"
#include "flib/util/units.h"
#include "sgn/checkpoint/detail/checkpoint_sections.h"
#include "sgn/checkpoint/detail/lower_triangle.h"
#include "sgn/set/detail/shape.h"
#include "sgn/set/modes.h"

namespace sgn {
namespace {

namespace layout = flib::state_layout;
constexpr std::size_t values_per_state = layout::values;
constexpr std::size_t field_components = layout::fields;

std::vector<double> flat(const std::vector<vec3>& vectors, double factor) {
    std::vector<double> result;
    for (const vec3& each : vectors) {
        for (const double component : each) result.push_back(factor * component);
    }
    return result;
}

std::vector<double> state_values(const displaced_set& set, const derivatives& of, double energy) {
    const std::size_t coordinates = of.dipole.rows;
    std::vector<double> values(values_per_state * (1 + field_components + coordinates));
    const auto put = [&](std::size_t row, std::size_t column, const auto& from) {
        std::copy(from.begin(), from.end(),
                  values.begin() + static_cast<std::ptrdiff_t>(values_per_state * row + column));
    };
    values[layout::energy_at] = energy;
    put(0, layout::dipole_at, set.jobs.front().dipole);
    if (const auto& moments = set.jobs.front().moments) {
        put(0, layout::velocity_dipole_at, moments->velocity_dipole);
        put(0, layout::magnetic_dipole_at, moments->magnetic_dipole);
        put(0, layout::velocity_quadrupole_at, moments->velocity_quadrupole);
    }
    const std::vector<double> forces = flat(set.jobs.front().forces, 1);
    for (std::size_t c = 0; c < coordinates; ++c) {
        const std::size_t row = 1 + field_components + c;
        values[values_per_state * row + layout::energy_at] = set.has_forces ? -forces[c] : 0;
        put(row, layout::dipole_at, of.dipole.row(c));
        if (!set.has_moments) continue;
        put(row, layout::velocity_dipole_at, of.velocity_dipole.values.row(c));
        put(row, layout::magnetic_dipole_at, of.magnetic_dipole.values.row(c));
        put(row, layout::velocity_quadrupole_at, of.velocity_quadrupole.values.row(c));
    }
    return values;
}

/// What the derivatives have to say, in the order of a checkpoint.
std::vector<section> result_sections(const displaced_set& set, const derivatives& of,
                                     double energy) {
    std::vector<double> coordinates;
    std::vector<double> masses;
    for (const atom& each : set.atoms) {
        for (const double x : each.x) coordinates.push_back(x / flib::bohr_radius);
        masses.push_back(each.mass);
    }
    std::vector<section> result{real_section(section_name::coordinates, coordinates),
                                real_section(section_name::masses, masses)};
    if (set.has_forces) {
        result.push_back(real_section(section_name::gradient, flat(set.jobs.front().forces, -1)));
        result.push_back(real_section(section_name::force_constants,
                                      lower_triangle(force_constants(of.forces))));
    }
    std::vector<std::int32_t> scalars(layout::scalars);
    scalars[layout::states_at] = 1;
    scalars[layout::values_at] = values_per_state;
    scalars[2] = 1;
    scalars[3] = 10;
    scalars[layout::target_at] = 1;
    scalars[layout::derivatives_at] =
        static_cast<std::int32_t>(coordinates.size() + field_components);
    const std::vector<double> values = state_values(set, of, energy);
    // Only singlets have dipoles.
    const std::vector<std::int32_t> spin(1);
    const std::vector<std::int32_t> symmetry(1);
    result.push_back(integer_section(section_name::state_scalar_count, layout::scalars));
    result.push_back(
        integer_section(section_name::state_value_count, static_cast<std::int32_t>(values.size())));
    result.push_back(integer_section(section_name::state_scalars, scalars));
    result.push_back(integer_section(section_name::state_spin, spin));
    result.push_back(integer_section(section_name::state_symmetry, symmetry));
    result.push_back(real_section(section_name::state_values, values));
    return result;
}

std::size_t atom_count(const sections& from) {
    const std::int32_t count = from.integer(section_name::atoms);
    if (count < 1) {
        throw flib::io_error(from.file, from.require(section_name::atoms).line, "holds no atoms");
    }
    return static_cast<std::size_t>(count);
}

/// How far the atom at `at` of a checkpoint's coordinates is from `other` (Angstrom).
double distance(std::span<const double> at, const atom& other) {
    vec3 place{};
    for (std::size_t k = 0; k < 3; ++k) place[k] = at[k] * flib::bohr_radius;
    return length(difference(place, other.x));
}

/// The set's atoms among those of a checkpoint (from 0 on), in their order: all of them or, of an
/// ONIOM job or a model with point charges, the high layer. The checkpoint has to be the
/// reference's.
std::vector<std::size_t> places_in(const sections& from, const displaced_set& set) {
    const auto& atoms = set.atoms;
    const std::string reference = " of " + flib::printable(set.jobs.front().name);
    const std::size_t count = atom_count(from);
    if (count < atoms.size()) {
        throw flib::io_error(from.file, 0,
                             "has " + std::to_string(count) + " atoms instead of the " +
                                 std::to_string(atoms.size()) + reference);
    }
    const auto numbers = from.integers(section_name::numbers, count);
    const auto x = from.reals(section_name::coordinates, 3 * count);
    // Six decimals there, a Bohr radius of another year here.
    constexpr double tolerance = 1e-4;
    std::vector<std::size_t> places;
    std::size_t at = 0;
    for (std::size_t i = 0; i < atoms.size(); ++i, ++at) {
        // Others may stand between them.
        const auto is_here = [&] {
            return numbers[at] == atoms[i].number &&
                   distance(std::span(x).subspan(3 * at, 3), atoms[i]) <= tolerance;
        };
        while (count > atoms.size() && at < count && !is_here()) ++at;
        if (at < count && is_here()) {
            places.push_back(at);
            continue;
        }
        const std::string wrong = "atom " + std::to_string(i + 1);
        if (count > atoms.size()) {
            throw flib::io_error(from.file, 0,
                                 wrong + reference + " is none of its " + std::to_string(count) +
                                     " atoms, in their order");
        }
        if (numbers[i] != atoms[i].number) {
            std::string what = wrong;
            what.append(" is a ").append(std::to_string(numbers[i])).append(" instead of the ");
            throw flib::io_error(from.file, 0,
                                 what.append(std::to_string(atoms[i].number)).append(reference));
        }
        std::string what = wrong;
        what.append(" stands ");
        what += flib::decimal(distance(std::span(x).subspan(3 * i, 3), atoms[i]), 4);
        throw flib::io_error(from.file, 0, what.append(" Angstrom from that").append(reference));
    }
    return places;
}

/// What is kept of the checkpoint of a larger system: all else tells of its atoms.
constexpr std::string_view kept_of_larger[] = {
    "Charge",
    "Multiplicity",
    "Number of electrons",
    "Number of alpha electrons",
    "Number of beta electrons",
    section_name::basis_functions,
    "Number of independent functions",
    section_name::scf_energy,
    "CIS Energy",
    section_name::energy,
};

/// A title that tells who wrote the file, once.
std::string marked(const std::string& title) {
    constexpr std::string_view mark = "sgn_derive: ";
    constexpr std::size_t longest = 72;
    if (title.starts_with(mark)) return title;
    return (std::string(mark) + title).substr(0, std::max(longest, title.size()));
}

/// The atoms of a set: how many, their numbers and charges.
std::vector<section> atom_sections(const displaced_set& set) {
    std::vector<std::int32_t> numbers;
    std::vector<double> charges;
    for (const atom& each : set.atoms) {
        numbers.push_back(each.number);
        charges.push_back(each.number);
    }
    return {integer_section(section_name::atoms, static_cast<std::int32_t>(set.atoms.size())),
            integer_section(section_name::basis_functions, set.basis_functions),
            integer_section(section_name::numbers, numbers),
            real_section(section_name::charges, charges)};
}

}  // namespace

std::string checkpoint_of(const displaced_set& set, const derivatives& of) {
    require_shape(set, of);
    std::string text = "Derivatives of a transition dipole and of forces, by sgn_derive\nFreq\n";
    for (const section& each : atom_sections(set)) text += text_of(each);
    for (const section& each : result_sections(set, of, 0)) text += text_of(each);
    return text;
}

std::string checkpoint_of(const displaced_set& set, const derivatives& of,
                          const std::string& template_file) {
    require_shape(set, of);
    sections from = read_sections(template_file);
    const std::vector<std::size_t> places = places_in(from, set);
    const double energy = from.find(section_name::energy) ? from.real(section_name::energy) : 0;
    std::vector<section> added = result_sections(set, of, energy);
    if (places.size() < atom_count(from)) {
        std::erase_if(from.all, [](const section& each) {
            return std::ranges::find(kept_of_larger, each.label) == std::end(kept_of_larger);
        });
        std::vector<section> atoms = atom_sections(set);
        std::erase_if(atoms, [&](const section& each) { return from.find(each.label); });
        from.all.insert(from.all.begin(), atoms.begin(), atoms.end());
    }
    std::string text = marked(from.titles[0]) + '\n' + from.titles[1] + '\n';
    for (const section& each : from.all) {
        const auto replacing = std::find_if(added.begin(), added.end(), [&](const section& one) {
            return one.label == each.label;
        });
        if (replacing == added.end()) {
            text += text_of(each);
        } else {
            text += text_of(*replacing);
            added.erase(replacing);
        }
    }
    for (const section& each : added) text += text_of(each);
    return text;
}

double energy_of_checkpoint(const std::string& file, const displaced_set& set) {
    const sections from = read_sections(file);
    places_in(from, set);
    return from.real(section_name::energy);
}

checkpoint read_checkpoint(const std::string& file) {
    const sections from = read_sections(file);
    const std::size_t count = atom_count(from);
    const auto numbers = from.integers(section_name::numbers, count);
    const auto x = from.reals(section_name::coordinates, 3 * count);
    checkpoint result;
    for (std::size_t i = 0; i < count; ++i) {
        atom atom;
        atom.number = numbers[i];
        if (numbers[i] >= 0 && numbers[i] <= 118) atom.symbol = flib::element_symbol(numbers[i]);
        for (std::size_t k = 0; k < 3; ++k) atom.x[k] = x[3 * i + k] * flib::bohr_radius;
        result.atoms.push_back(atom);
    }

    const section& head = from.require(section_name::state_scalars);
    const auto scalars =
        from.integers(section_name::state_scalars, static_cast<std::size_t>(head.count));
    const auto refuse = [&](const std::string& message) {
        throw flib::io_error(file, head.line,
                             "'" + std::string(section_name::state_scalars) + "' " + message);
    };
    if (scalars.size() <= layout::derivatives_at) refuse("has too few values");
    if (scalars[layout::derivatives_at] == 0) refuse("tells of no derivatives");
    const std::size_t derivative_count = field_components + 3 * count;
    if (scalars[layout::values_at] != static_cast<std::int32_t>(values_per_state) ||
        scalars[layout::derivatives_at] != static_cast<std::int32_t>(derivative_count)) {
        refuse("does not tell of " + std::to_string(values_per_state) + " values a state and " +
               std::to_string(derivative_count) + " derivatives of each");
    }
    const std::int32_t states = scalars[layout::states_at];
    const std::int32_t target = scalars[layout::target_at];
    if (states < 1 || target < 1 || target > states) refuse("names no target state");
    const auto before = static_cast<std::size_t>(states) * values_per_state;
    const auto values =
        from.reals(section_name::state_values, before + derivative_count * values_per_state);
    const auto dipole_of = [&](std::size_t block) {
        const auto at = values.begin() + static_cast<std::ptrdiff_t>(block + layout::dipole_at);
        return vec3{at[0], at[1], at[2]};
    };
    result.dipole = dipole_of((static_cast<std::size_t>(target) - 1) * values_per_state);
    result.dipole_derivatives = table(3 * count, 3);
    for (std::size_t c = 0; c < 3 * count; ++c) {
        const auto derivative = dipole_of(before + (field_components + c) * values_per_state);
        for (std::size_t k = 0; k < 3; ++k) result.dipole_derivatives(c, k) = derivative[k];
    }
    if (from.find(section_name::gradient) && from.find(section_name::force_constants)) {
        const std::size_t n = 3 * count;
        for (const double each : from.reals(section_name::gradient, n)) {
            result.forces.push_back(-each);
        }
        const auto triangle = from.reals(section_name::force_constants, n * (n + 1) / 2);
        result.force_derivatives = table(n, n);
        std::size_t at = 0;
        for (std::size_t i = 0; i < n; ++i) {
            for (std::size_t j = 0; j <= i; ++j) {
                result.force_derivatives(i, j) = result.force_derivatives(j, i) = -triangle[at++];
            }
        }
    }
    return result;
}

}  // namespace sgn
