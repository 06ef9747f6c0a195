// Made-up molecules whose dipole and forces turn along with them, and sets of result files of them.
#pragma once

#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "flib/util/units.h"
#include "sgn/set/displaced_set.h"

namespace model {

using sgn::result_file;
using sgn::vec3;
using geometry = std::vector<vec3>;  // Angstrom

struct molecule {
    std::vector<std::int32_t> numbers;
    geometry x;
    double strength = 1;  // of the dipole
    int dipole_decimals = 4;
    int force_decimals = 9;
};

inline double rounded(double value, int decimals) {
    const double unit = std::pow(10, decimals);
    return std::round(value * unit) / unit;
}

inline vec3 arm(const geometry& x, std::size_t a, std::size_t b) {
    return sgn::scaled(1 / flib::bohr_radius, sgn::difference(x[a], x[b]));
}

/// What an atom adds to the dipole (au): a sum of vectors along the pairs with the others.
inline vec3 part_of_dipole(const molecule& of, const geometry& x, std::size_t a) {
    vec3 total{};
    for (std::size_t b = 0; b < x.size(); ++b) {
        const vec3 d = arm(x, a, b);
        const double r = sgn::length(d);
        const double charge = 0.05 * of.numbers[a] * std::exp(-r / 3) * of.strength;
        if (a != b) total = sgn::sum(total, sgn::scaled(charge, d));
    }
    return total;
}

/// It moves and turns along. Atoms of one kind are as good as equal, so that the state is dark
/// where they stand symmetrically.
inline vec3 dipole(const molecule& of, const geometry& x) {
    vec3 total{};
    for (std::size_t a = 0; a < x.size(); ++a) {
        total = sgn::sum(total, part_of_dipole(of, x, a));
    }
    return total;
}

/// A velocity dipole, and a magnetic dipole about the origin, of the parts where the atoms are.
inline sgn::other_moments moments(const molecule& of, const geometry& x) {
    sgn::other_moments result;
    result.velocity_dipole = sgn::scaled(0.5, dipole(of, x));
    for (std::size_t a = 0; a < x.size(); ++a) {
        const vec3 at = sgn::scaled(0.5 / flib::bohr_radius, x[a]);
        const vec3 v = part_of_dipole(of, x, a);
        const vec3 moment{at[1] * v[2] - at[2] * v[1], at[2] * v[0] - at[0] * v[2],
                          at[0] * v[1] - at[1] * v[0]};
        result.magnetic_dipole = sgn::sum(result.magnetic_dipole, moment);
    }
    return result;
}

/// Springs between all atoms, at rest at 2.5 Bohr.
inline geometry forces(const molecule& of, const geometry& x) {
    geometry result(x.size());
    for (std::size_t a = 0; a < x.size(); ++a) {
        for (std::size_t b = 0; b < x.size(); ++b) {
            if (a == b) continue;
            const vec3 d = arm(x, a, b);
            const double r = sgn::length(d);
            const double pull =
                0.02 * (of.numbers[a] + of.numbers[b]) * std::exp(-r / 2) * (2.5 - r) / r;
            result[a] = sgn::sum(result[a], sgn::scaled(pull, d));
        }
    }
    return result;
}

inline result_file file(const molecule& of, const std::string& name, geometry x) {
    result_file result{name, {}};
    auto& contents = result.contents;
    contents.parameters.sign = 1;
    contents.parameters.natom = static_cast<std::int32_t>(x.size());
    contents.parameters.nmo = 31;
    contents.parameters.tden_maxval = 0.4;
    for (vec3& place : x) {
        for (double& component : place) component = rounded(component, 6);
    }
    for (const std::int32_t number : of.numbers) {
        contents.symbol.emplace_back(number == 1 ? "H" : number == 6 ? "C" : "O");
        contents.nat.push_back(number);
        contents.mass.push_back(number == 1 ? 1.007825 : 2.0 * number);
    }
    contents.x = x;
    contents.corrected_tdip = dipole(of, x);
    contents.frc = forces(of, x);
    for (double& value : contents.corrected_tdip) value = rounded(value, of.dipole_decimals);
    for (vec3& force : contents.frc) {
        for (double& value : force) value = rounded(value, of.force_decimals);
    }
    return result;
}

/// A result with the digits of a checkpoint beside it.
inline result_file with_moments(const molecule& of, result_file file) {
    file.full = sgn::full_digits{dipole(of, file.contents.x), moments(of, file.contents.x)};
    return file;
}

inline result_file reference(const molecule& of) {
    return file(of, "ref", of.x);
}

/// Every atom by + and - `step` along every axis: "1x+", "1x-", "1y+", ...
inline std::vector<result_file> displaced(const molecule& of, double step = 0.01) {
    std::vector<result_file> files;
    for (std::size_t a = 0; a < of.x.size(); ++a) {
        for (std::size_t k = 0; k < 3; ++k) {
            for (const int direction : {1, -1}) {
                geometry x = of.x;
                x[a][k] += direction * step;
                files.push_back(file(
                    of, std::to_string(a + 1) + sgn::axis_names[k] + (direction > 0 ? '+' : '-'),
                    x));
            }
        }
    }
    return files;
}

/// As many pairs as there are coordinates, all atoms at once along random directions.
inline std::vector<result_file> obliquely_displaced(const molecule& of, double step = 0.01) {
    std::mt19937 random(7);
    std::vector<result_file> files;
    for (std::size_t n = 0; n < 3 * of.x.size(); ++n) {
        geometry shift(of.x.size());
        for (vec3& each : shift) {
            // Integers, so that the outcome is the same with every library.
            for (double& c : each) c = step * (static_cast<double>(random() % 2001) / 1000 - 1);
        }
        for (const int direction : {1, -1}) {
            geometry x = of.x;
            for (std::size_t a = 0; a < x.size(); ++a) {
                x[a] = sgn::sum(x[a], sgn::scaled(direction, shift[a]));
            }
            files.push_back(file(of, std::to_string(n) + (direction > 0 ? '+' : '-'), x));
        }
    }
    return files;
}

inline void reverse(result_file& of) {
    for (double& component : of.contents.corrected_tdip) component = -component;
}

/// Without symmetry; in a bright and in a nearly dark state.
inline const molecule bent{
    {8, 1, 6, 1}, {{0.05, -0.11, 0.118}, {0.93, 0.27, -0.3}, {-0.6, 1.1, 0.4}, {-1.1, 0.9, 1.3}}};
inline const molecule diatomic{{8, 1}, {{0.1, 0.2, 0.3}, {0.7, 0.8, 0.8}}};
/// On a line along no axis.
inline const molecule line{{8, 6, 1}, {{0, 0, 0}, {0.8, -0.4, 0.6}, {1.5, -0.75, 1.125}}};
/// Equal atoms about a centre: the dipole vanishes, and its derivatives do not.
inline const molecule dark{
    {6, 1, 1, 1, 1},
    {{0, 0, 0}, {0.9, 0.6, 0.3}, {-0.9, -0.6, -0.3}, {0.5, -0.9, 0.4}, {-0.5, 0.9, -0.4}}};

}  // namespace model
