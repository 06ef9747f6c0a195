#include "sgn_derive/json.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "common/json_text.h"
#include "common/set_json.h"
#include "flib/util/units.h"
#include "sgn/set/input_numbers.h"
#include "sgn/set/set_moments.h"

namespace sgn_derive {
namespace {

using sgn::role;
using tools::json_of;
using tools::json_value;

/// Those of a file.
std::vector<sgn::finding> findings_of(const sgn::report& of, std::size_t job) {
    std::vector<sgn::finding> result;
    std::ranges::copy_if(of.findings, std::back_inserter(result),
                         [job](const sgn::finding& each) { return each.job == job; });
    return result;
}

json_value file_of(const sgn::report& of, std::size_t at) {
    const sgn::displaced_job& job = of.set.jobs[at];
    json_value result{{"file", job.name},
                      {"role", name_of(job.is)},
                      {"sign", job.sign},
                      {"dipole", job.dipole},
                      {"step", job.moved.distance}};
    const bool has_other = job.is == role::paired || job.is == role::repeated;
    result["other"] = has_other ? json_value(of.set.jobs[job.other].name) : json_value(nullptr);
    result["findings"] = json_of(findings_of(of, at));
    return result;
}

json_value mode_of(const sgn::report& of, const sgn::normal_mode& mode) {
    json_value result{{"wavenumber", mode.wavenumber},
                      {"reduced_mass", mode.reduced_mass},
                      {"displacement", mode.displacement},
                      {"dipole_derivative", mode.dipole_derivative},
                      {"dipole_derivative_q", mode.dipole_derivative_q},
                      {"borrowed", mode.borrowed}};
    for (const auto& [name, derivatives] : sgn::other_derivatives(of.derivatives)) {
        const std::string key = std::string(name) + "_derivative";
        if (derivatives->values.rows == 0) {
            result[key] = result[key + "_q"] = nullptr;
            continue;
        }
        std::vector<double> values = by_mode(mode, derivatives->values);
        result[key] = values;
        for (double& each : values) each *= dimensionless_factor(mode);
        result[key + "_q"] = values;
    }
    return result;
}

/// Of the transition that the dipole belongs to; null if no checkpoint tells.
json_value excitation_of(const sgn::report& of) {
    const auto& reference = of.set.jobs.front().excited;
    if (!reference) return nullptr;
    const std::vector<double> gradient = excitation_gradient(of.set, of.derivatives);
    json_value result{{"state", reference->state}, {"state_of_forces", reference->target}};
    result["energy"] = reference->energy ? json_value(*reference->energy) : nullptr;
    std::vector<sgn::vec3> by_atom;
    for (std::size_t c = 0; c < gradient.size(); c += 3) {
        by_atom.push_back({gradient[c], gradient[c + 1], gradient[c + 2]});
    }
    result["gradient"] = by_atom.empty() ? json_value(nullptr) : json_value(by_atom);
    return result;
}

/// Null where none is near, or states were not followed.
json_value near_state_of(const sgn::report& of) {
    if (!of.near) return nullptr;
    return {{"state", of.near->state},
            {"distance", of.near->distance * flib::hartree_energy},
            {"job", of.near->job},
            {"near", of.near->near},
            {"jobs", of.near->jobs}};
}

/// Null where the jobs do not tell the moment.
json_value json_of(const sgn::moment_derivatives& of) {
    if (of.values.rows == 0) return nullptr;
    return {{"values", json_of(of.values)},
            {"rounding", of.rounding},
            {"noise", of.noise},
            {"step_errors", json_of(of.step)},
            {"step_scale", of.step_scale},
            {"uncertainties", json_of(of.uncertainty)}};
}

}  // namespace

std::string json_of(const sgn::report& of) {
    const sgn::displaced_set& set = of.set;
    json_value result{{"written_by", "sgn_derive"}};
    result["reference"] = set.jobs.front().name;
    json_value& files = result["files"] = json_value::array();
    for (std::size_t i = 0; i < set.jobs.size(); ++i) files.push_back(file_of(of, i));
    json_value& atoms = result["atoms"] = json_value::array();
    for (std::size_t i = 0; i < set.atoms.size(); ++i) {
        const sgn::atom& each = set.atoms[i];
        atoms.push_back({{"symbol", each.symbol},
                         {"number", each.number},
                         {"mass", each.mass},
                         {"x", each.x},
                         {"place", i + 1},
                         {"input", number_of(each, i)}});
    }
    result["step"] = {{"smallest", set.smallest_step}, {"largest", set.largest_step}};
    result["decimals"] = {{"dipole", set.dipole_decimals},
                          {"forces", set.force_decimals},
                          {"coordinates", set.coordinate_decimals}};
    result["dipole_source"] = source_of_dipoles(set);
    result["dipole"] = set.jobs.front().dipole;
    result["dipole_derivatives"] = json_of(of.derivatives.dipole);
    result["dipole_uncertainty"] = json_of(of.uncertainties.total);
    result["dipole_rounding"] = of.derivatives.dipole_rounding;
    result["dipole_sign_errors"] = json_of(of.uncertainties.signs);
    result["dipole_step_error"] = of.derivatives.dipole_step_error;
    result["dipole_step_errors"] = json_of(of.derivatives.dipole_step);
    for (const auto& [name, derivatives] : sgn::other_derivatives(of.derivatives)) {
        result[std::string(name) + "_derivatives"] = json_of(*derivatives);
    }
    result["forces"] = set.jobs.front().forces;
    result["force_constants"] = json_of(of.force_constants);
    result["force_constants_asymmetry"] = of.asymmetry;
    result["force_step_error"] = of.derivatives.force_step_error;
    result["stationary"] = of.stationary();
    json_value& modes = result["modes"] = json_value::array();
    for (const sgn::normal_mode& each : of.modes) modes.push_back(mode_of(of, each));

    result["excitation"] = excitation_of(of);
    result["near_state"] = near_state_of(of);
    result["surroundings"] = of.surroundings;

    json_value forces_rules = json_of(of.force_rules);
    forces_rules["suspects"] = json_value::array();
    result["sum_rules"] = {
        {"dipole", json_of(of.dipole_rules, of.suspects, of.signs, names_of(set))},
        {"forces", forces_rules},
        {"velocity_dipole", json_of(of.velocity_rules)},
        {"magnetic_dipole", json_of(of.magnetic_rules)}};

    json_value& findings = result["findings"] = json_value::array();
    for (const sgn::finding& each : of.findings) {
        json_value one{{"doubt", sgn::name_of(each.kind)}, {"text", each.text}};
        one["file"] = each.job == sgn::finding::whole_set ? json_value(nullptr)
                                                          : json_value(set.jobs[each.job].name);
        findings.push_back(one);
    }
    result["verdict"] = verdict_of(of);
    result["fine"] = of.fine();
    return tools::json_text(result);
}

}  // namespace sgn_derive
