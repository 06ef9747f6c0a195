// What a file of a quantum-chemistry program holds.

#include "flib/facts/file_facts.h"

#include <algorithm>
#include <limits>

#include "flib/qm_file/type_tag.h"
#include "flib/util/units.h"
#include "module.h"
#include "sgn/result/result_facts.h"
#include "values.h"

namespace stigruz_python {
namespace {

using flib::quantity;

/// What a user calls a quantity: as the attribute of stigruz.Facts that it would be in.
const char* attribute_of(quantity which) {
    switch (which) {
        case quantity::kind:
            return "program";
        case quantity::natom:
            return "natom";
        case quantity::numbers:
            return "atomic_numbers";
        case quantity::geometry:
            return "coordinates";
        case quantity::masses:
            return "masses";
        case quantity::forces:
            return "forces";
        case quantity::dipoles:
            return "transition_dipoles";
        case quantity::oniom:
            return "oniom";
        case quantity::basis:
            return "basis";
        case quantity::excitations:
            return "excitations";
        case quantity::dump:
            return "dump";
        case quantity::moments:
            break;
    }
    return "moments";
}

py::object program_of(const flib::file_kind& kind) {
    if (kind.tag == sgn::result_tag) return text_of("stigruz");
    const auto* const row =
        std::ranges::find(flib::kinds_in_words, kind.tag, &flib::kind_in_words::tag);
    return text_or_none(row == std::ranges::end(flib::kinds_in_words) ? kind.tag : row->program);
}

py::dict rows_of(const flib::moment_rows& of) {
    const auto rows = static_cast<py::ssize_t>(of.energy.size());
    py::dict values;
    values["energies"] = array_of(of.energy);
    values["electric_dipoles"] = array_of(of.dipole, {rows, 3});
    values["velocity_dipoles"] = array_of(of.velocity_dipole, {rows, 3});
    values["magnetic_dipoles"] = array_of(of.magnetic_dipole, {rows, 3});
    values["velocity_quadrupoles"] = array_of(of.velocity_quadrupole, {rows, 6});
    return values;
}

py::dict moments_of(const flib::state_moments& of) {
    py::dict values;
    values["target"] = of.target;
    values["total_energy"] = or_none(of.total_energy);
    values["ground_energy"] = or_none(of.ground_energy);
    values["spins"] = whole_numbers(of.spin);
    std::vector<double> energies;
    for (std::int32_t state = 1; state <= of.states; ++state) {
        energies.push_back(
            of.excitation_energy(state).value_or(std::numeric_limits<double>::quiet_NaN()));
    }
    values["excitation_energies"] = array_of(energies);
    values["states"] = rows_of(of.of_states);
    values["derivatives"] = of.derivatives ? py::object(rows_of(*of.derivatives)) : py::none();
    return values;
}

py::dict dump_of(const flib::dump_header& of) {
    py::dict values;
    values["record"] = of.number;
    values["values"] = of.values;
    values["states"] = of.layout ? py::cast(of.layout->states) : py::none();
    values["roots"] = of.layout ? py::cast(of.layout->roots) : py::none();
    values["amplitudes_per_spin"] = of.layout ? py::cast(of.layout->amplitudes) : py::none();
    values["has_rest"] = of.layout ? py::cast(of.layout->has_rest) : py::none();
    std::vector<double> energies;
    std::vector<double> alpha;
    std::vector<double> beta;
    py::list spins;
    py::list normalised;
    for (const flib::dumped_state& each : of.states) {
        energies.push_back(each.energy.value_or(std::numeric_limits<double>::quiet_NaN()));
        alpha.push_back(each.norms.alpha);
        beta.push_back(each.norms.beta);
        spins.append(text_of(flib::name_of(each.norms.spin)));
        normalised.append(each.norms.are_of_amplitudes());
    }
    values["energies"] = array_of(energies);
    values["sums_alpha"] = array_of(alpha);
    values["sums_beta"] = array_of(beta);
    values["spins"] = spins;
    values["normalised"] = normalised;
    return values;
}

py::dict counts_of(const flib::basis_counts& of) {
    py::dict values;
    values["alpha_electrons"] = of.alpha_electrons;
    values["beta_electrons"] = of.beta_electrons;
    values["functions"] = of.functions;
    values["independent_functions"] = of.independent;
    return values;
}

py::dict counts_of(const flib::excitation_counts& of) {
    py::dict values;
    values["roots"] = of.roots;
    values["alpha_electrons"] = of.alpha_electrons;
    values["frozen_core"] = of.frozen_core;
    values["active_occupied"] = of.active_occupied;
    values["active_virtual"] = of.active_virtual;
    values["frozen_virtual"] = of.frozen_virtual;
    return values;
}

py::dict oniom_of(const flib::oniom_layers& of) {
    py::dict values;
    values["natom"] = of.natom;
    values["high"] = whole_numbers(of.high);
    return values;
}

py::dict result_of(const sgn::sgn_parameters& of) {
    py::dict values;
    values["sign"] = of.sign;
    values["basis_functions"] = of.nmo;
    values["element"] = py::make_tuple(of.tden_maxloc[0] - 1, of.tden_maxloc[1] - 1);
    values["value"] = of.tden_maxval;
    return values;
}

/// In Angstrom; a result file has them so.
py::array_t<double> coordinates_of(const sgn::facts_and_result& of) {
    if (of.result) return array_of(of.result->x);
    flib::vector_list x = of.facts.geometry->x;
    for (auto& atom : x) {
        for (double& coordinate : atom) coordinate *= flib::bohr_radius;
    }
    return array_of(x);
}

/// Only what is there has an entry.
py::dict values_of(const sgn::facts_and_result& of) {
    const flib::file_facts& facts = of.facts;
    py::dict values;
    if (facts.kind) {
        values["program"] = program_of(*facts.kind);
        values["kind"] = text_of(facts.kind->tag);
        values["in_words"] = text_of(facts.kind->in_words);
        values["version"] = text_or_none(facts.kind->version);
        values["version_of"] = text_or_none(sgn::owner_of_version(*facts.kind));
        values["class_code"] = facts.kind->class_code;
    }
    if (facts.natom) values["natom"] = *facts.natom;
    if (facts.numbers) values["atomic_numbers"] = whole_numbers(*facts.numbers);
    if (!facts.point_charges.empty()) values["point_charges"] = whole_numbers(facts.point_charges);
    if (facts.geometry) {
        values["coordinates"] = coordinates_of(of);
        values["geometry_is_last"] = facts.geometry->last;
        values["geometries"] = facts.geometry->tables;
        values["frame"] = text_or_none(facts.geometry->frame);
        values["two_frames"] = facts.geometry->two_frames;
    }
    if (facts.masses) values["masses"] = array_of(*facts.masses);
    if (facts.forces) values["forces"] = array_of(*facts.forces);
    if (facts.dipoles) values["transition_dipoles"] = array_of(*facts.dipoles);
    if (facts.oniom) values["oniom"] = oniom_of(*facts.oniom);
    if (facts.basis) values["basis"] = counts_of(*facts.basis);
    if (facts.excitations) values["excitations"] = counts_of(*facts.excitations);
    if (facts.dump) values["dump"] = dump_of(*facts.dump);
    if (facts.moments) values["moments"] = moments_of(*facts.moments);
    if (of.result) values["result"] = result_of(of.result->parameters);
    py::dict missing;
    for (const auto& [which, why] : facts.missing) {
        missing[attribute_of(which)] = text_of(why.reason);
    }
    values["missing"] = missing;
    return values;
}

}  // namespace

void add_facts(py::module_& module) {
    module.def(
        "read",
        [](const py::object& file) {
            const std::string name = path_from(file);
            return values_of(without_lock([&] { return sgn::facts_with_result(name); }));
        },
        py::arg("file"), "What the file holds, by the names of the attributes of stigruz.Facts.");
}

}  // namespace stigruz_python
