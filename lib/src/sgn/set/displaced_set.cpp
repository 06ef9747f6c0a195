#include "sgn/set/displaced_set.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "sgn/set/decimals.h"

namespace sgn {
namespace {

constexpr int usual_dipole_decimals = 4;
constexpr int usual_force_decimals = 9;

[[noreturn]] void fail(const result_file& file, std::string_view message) {
    throw flib::io_error(file.name, 0, message);
}

void require_finite(const result_file& file) {
    const auto check = [&](std::string_view what, double value) {
        if (!std::isfinite(value)) {
            fail(file, std::string(what).append(" holds a value that is not a finite number"));
        }
    };
    const sgn_contents& contents = file.contents;
    for (const double value : contents.corrected_tdip) check("the dipole", value);
    for (const double value : contents.mass) check("the masses", value);
    for (const vec3& x : contents.x) {
        for (const double value : x) check("the geometry", value);
    }
    for (const vec3& force : contents.frc) {
        for (const double value : force) check("the forces", value);
    }
}

std::string atom_text(const sgn_contents& contents, std::size_t i) {
    return flib::printable(contents.symbol[i].trimmed()) + " " + std::to_string(contents.nat[i]) +
           " " + std::string(flib::trim_left(flib::fixed_field(contents.mass[i], 20, 4)));
}

/// The files of a set differ in nothing but the geometry.
void require_same_atoms(const result_file& file, const result_file& reference) {
    const std::string other = ", so it does not belong to " + flib::printable(reference.name);
    const sgn_contents& mine = file.contents;
    const sgn_contents& theirs = reference.contents;
    if (mine.x.size() != theirs.x.size()) {
        fail(file, "has " + std::to_string(mine.x.size()) + " atoms instead of " +
                       std::to_string(theirs.x.size()) + other);
    }
    constexpr double mass_rounding = 1e-6;
    for (std::size_t i = 0; i < mine.x.size(); ++i) {
        if (mine.nat[i] != theirs.nat[i] || !(mine.symbol[i] == theirs.symbol[i].padded()) ||
            std::abs(mine.mass[i] - theirs.mass[i]) > mass_rounding) {
            fail(file, "atom " + std::to_string(i + 1) + " is " + atom_text(mine, i) +
                           " instead of " + atom_text(theirs, i) + other);
        }
    }
}

job make_job(const result_file& file, const result_file& reference) {
    job result;
    result.name = file.name;
    result.sign = file.contents.parameters.sign;
    result.dipole = file.contents.corrected_tdip;
    result.forces = file.contents.frc;
    for (std::size_t i = 0; i < file.contents.x.size(); ++i) {
        vec3 shift = difference(file.contents.x[i], reference.contents.x[i]);
        // It has six decimals like the coordinates.
        for (double& component : shift) component = std::round(component * 1e6) / 1e6;
        result.shift.push_back(shift);
        result.step = std::max(result.step, length(result.shift.back()));
    }
    return result;
}

/// Whether two displacements are the same (`direction` 1) or opposite (-1).
bool match(const job& a, const job& b, double direction) {
    return std::abs(a.step - b.step) <= rounding &&
           std::equal(a.shift.begin(), a.shift.end(), b.shift.begin(),
                      [&](const vec3& one, const vec3& other) {
                          return length(difference(one, scaled(direction, other))) <= rounding;
                      });
}

/// Finds out what job `at` is to those before it.
void place(std::vector<job>& jobs, std::size_t at) {
    job& added = jobs[at];
    if (added.step <= rounding) {
        added.is = role::undisplaced;
        return;
    }
    const auto find = [&](double direction, auto&& may_be) {
        std::size_t i = 1;
        while (i < at && !(may_be(jobs[i].is) && match(added, jobs[i], direction))) ++i;
        return i;
    };
    const auto takes_part = [](role is) { return is == role::paired || is == role::one_sided; };
    if (const std::size_t same = find(1, takes_part); same < at) {
        added.is = role::repeated;
        added.other = same;
        return;
    }
    const auto alone = [](role is) { return is == role::one_sided; };
    if (const std::size_t opposite = find(-1, alone); opposite < at) {
        added.is = jobs[opposite].is = role::paired;
        added.other = opposite;
        jobs[opposite].other = at;
    }
}

void see_decimals(displaced_set& set) {
    decimals_seen dipole(usual_dipole_decimals);
    decimals_seen forces(usual_force_decimals);
    for (const job& each : set.jobs) {
        for (const double value : each.dipole) dipole.look_at(value);
        for (const vec3& force : each.forces) {
            for (const double value : force) {
                forces.look_at(value);
                if (value != 0) set.has_forces = true;
            }
        }
    }
    set.dipole_decimals = dipole.decimals();
    set.force_decimals = forces.decimals();
}

}  // namespace

displaced_set make_set(const result_file& reference, std::span<const result_file> files) {
    displaced_set set;
    const sgn_contents& contents = reference.contents;
    require_finite(reference);
    if (contents.x.empty()) fail(reference, "holds no atoms");
    for (std::size_t i = 0; i < contents.x.size(); ++i) {
        set.atoms.push_back({std::string(contents.symbol[i].trimmed()), contents.nat[i],
                             contents.mass[i], contents.x[i]});
    }
    set.basis_functions = contents.parameters.nmo;
    set.jobs.push_back(make_job(reference, reference));
    set.jobs.front().is = role::reference;
    for (const result_file& file : files) {
        require_finite(file);
        require_same_atoms(file, reference);
        set.jobs.push_back(make_job(file, reference));
        place(set.jobs, set.jobs.size() - 1);
    }
    for (const job& each : set.jobs) {
        if (each.is != role::paired && each.is != role::one_sided) continue;
        ++(each.is == role::paired ? set.pairs : set.one_sided);
        set.largest_step = std::max(set.largest_step, each.step);
        set.smallest_step =
            set.smallest_step > 0 ? std::min(set.smallest_step, each.step) : each.step;
    }
    set.pairs /= 2;
    if (set.pairs + set.one_sided == 0) {
        fail(reference,
             "is not displaced in any of the files, so there is nothing to differentiate");
    }
    see_decimals(set);
    return set;
}

}  // namespace sgn
