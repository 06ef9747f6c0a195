#include "sgn/set/displaced_set.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

#include "flib/io/stop_run.h"
#include "flib/util/units.h"
#include "sgn/set/decimals.h"
#include "sgn/set/same_atoms.h"

namespace sgn {
namespace {

constexpr int usual_dipole_decimals = 4;
constexpr int usual_force_decimals = 9;

[[noreturn]] void fail(const result_file& file, std::string_view message) {
    throw flib::io_error(file.name, 0, message);
}

/// Why a file does not belong to the set, or nothing.
std::string misfit_of(const result_file& file, const result_file& reference) {
    if (const std::string what = not_finite(file.contents); !what.empty()) {
        return what + " holds a value that is not a finite number";
    }
    const std::string other = other_atoms(file.contents, reference.contents);
    if (other.empty()) return {};
    return other + ", so it does not belong to " + flib::printable(reference.name);
}

displaced_job make_job(const result_file& file, const result_file& reference) {
    displaced_job result;
    result.name = file.name;
    result.sign = file.contents.parameters.sign;
    result.dipole = file.contents.corrected_tdip;
    result.forces = file.contents.frc;
    result.excited = file.excited;
    result.moved = displacement_of(file.contents.x, reference.contents.x);
    // They have six decimals like the coordinates.
    for (vec3& shift : result.moved.shift) {
        for (double& component : shift) component = std::round(component * 1e6) / 1e6;
    }
    if (!result.moved.shift.empty()) {
        result.moved.distance = length(result.moved.shift[result.moved.farthest]);
    }
    return result;
}

/// Finds out what job `at` is to those before it.
void place(std::vector<displaced_job>& jobs, std::size_t at) {
    displaced_job& added = jobs[at];
    if (added.moved.moved == 0) {
        added.is = role::undisplaced;
        return;
    }
    const auto find = [&](auto&& matches, auto&& may_be) {
        std::size_t i = 1;
        while (i < at && !(may_be(jobs[i].is) && matches(added.moved, jobs[i].moved))) ++i;
        return i;
    };
    const auto takes_part = [](role is) { return is == role::paired || is == role::one_sided; };
    if (const std::size_t same = find(are_same, takes_part); same < at) {
        added.is = role::repeated;
        added.other = same;
        return;
    }
    const auto alone = [](role is) { return is == role::one_sided; };
    if (const std::size_t opposite = find(are_opposite, alone); opposite < at) {
        added.is = jobs[opposite].is = role::paired;
        added.other = opposite;
        jobs[opposite].other = at;
    }
}

/// The decimals of numbers with nine digits, if they are as many for all as for the largest.
int decimals_of_nine_digits(double largest) {
    if (!(largest > 0)) return most_decimals;
    return std::clamp(8 - static_cast<int>(std::floor(std::log10(largest))), 0, most_decimals);
}

/// The largest magnitude of what `values` gives of every job.
template <class Values>
double largest_of(const displaced_set& set, Values values) {
    double largest = 0;
    for (const displaced_job& each : set.jobs) {
        for (const double value : values(each)) largest = std::max(largest, std::abs(value));
    }
    return largest;
}

/// Takes from the checkpoints what they have in more digits: of all files, or of none.
void take_full_digits(displaced_set& set, const std::vector<const result_file*>& files) {
    const bool full =
        std::ranges::all_of(files, [](const auto* file) { return file->full.has_value(); });
    if (!full) return;
    const bool coordinates =
        std::ranges::none_of(files, [](const auto* file) { return file->full->x.empty(); });
    for (std::size_t i = 0; i < files.size(); ++i) {
        displaced_job& job = set.jobs[i];
        job.dipole = files[i]->full->dipole;
        job.moments = files[i]->full->moments;
        for (std::size_t a = 0; coordinates && a < job.moved.shift.size(); ++a) {
            job.moved.shift[a] = difference(files[i]->full->x[a], files.front()->full->x[a]);
        }
    }
    if (coordinates) {
        double farthest = 0;
        for (const atom& each : set.atoms) {
            for (const double x : each.x) farthest = std::max(farthest, std::abs(x));
        }
        set.coordinate_decimals = decimals_of_nine_digits(farthest / flib::bohr_radius);
    }
    set.has_moments = true;
    const auto decimals = [&](auto values) {
        return decimals_of_nine_digits(largest_of(set, values));
    };
    set.dipole_decimals = decimals([](const displaced_job& of) { return of.dipole; });
    set.moment_decimals = {
        decimals([](const displaced_job& of) { return of.moments->velocity_dipole; }),
        decimals([](const displaced_job& of) { return of.moments->magnetic_dipole; }),
        decimals([](const displaced_job& of) { return of.moments->velocity_quadrupole; })};
}

void see_decimals(displaced_set& set) {
    decimals_seen dipole(usual_dipole_decimals);
    std::vector<int> of_each;
    decimals_seen forces(usual_force_decimals);
    for (const displaced_job& each : set.jobs) {
        decimals_seen alone(0);
        for (const double value : each.dipole) {
            dipole.look_at(value);
            alone.look_at(value);
        }
        if (alone.decimals() > 0) of_each.push_back(alone.decimals());
        for (const vec3& force : each.forces) {
            for (const double value : force) {
                forces.look_at(value);
                if (value != 0) set.has_forces = true;
            }
        }
    }
    set.dipole_decimals = dipole.decimals();
    // A file with more decimals than the rest, which somebody made otherwise, says nothing of
    // those.
    if (const std::size_t few = of_each.size() / 4; few > 0) {
        std::ranges::nth_element(of_each, of_each.begin() + static_cast<std::ptrdiff_t>(few));
        set.dipole_decimals =
            std::min(set.dipole_decimals, std::max(usual_dipole_decimals, of_each[few]));
    }
    set.force_decimals = forces.decimals();
}

}  // namespace

std::string_view name_of(role of) {
    constexpr std::array<std::string_view, 5> names{"reference", "paired", "one_sided",
                                                    "undisplaced", "repeated"};
    return names[static_cast<std::size_t>(of)];
}

std::vector<std::string> names_of(const displaced_set& set) {
    std::vector<std::string> names;
    for (const displaced_job& each : set.jobs) names.push_back(each.name);
    return names;
}

std::string_view source_of_dipoles(const displaced_set& set) {
    if (set.has_moments) return "checkpoints";
    return set.jobs.front().name.ends_with(".fchk") ? "logs" : "result files";
}

displaced_set make_set(const result_file& reference, std::span<const result_file> files) {
    displaced_set set;
    const sgn_contents& contents = reference.contents;
    if (contents.x.empty()) fail(reference, "holds no atoms");
    if (const std::string shape = other_shape(contents); !shape.empty()) fail(reference, shape);
    if (const std::string reason = misfit_of(reference, reference); !reason.empty()) {
        fail(reference, reason);
    }
    for (std::size_t i = 0; i < contents.x.size(); ++i) {
        set.atoms.push_back({std::string(contents.symbol[i].trimmed()), contents.nat[i],
                             contents.mass[i], contents.x[i]});
        if (i < reference.input_numbers.size()) set.atoms[i].input = reference.input_numbers[i];
    }
    set.basis_functions = contents.parameters.nmo;
    set.jobs.push_back(make_job(reference, reference));
    set.jobs.front().is = role::reference;
    std::vector<const result_file*> members{&reference};
    for (const result_file& file : files) {
        if (std::string reason = misfit_of(file, reference); !reason.empty()) {
            set.misfits.push_back({file.name, std::move(reason)});
            continue;
        }
        set.jobs.push_back(make_job(file, reference));
        members.push_back(&file);
        place(set.jobs, set.jobs.size() - 1);
    }
    for (const displaced_job& each : set.jobs) {
        if (each.is != role::paired && each.is != role::one_sided) continue;
        ++(each.is == role::paired ? set.pairs : set.one_sided);
        set.largest_step = std::max(set.largest_step, each.moved.distance);
        set.smallest_step = set.smallest_step > 0 ? std::min(set.smallest_step, each.moved.distance)
                                                  : each.moved.distance;
    }
    set.pairs /= 2;
    if (set.pairs + set.one_sided == 0) {
        if (!set.misfits.empty()) {
            throw flib::io_error(set.misfits.front().name, 0, set.misfits.front().reason);
        }
        fail(reference,
             "is not displaced in any of the files, so there is nothing to differentiate");
    }
    see_decimals(set);
    take_full_digits(set, members);
    return set;
}

}  // namespace sgn
