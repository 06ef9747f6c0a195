#include "qm_file/show.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "flib/io/stop_run.h"
#include "flib/text/fixed_text.h"
#include "flib/util/elements.h"
#include "flib/util/units.h"

namespace qm_file {
namespace {

/// Atoms that a summary shows.
constexpr std::int32_t most_shown = 60;

std::string_view symbol_of(const file_facts& facts, std::int32_t i) {
    if (facts.nat.empty()) return flib::element_symbol(0);
    const std::int32_t number = facts.nat[static_cast<std::size_t>(i) - 1];
    return number >= 0 && number <= 118 ? flib::element_symbol(number) : "?";
}

template <class... Values>
std::string formatted(const char* format, Values... values) {
    char text[256];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

std::string heading(std::string_view title) {
    std::string text = "  ";
    text += title;
    text.resize(16, ' ');
    return text;
}

/// One atom's numbers in columns of `format`; blanks for a quantity that the file does not hold.
std::string columns(const vectors& of, std::int32_t i, const char* format, double factor = 1) {
    std::string text;
    for (const double value : of.view().column(i)) text += formatted(format, value * factor);
    return text;
}

/// The column of the forces that belongs to atom `i`; 0 if none does.
std::int32_t force_column(const file_facts& facts, std::int32_t i) {
    if (!facts.oniom) return i <= facts.forces.count() ? i : 0;
    const auto& index = facts.oniom->index;
    const auto found = std::find(index.begin(), index.end(), i);
    const auto k = static_cast<std::int32_t>(found - index.begin()) + 1;
    return k <= facts.forces.count() ? k : 0;
}

std::string atom_table(const file_facts& facts) {
    const bool geometry = facts.coordinates.count() > 0;
    const bool forces = facts.forces.count() > 0;
    if (!geometry && facts.nat.empty() && facts.masses.empty()) return {};
    std::string text = "\n        atom";
    if (geometry) text += "           x           y           z";
    if (!facts.masses.empty()) text += "        mass";
    if (forces) text += "     force x     force y     force z";
    text += '\n';
    const std::int32_t shown = std::min(*facts.natom, most_shown);
    for (std::int32_t i = 1; i <= shown; ++i) {
        text += formatted("  %6d  %-2s", i, std::string(symbol_of(facts, i)).c_str());
        if (geometry) text += columns(facts.coordinates, i, "%12.6f", flib::bohr_radius);
        if (!facts.masses.empty()) {
            const double mass = facts.masses[static_cast<std::size_t>(i) - 1];
            text += std::isnan(mass) ? "           ?" : formatted("%12.6f", mass);
        }
        if (const std::int32_t k = force_column(facts, i); k > 0) {
            text += columns(facts.forces, k, "%12.6f");
        }
        text += '\n';
    }
    if (shown < *facts.natom) {
        text += formatted("  ... and %d more atoms\n", *facts.natom - shown);
    }
    text += "  (";
    if (geometry) text += "Angstrom";
    if (!facts.masses.empty()) text += geometry ? ", u" : "u";
    if (forces) text += ", Hartree/Bohr";
    if (!geometry && facts.masses.empty()) text += "elements only";
    return text + ")\n";
}

std::string dipole_lines(const file_facts& facts) {
    std::string text;
    for (std::int32_t state = 1; state <= facts.dipoles.count(); ++state) {
        text += heading(state == 1 ? "dipoles" : "") + formatted("state %3d", state) +
                columns(facts.dipoles, state, "%10.4f") +
                (state == 1 ? "  (ground to excited state, a.u.)\n" : "\n");
    }
    return text;
}

std::string basis_line(const basis_counts& basis) {
    return formatted("%d functions, %d of them independent; %d alpha and %d beta electrons",
                     basis.functions, basis.independent, basis.alpha, basis.beta);
}

std::string excitation_line(const excitation_counts& counts) {
    return formatted(
        "%d roots; orbitals: %d frozen core, %d active occupied, %d active virtual, %d frozen "
        "virtual",
        counts.roots, counts.frozen_core, counts.active_occupied, counts.active_virtual,
        counts.frozen_virtual);
}

/// A JSON array of three numbers per column.
void add_vectors(tools::json_writer& json, const char* name, const vectors& of) {
    json.key(name);
    json.begin_array();
    for (std::int32_t i = 1; i <= of.count(); ++i) json.array(of.view().column(i));
    json.end_array();
}

/// A JSON member that is null where the file does not hold it.
template <class Add>
void add_optional(tools::json_writer& json, const char* name, bool present, Add add) {
    json.key(name);
    if (present) {
        add();
    } else {
        json.null();
    }
}

}  // namespace

std::string in_one_line(const ending& how) {
    std::string text;
    for (const std::string& line : how.lines) {
        if (!text.empty()) text += ' ';
        text += flib::trim(line);
    }
    return text;
}

std::string summary(const file_facts& facts) {
    std::string text = flib::printable(facts.file) + '\n';
    if (facts.endings.contains(quantity::type)) return text + "  cannot be read\n";
    if (facts.tag.empty()) {
        return text + heading("program") + "not recognised: none of the known banners is there\n";
    }
    text += heading("program") + facts.tag + ", version " +
            (facts.version.empty() ? "not told" : flib::printable(facts.version)) +
            formatted(" (class %d)\n", facts.class_code);
    text += heading("atoms");
    text += facts.natom ? std::to_string(*facts.natom) : "no count";
    if (!facts.nat.empty()) text += ": " + formula(facts.nat);
    text += '\n';
    if (facts.oniom) {
        text += heading("ONIOM") + formatted("%d of %d atoms in the high layer\n",
                                             facts.oniom->high, facts.oniom->all);
    }
    if (facts.basis) text += heading("basis") + basis_line(*facts.basis) + '\n';
    if (facts.excitations)
        text += heading("excitations") + excitation_line(*facts.excitations) + '\n';
    text += dipole_lines(facts);
    text += atom_table(facts);
    if (facts.two_frames) {
        text +=
            "  note: the input and the standard orientation differ by more than a shift. Forces\n"
            "        belong to the first, orbitals and this geometry to the second; for signs and\n"
            "        derivatives run all jobs in one fixed frame (nosymm).\n";
    }
    for (const auto& [which, name, words] : quantity_names) {
        const auto found = facts.endings.find(which);
        if (found == facts.endings.end()) continue;
        text.append("  no ").append(words).append(": ");
        text += in_one_line(found->second) + '\n';
    }
    return text;
}

std::string rows_of(const file_facts& facts, quantity which) {
    std::string text;
    const auto vector_rows = [&](const vectors& of) {
        for (std::int32_t i = 1; i <= of.count(); ++i) {
            text += formatted("%6d", i) + columns(of, i, "%20.12f") + '\n';
        }
    };
    switch (which) {
        case quantity::type:
            if (facts.tag.empty()) return "not recognised\n";
            return facts.tag + '\t' + flib::printable(facts.version) +
                   formatted("\t%d\n", facts.class_code);
        case quantity::natom:
            return facts.natom ? std::to_string(*facts.natom) + '\n' : "";
        case quantity::nat:
            for (std::size_t i = 0; i < facts.nat.size(); ++i) {
                const auto atom = static_cast<std::int32_t>(i) + 1;
                text += formatted("%6d%6d  ", atom, facts.nat[i]);
                text += symbol_of(facts, atom);
                text += '\n';
            }
            return text;
        case quantity::coord:
            vector_rows(facts.coordinates);
            return text;
        case quantity::mass:
            for (std::size_t i = 0; i < facts.masses.size(); ++i) {
                text += formatted("%6zu%20.12f\n", i + 1, facts.masses[i]);
            }
            return text;
        case quantity::force:
            vector_rows(facts.forces);
            for (std::int32_t state = 1; state <= facts.dipoles.count(); ++state) {
                text +=
                    formatted("state%4d", state) + columns(facts.dipoles, state, "%20.12f") + '\n';
            }
            return text;
        case quantity::nbasis:
            return facts.basis ? basis_line(*facts.basis) + '\n' : "";
        case quantity::nci:
            return facts.excitations ? excitation_line(*facts.excitations) + '\n' : "";
        case quantity::oniom:
            if (!facts.oniom) return "no ONIOM job\n";
            text =
                formatted("%d of %d atoms in the high layer:", facts.oniom->high, facts.oniom->all);
            for (const std::int32_t atom : facts.oniom->index)
                text.append(" ").append(std::to_string(atom));
            return text + '\n';
    }
    return text;
}

std::string xyz(const file_facts& facts) {
    const std::int32_t natom = facts.coordinates.count();
    if (natom == 0) return {};
    std::string text = std::to_string(natom) + '\n' + flib::printable(facts.file) + '\n';
    for (std::int32_t i = 1; i <= natom; ++i) {
        text += formatted("%-3s", std::string(symbol_of(facts, i)).c_str());
        text += columns(facts.coordinates, i, "%18.10f", flib::bohr_radius) + '\n';
    }
    return text;
}

void add_json(tools::json_writer& json, const file_facts& facts) {
    json.begin_object();
    json.member("file", std::string_view(facts.file));
    add_optional(json, "type", !facts.tag.empty(),
                 [&] { json.value(std::string_view(facts.tag)); });
    add_optional(json, "version", !facts.tag.empty(),
                 [&] { json.value(std::string_view(facts.version)); });
    json.member("class", facts.class_code);
    add_optional(json, "natom", facts.natom.has_value(), [&] { json.value(*facts.natom); });
    add_optional(json, "oniom", facts.oniom.has_value(), [&] {
        json.begin_object();
        json.member("high", facts.oniom->high);
        json.member("all", facts.oniom->all);
        json.key("index");
        json.array(facts.oniom->index);
        json.end_object();
    });
    add_optional(json, "basis", facts.basis.has_value(), [&] {
        json.begin_object();
        json.member("alpha_electrons", facts.basis->alpha);
        json.member("beta_electrons", facts.basis->beta);
        json.member("functions", facts.basis->functions);
        json.member("independent_functions", facts.basis->independent);
        json.end_object();
    });
    add_optional(json, "excitations", facts.excitations.has_value(), [&] {
        json.begin_object();
        json.member("roots", facts.excitations->roots);
        json.member("alpha_electrons", facts.excitations->alpha);
        json.member("frozen_core", facts.excitations->frozen_core);
        json.member("active_occupied", facts.excitations->active_occupied);
        json.member("active_virtual", facts.excitations->active_virtual);
        json.member("frozen_virtual", facts.excitations->frozen_virtual);
        json.end_object();
    });
    json.key("atomic_numbers");
    json.array(facts.nat);
    json.key("masses_u");
    json.array(facts.masses);
    add_vectors(json, "coordinates_bohr", facts.coordinates);
    add_vectors(json, "forces_hartree_per_bohr", facts.forces);
    add_vectors(json, "transition_dipoles_au", facts.dipoles);
    json.member("two_frames", facts.two_frames);
    json.key("missing");
    json.begin_object();
    for (const auto& [which, name, words] : quantity_names) {
        const auto found = facts.endings.find(which);
        if (found != facts.endings.end()) json.member(name, in_one_line(found->second));
    }
    json.end_object();
    json.end_object();
}

}  // namespace qm_file
