#include <cmath>

#include "flib/text/fixed_text.h"
#include "qm_file/show.h"

namespace qm_file {
namespace {

using flib::quantity;
using tools::json_value;

/// The value of `fact`, as `told` makes it; null if there is none. What a file does not give is
/// null, arrays too.
template <class Fact, class Told>
json_value if_there(const std::optional<Fact>& fact, Told told) {
    return fact ? json_value(told(*fact)) : json_value();
}

json_value number_or_null(std::int32_t number) {
    return number == flib::unknown_number ? json_value() : json_value(number);
}

json_value numbers_of(const std::vector<std::int32_t>& numbers) {
    json_value all = json_value::array();
    for (const std::int32_t number : numbers) all.push_back(number_or_null(number));
    return all;
}

json_value result_of(const sgn::sgn_contents& result) {
    const sgn::sgn_parameters& parameters = result.parameters;
    return {{"sign", parameters.sign},
            {"basis_functions", parameters.nmo},
            {"element", parameters.tden_maxloc},
            {"value", parameters.tden_maxval}};
}

constexpr std::string_view key_of(quantity which) {
    switch (which) {
        case quantity::kind:
            return "type";
        case quantity::natom:
            return "natom";
        case quantity::numbers:
            return "nat";
        case quantity::geometry:
            return "coord";
        case quantity::masses:
            return "mass";
        case quantity::forces:
            return "force";
        case quantity::dipoles:
            return "tdip";
        case quantity::oniom:
            return "oniom";
        case quantity::basis:
            return "nbasis";
        case quantity::excitations:
            return "nci";
        case quantity::dump:
            return "dump";
        case quantity::moments:
            return "moments";
    }
    return {};
}

json_value dump_of(const flib::dump_header& dump) {
    json_value json{{"file", dump.number}, {"values", dump.values}};
    json["layout"] = if_there(dump.layout, [](const auto& layout) {
        return json_value{{"states", layout.states},
                          {"roots", layout.roots},
                          {"amplitudes_per_spin", layout.amplitudes},
                          {"has_rest", layout.has_rest}};
    });
    json["states"] = json_value::array();
    for (const flib::dumped_state& state : dump.states) {
        json["states"].push_back(
            {{"energy_hartree", if_there(state.energy, [](double energy) { return energy; })},
             {"spin", flib::name_of(state.norms.spin)},
             {"sum_alpha", state.norms.alpha},
             {"sum_beta", state.norms.beta},
             {"normalised", state.norms.are_of_amplitudes()}});
    }
    return json;
}

/// Row by row: of states, or of the coordinates that they are differentiated by.
std::vector<json_value> rows_of(const flib::moment_rows& of) {
    std::vector<json_value> rows;
    for (std::size_t i = 0; i < of.energy.size(); ++i) {
        const auto part = [&](const std::vector<double>& values, std::size_t count) {
            const auto begin = values.begin() + static_cast<std::ptrdiff_t>(count * i);
            return std::vector<double>(begin, begin + static_cast<std::ptrdiff_t>(count));
        };
        rows.push_back(json_value{{"energy_hartree", of.energy[i]},
                                  {"electric_dipole", part(of.dipole, 3)},
                                  {"velocity_dipole", part(of.velocity_dipole, 3)},
                                  {"magnetic_dipole", part(of.magnetic_dipole, 3)},
                                  {"velocity_quadrupole", part(of.velocity_quadrupole, 6)}});
    }
    return rows;
}

json_value moments_of(const flib::state_moments& moments) {
    const auto number = [](double value) { return value; };
    std::vector<json_value> states = rows_of(moments.of_states);
    for (std::size_t i = 0; i < states.size(); ++i) {
        states[i]["spin"] = moments.spin[i];
        states[i]["excitation_hartree"] =
            if_there(moments.excitation_energy(static_cast<std::int32_t>(i) + 1), number);
    }
    return {{"target", moments.target},
            {"total_energy_hartree", if_there(moments.total_energy, number)},
            {"ground_energy_hartree", if_there(moments.ground_energy, number)},
            {"states", states},
            {"derivatives", if_there(moments.derivatives, rows_of)}};
}

}  // namespace

json_value json_of(const file_report& report) {
    const flib::file_facts& facts = report.facts;
    json_value json{{"written_by", "qm_file"}};
    json["file"] = facts.file;
    json["type"] = if_there(facts.kind, [](const auto& kind) { return kind.tag; });
    json["version"] = if_there(facts.kind, [](const auto& kind) { return kind.version; });
    json["version_of"] = if_there(facts.kind, [](const auto& kind) {
        const std::string_view whose = sgn::owner_of_version(kind);
        return whose.empty() ? json_value() : json_value(whose);
    });
    json["class"] = facts.kind ? facts.kind->class_code : -1;
    json["natom"] = if_there(facts.natom, [](std::int32_t natom) { return natom; });
    json["oniom"] = if_there(facts.oniom, [](const auto& layers) {
        return json_value{
            {"high", layers.high.size()}, {"all", layers.natom}, {"index", layers.high}};
    });
    json["basis"] = if_there(facts.basis, [](const auto& basis) {
        return json_value{{"alpha_electrons", basis.alpha_electrons},
                          {"beta_electrons", basis.beta_electrons},
                          {"functions", basis.functions},
                          {"independent_functions", basis.independent}};
    });
    json["excitations"] = if_there(facts.excitations, [](const auto& space) {
        return json_value{{"roots", space.roots},
                          {"alpha_electrons", space.alpha_electrons},
                          {"frozen_core", space.frozen_core},
                          {"active_occupied", space.active_occupied},
                          {"active_virtual", space.active_virtual},
                          {"frozen_virtual", space.frozen_virtual}};
    });
    json["atomic_numbers"] = if_there(facts.numbers, numbers_of);
    if (!facts.point_charges.empty()) json["point_charges"] = facts.point_charges;
    const auto as_it_is = [](const auto& values) { return values; };
    json["masses_u"] = if_there(facts.masses, as_it_is);
    json["geometry"] = if_there(facts.geometry, [](const flib::geometry& geometry) {
        return json_value{{"which", geometry.last ? "last" : "first"},
                          {"of", geometry.tables},
                          {"frame", geometry.frame}};
    });
    json["coordinates_bohr"] =
        if_there(facts.geometry, [](const auto& geometry) { return geometry.x; });
    json["forces_hartree_per_bohr"] = if_there(facts.forces, as_it_is);
    json["transition_dipoles_au"] = if_there(facts.dipoles, as_it_is);
    json["two_frames"] =
        if_there(facts.geometry, [](const auto& geometry) { return geometry.two_frames; });
    json["dump"] = if_there(facts.dump, dump_of);
    json["moments"] = if_there(facts.moments, moments_of);
    json["result"] = if_there(report.result, result_of);
    json["missing"] = json_value::object();
    for (const quantity which : flib::all_quantities) {
        const auto found = facts.missing.find(which);
        if (found != facts.missing.end()) {
            json["missing"][std::string(key_of(which))] = found->second.reason;
        }
    }
    return json;
}

}  // namespace qm_file
