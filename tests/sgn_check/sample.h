// Result files made up for tests: a molecule, displaced, turned or spoilt.
#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>
#include <string>
#include <vector>

#include "flib/io/unit.h"
#include "flib/util/units.h"
#include "numfreq/sgn_file.h"
#include "sgn_check/check.h"
#include "sgn_check/frame.h"

namespace sample {

using sgn_check::vec3;

/// `x` turned by `degrees` about `axis` (any length) through the point (0.3, -0.2, 0.5).
inline std::vector<vec3> turned(std::vector<vec3> x, const vec3& axis, double degrees) {
    const vec3 fixed{0.3, -0.2, 0.5};
    const double c = std::cos(degrees * std::numbers::pi / 180);
    const double s = std::sin(degrees * std::numbers::pi / 180);
    vec3 u = axis;
    for (double& component : u) component /= sgn_check::length(axis);
    for (vec3& atom : x) {
        const vec3 v = sgn_check::difference(atom, fixed);
        const double along = u[0] * v[0] + u[1] * v[1] + u[2] * v[2];
        const vec3 across{u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2],
                          u[0] * v[1] - u[1] * v[0]};
        for (std::size_t k = 0; k < 3; ++k) {
            atom[k] = fixed[k] + c * v[k] + s * across[k] + (1 - c) * along * u[k];
        }
    }
    return x;
}

/// Coordinates as a result file gives them.
inline std::vector<vec3> rounded(std::vector<vec3> x) {
    for (vec3& atom : x) {
        for (double& component : atom) component = std::round(component * 1e6) / 1e6;
    }
    return x;
}

/// A result file of water as it would be read; its first atom stands at `oxygen`.
inline sgn_check::result_file water(const std::string& name, const vec3& oxygen = {0, 0, 0.118}) {
    numfreq::sgn_contents job;
    job.parameters = {1, 3, 22, 4, 17, 4, 1, 0, {15, 3}, 0.4367};
    job.symbol = {std::string_view("O"), std::string_view("H"), std::string_view("H")};
    job.nat = {8, 1, 1};
    job.mass = {15.9949146, 1.007825, 1.007825};
    job.x = {oxygen, {0, 0.76, -0.472}, {0, -0.76, -0.472}};
    job.corrected_tdip = {-0.5354, 0, 0};
    job.frc = {{0, 0, 0.0839}, {0, 0.0551, -0.042}, {0, -0.0551, -0.042}};
    return {name, job};
}

/// Writes it as the sign tool does.
inline void write(const sgn_check::result_file& file) {
    numfreq::sgn_contents job = file.contents;
    const auto natom = static_cast<std::int32_t>(job.x.size());
    for (vec3& atom : job.x) {
        for (double& component : atom) component /= flib::bohr_radius;
    }
    const std::int32_t fid = flib::get_free_fid();
    flib::open_replace(fid, file.name);
    numfreq::write_sgn_parameters(fid, job.parameters);
    numfreq::write_sgn_body(fid, {job.symbol,
                                  job.nat,
                                  job.mass,
                                  {job.x.front().data(), 3, natom},
                                  job.corrected_tdip,
                                  {job.frc.front().data(), 3, natom}});
    flib::commit_unit(fid);
}

}  // namespace sample
