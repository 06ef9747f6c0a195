#include "qm_file/show.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "common/layers.h"
#include "flib/io/stop_run.h"
#include "flib/qm_file/type_tag.h"
#include "flib/text/fixed_text.h"
#include "flib/text/string.h"
#include "flib/util/elements.h"
#include "flib/util/sum_formula.h"
#include "flib/util/units.h"

namespace qm_file {
namespace {

using flib::file_facts;
using flib::quantity;
using tools::terminal;

/// Atoms that a summary shows.
constexpr std::size_t most_shown = 60;
constexpr std::size_t usual_width = 80;
constexpr std::size_t heading_width = 16;
constexpr std::size_t shortest_wrapped = 40;

template <class... Values>
std::string formatted(const char* format, Values... values) {
    char text[512];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

/// The symbol of atom `i`, counted from 0; "?" if the file does not give it.
std::string_view symbol_of(const file_facts& facts, std::size_t i) {
    const bool given = facts.numbers && i < facts.numbers->size();
    const std::int32_t number = given ? (*facts.numbers)[i] : flib::unknown_number;
    return flib::is_atomic_number(number) ? flib::element_symbol(number) : "?";
}

/// The sum formula, in Hill's order: "C10H10".
std::string formula(const file_facts& facts) {
    std::vector<std::string> symbols;
    for (std::size_t i = 0; i < facts.numbers->size(); ++i)
        symbols.emplace_back(symbol_of(facts, i));
    return flib::sum_formula(symbols);
}

/// `text` under a heading, in as many lines as it takes.
std::string entry(std::string_view heading, std::string_view text, const terminal& on) {
    std::string lines("  ");
    lines.append(heading).resize(heading_width, ' ');
    const std::size_t width = std::max(on.width.value_or(usual_width), heading_width + 20);
    bool first = true;
    for (const std::string& line : tools::wrapped(text, width - heading_width)) {
        if (!first) lines.append(heading_width, ' ');
        first = false;
        lines += line + '\n';
    }
    return lines;
}

/// A number in a column of `format`, or as wide a "?" for what the file does not tell.
std::string column(double value, const char* format) {
    const std::string number = formatted(format, value);
    return std::isnan(value) ? std::string(number.size() - 1, ' ') + '?' : number;
}

/// One vector's numbers in columns of `format`.
std::string columns(const std::array<double, 3>& vector, const char* format, double factor = 1) {
    std::string text;
    for (const double value : vector) text += column(value * factor, format);
    return text;
}

/// The forces on atom `i`, counted from 0; null if there are none on it.
const std::array<double, 3>* force_on(const file_facts& facts, std::size_t i) {
    if (!facts.forces) return nullptr;
    if (facts.oniom) {
        const auto& high = facts.oniom->high;
        i = static_cast<std::size_t>(std::ranges::find(high, static_cast<std::int32_t>(i) + 1) -
                                     high.begin());
    }
    return i < facts.forces->size() ? &(*facts.forces)[i] : nullptr;
}

/// A group of columns of the table of atoms.
struct column_group {
    std::string title;
    std::string unit;
    std::string (*cells)(const file_facts& facts, std::size_t i);
};

std::vector<column_group> groups_of(const file_facts& facts) {
    std::vector<column_group> groups;
    if (facts.geometry) {
        groups.push_back({"           x           y           z", "Angstrom",
                          [](const file_facts& of, std::size_t i) {
                              return columns(of.geometry->x[i], "%12.6f", flib::bohr_radius);
                          }});
    }
    if (facts.masses) {
        groups.push_back({"        mass", "u", [](const file_facts& of, std::size_t i) {
                              return column((*of.masses)[i], "%12.6f");
                          }});
    }
    if (facts.forces) {
        groups.push_back({"     force x     force y     force z", "Hartree/Bohr",
                          [](const file_facts& of, std::size_t i) {
                              const auto* force = force_on(of, i);
                              return force == nullptr ? "" : columns(*force, "%12.6f");
                          }});
    }
    return groups;
}

/// The atoms with some groups of columns, and the units of these.
std::string table_of(const file_facts& facts, std::span<const column_group> groups) {
    std::string text("\n        atom");
    std::string units;
    for (const column_group& group : groups) {
        text += group.title;
        units += (units.empty() ? "" : ", ") + group.unit;
    }
    text += '\n';
    const auto natom = static_cast<std::size_t>(*facts.natom);
    for (std::size_t i = 0; i < std::min(natom, most_shown); ++i) {
        text += formatted("  %6zu  %-2s", i + 1, std::string(symbol_of(facts, i)).c_str());
        for (const column_group& group : groups) text += group.cells(facts, i);
        text += '\n';
    }
    if (natom > most_shown) text += formatted("  ... and %zu more atoms\n", natom - most_shown);
    return text + "  (" + (units.empty() ? "elements only" : units) + ")\n";
}

/// As many tables as it takes to stay within the width.
std::string atom_tables(const file_facts& facts, const terminal& on) {
    if (!facts.natom || *facts.natom < 1) return {};
    const std::vector<column_group> groups = groups_of(facts);
    if (groups.empty()) return facts.numbers ? table_of(facts, groups) : "";
    constexpr std::size_t atom_width = 12;
    std::string text;
    std::size_t begin = 0;
    std::size_t width = atom_width;
    for (std::size_t end = 0; end < groups.size(); ++end) {
        if (end > begin && on.width && width + groups[end].title.size() > *on.width) {
            text += table_of(facts, std::span(groups).subspan(begin, end - begin));
            begin = end;
            width = atom_width;
        }
        width += groups[end].title.size();
    }
    return text + table_of(facts, std::span(groups).subspan(begin));
}

std::string dipole_lines(const flib::vector_list& dipoles) {
    std::string text("  dipoles       from the ground state (a.u.) to\n");
    for (std::size_t i = 0; i < dipoles.size(); ++i) {
        text.append(heading_width, ' ');
        text += formatted("state %3zu", i + 1) + columns(dipoles[i], "%10.4f") + '\n';
    }
    return text;
}

std::string layers_text(const flib::oniom_layers& layers) {
    return tools::high_layer_in_words(layers.high.size(), static_cast<std::size_t>(layers.natom));
}

/// What a person should know of a file of this kind, because its rule is a coarse one.
struct rule_in_words {
    std::string_view tag;
    bool (*applies)(const file_facts& facts);
    std::string_view words;
};

constexpr rule_in_words coarse_rules[] = {
    {flib::tag::cif, [](const file_facts& facts) { return facts.natom.has_value(); },
     "the atoms counted are the lines below _atom_site_occupancy, among them tags and blank "
     "lines."},
    {flib::tag::terachem,
     [](const file_facts& facts) { return facts.geometry && facts.geometry->tables > 1; },
     "the last geometry of a frequency job is a displaced one."},
};

std::string coarse_rule_notes(const file_facts& facts, const terminal& on) {
    std::string text;
    for (const rule_in_words& rule : coarse_rules) {
        if (rule.tag == facts.kind->tag && rule.applies(facts)) {
            text += entry("note", rule.words, on);
        }
    }
    return text;
}

/// The point charges among the atoms of an embedded model.
std::string point_charge_note(const file_facts& facts, const terminal& on) {
    if (facts.point_charges.empty()) return {};
    constexpr std::size_t most_named = 20;
    const std::size_t count = facts.point_charges.size();
    std::string text = std::to_string(count);
    text += " of the atoms are point charges, whose nuclear charge is no atomic number:";
    for (std::size_t i = 0; i < std::min(count, most_named); ++i) {
        text.append(" ").append(std::to_string(facts.point_charges[i]));
    }
    if (count > most_named) text += " ...";
    return entry("note", text, on);
}

std::string basis_text(const flib::basis_counts& basis) {
    return formatted("%d functions, %d of them independent; %d alpha and %d beta electrons",
                     basis.functions, basis.independent, basis.alpha_electrons,
                     basis.beta_electrons);
}

std::string excitation_text(const flib::excitation_counts& space) {
    return formatted(
        "%d roots; orbitals: %d frozen core, %d active occupied, %d active virtual, %d frozen "
        "virtual",
        space.roots, space.frozen_core, space.active_occupied, space.active_virtual,
        space.frozen_virtual);
}

/// The reasons for what is missing, each with all that it holds for.
std::string missing_lines(const file_facts& facts, const terminal& on) {
    std::vector<std::pair<std::string, std::string>> reasons;  // and the quantities
    for (const auto& [which, why] : facts.missing) {
        // Nobody expects these.
        if (!why.damaged && (which == quantity::oniom || which == quantity::dump)) continue;
        const auto known =
            std::ranges::find(reasons, why.reason, &std::pair<std::string, std::string>::first);
        if (known == reasons.end()) {
            reasons.emplace_back(why.reason, flib::name_of(which));
        } else {
            known->second.append(", ").append(flib::name_of(which));
        }
    }
    std::string text;
    for (const auto& [reason, quantities] : reasons) {
        text += entry("missing", std::string(quantities).append(": ").append(reason), on);
    }
    return text;
}

std::string dump_text(const flib::dump_header& dump) {
    const std::string text = formatted("record %d: %d values", dump.number, dump.values);
    if (dump.number != flib::amplitude_record) {
        return text +
               formatted("; the excitation amplitudes are record %d", flib::amplitude_record);
    }
    if (!dump.layout) return text + "; the layout is not told, so nothing can be checked here";
    return text + formatted("; %d states, %d roots of %d amplitudes per spin", dump.layout->states,
                            dump.layout->roots, dump.layout->amplitudes);
}

/// A row for each state of a dump that tells its layout, with what is doubtful.
std::vector<std::string> state_rows(const flib::dump_header& dump) {
    std::vector<std::string> rows;
    for (const flib::dumped_state& state : dump.states) {
        const flib::root_norms& norms = state.norms;
        std::string row = formatted("state%4zu", rows.size() + 1);
        if (state.energy) row += formatted("%10.4f eV", *state.energy * flib::hartree_energy);
        row += formatted("  %-8s %s", std::string(flib::name_of(norms.spin)).c_str(),
                         norms.has_minus ? "(X+Y)(X-Y)" : "(X+Y)^2");
        row += formatted(" %.6f, %.6f", norms.alpha, norms.beta);
        if (!norms.are_of_amplitudes()) {
            row += norms.has_minus ? "  doubt: not 1/2" : "  doubt: not 0.1 to 5";
        } else if (norms.spin == flib::root_spin::neither) {
            row += "  doubt: spin";
        }
        rows.push_back(row);
    }
    return rows;
}

std::string kind_text(const flib::file_kind& kind) {
    if (kind.tag == result_tag) return "stigruz (a result file)";
    const std::string_view whose = owner_of_version(kind);
    if (whose == "the program" || kind.tag == flib::tag::gaussian_fchk) {
        return kind.tag + ", version " + flib::printable(kind.version) +
               formatted(" (class %d)", kind.class_code);
    }
    if (kind.version == "0") return kind.tag + formatted(" (class %d)", kind.class_code);
    std::string version = "not told";
    if (!whose.empty()) {
        version += std::string(" (") + flib::printable(kind.version) + " is that of ";
        version.append(whose).append(")");
    } else if (!kind.version.empty()) {
        version += " (" + flib::quoted(kind.version) + " stands in its place)";
    }
    return kind.tag + ", version " + version + formatted(" (class %d)", kind.class_code);
}

std::string result_text(const sgn::sgn_contents& result) {
    const sgn::sgn_parameters& parameters = result.parameters;
    return formatted("%d; the chosen element, row %d and column %d of %d, is %.10E",
                     parameters.sign, parameters.tden_maxloc[0], parameters.tden_maxloc[1],
                     parameters.nmo, parameters.tden_maxval);
}

/// The name of a file before one of its rows, which has `row_width` columns.
std::string label_of(const file_facts& facts, std::size_t row_width, const terminal& on) {
    std::string name = flib::printable(facts.file);
    if (on.width) {
        constexpr std::size_t shortest = 8;
        const std::size_t left = *on.width > row_width + 2 ? *on.width - row_width - 2 : 0;
        name = tools::shortened(name, std::max(left, shortest));
    }
    return name + ": ";
}

}  // namespace

std::string_view owner_of_version(const flib::file_kind& kind) {
    if (kind.tag == flib::tag::orca) return "libXC";
    // What the rule takes for a version may be another word: "Apple", "TeraChem", ".", "UNKNOWN".
    // "0" stands for none.
    const bool has_digit = std::ranges::any_of(kind.version, flib::is_ascii_digit);
    return has_digit && kind.version != "0" ? "the program" : "";
}

std::string place_of(const flib::geometry& geometry) {
    std::string text = geometry.tables == 1 ? "the only one"
                                            : std::string(geometry.last ? "last" : "first") +
                                                  " of " + std::to_string(geometry.tables);
    if (!geometry.frame.empty()) text += ", " + flib::printable(geometry.frame);
    return text;
}

std::string summary(const file_report& report, const terminal& on) {
    const file_facts& facts = report.facts;
    std::string text = flib::printable(facts.file) + '\n';
    if (!report.readable) return text + "  cannot be read\n";
    if (!facts.kind && facts.missing.at(quantity::kind).damaged) {
        return text + entry("program", facts.why_not(quantity::kind), on);
    }
    if (!facts.kind) {
        text +=
            entry("program", "not recognised: " + std::string(facts.why_not(quantity::kind)), on);
        if (facts.oniom) {
            text += entry("ONIOM", layers_text(*facts.oniom), on);
        }
        return text + entry("known are", known_programs(), on);
    }
    text += entry("program", kind_text(*facts.kind), on);
    if (report.result) text += entry("sign", result_text(*report.result), on);
    if (facts.dump) {
        text += entry("dump", dump_text(*facts.dump), on);
        for (const std::string& row : state_rows(*facts.dump)) {
            text += std::string(heading_width, ' ') + row + '\n';
        }
    }
    if (facts.natom) {
        const std::string symbols = facts.numbers ? ": " + formula(facts) : "";
        text += entry("atoms", std::to_string(*facts.natom) + symbols, on);
    }
    if (facts.oniom) {
        text += entry("ONIOM", layers_text(*facts.oniom), on);
    }
    if (facts.basis) text += entry("basis", basis_text(*facts.basis), on);
    if (facts.excitations) text += entry("excitations", excitation_text(*facts.excitations), on);
    if (facts.dipoles) text += dipole_lines(*facts.dipoles);
    if (facts.geometry) text += entry("geometry", place_of(*facts.geometry), on);
    text += missing_lines(facts, on);
    text += atom_tables(facts, on);
    if (facts.numbers && !std::ranges::all_of(*facts.numbers, flib::is_atomic_number)) {
        text += entry("note", "? stands for an atom whose symbol is that of no element.", on);
    }
    if (facts.kind->tag == flib::tag::gaussian_fchk && facts.file.ends_with(".fch")) {
        text += entry("note",
                      "stigruz takes checkpoints that are called NAME.fchk: give it a link.", on);
    }
    text += point_charge_note(facts, on);
    text += coarse_rule_notes(facts, on);
    if (facts.geometry && facts.geometry->two_frames) {
        text += entry("note",
                      "the input and the standard orientation differ by more than a shift. Forces "
                      "belong to the first, orbitals and this geometry to the second; for signs "
                      "and derivatives run all jobs in one fixed frame (nosymm).",
                      on);
    }
    return text;
}

std::string rows_of(const file_report& report, const named_quantity& which, bool labelled,
                    const terminal& on) {
    const file_facts& facts = report.facts;
    std::vector<std::string> rows;
    // Twelve decimals, unless the name of the file needs the room.
    const bool narrow = labelled && on.width && *on.width < 100;
    const char* const real = narrow ? "%14.8f" : "%20.12f";
    const auto add_vectors = [&](const flib::vector_list& vectors, const char* title) {
        for (std::size_t i = 0; i < vectors.size(); ++i) {
            rows.push_back(formatted(title, i + 1) + columns(vectors[i], real));
        }
    };
    // A terminal makes up to eight columns of a tab.
    const char* const tab = on.width ? "  " : "\t";
    switch (which.parts.front()) {
        case quantity::kind:
            rows.push_back(facts.kind
                               ? facts.kind->tag + tab + flib::printable(facts.kind->version) +
                                     tab + std::to_string(facts.kind->class_code)
                               : "not recognised");
            if (!report.readable) rows.clear();
            break;
        case quantity::natom:
            if (facts.natom) rows.push_back(std::to_string(*facts.natom));
            break;
        case quantity::numbers:
            for (std::size_t i = 0; facts.numbers && i < facts.numbers->size(); ++i) {
                const std::int32_t number = (*facts.numbers)[i];
                rows.push_back(formatted("%6zu%6s  ", i + 1,
                                         number == flib::unknown_number
                                             ? "?"
                                             : std::to_string(number).c_str()) +
                               std::string(symbol_of(facts, i)));
            }
            break;
        case quantity::geometry:
            if (facts.geometry) add_vectors(facts.geometry->x, "%6zu");
            break;
        case quantity::masses:
            for (std::size_t i = 0; facts.masses && i < facts.masses->size(); ++i) {
                rows.push_back(formatted("%6zu", i + 1) + column((*facts.masses)[i], real));
            }
            break;
        case quantity::forces:
            if (facts.forces) add_vectors(*facts.forces, "%6zu");
            if (facts.dipoles) add_vectors(*facts.dipoles, "state%4zu");
            break;
        case quantity::basis:
            if (facts.basis) rows.push_back(basis_text(*facts.basis));
            break;
        case quantity::excitations:
            if (facts.excitations) rows.push_back(excitation_text(*facts.excitations));
            break;
        case quantity::oniom:
            if (facts.oniom) {
                rows.push_back(tools::high_layer_in_words(
                    facts.oniom->high, static_cast<std::size_t>(facts.oniom->natom)));
            }
            break;
        case quantity::dump:
            if (facts.dump) {
                rows = state_rows(*facts.dump);
                rows.insert(rows.begin(), dump_text(*facts.dump));
            }
            break;
        case quantity::dipoles:
            break;  // not asked for by themselves
    }
    std::string text;
    for (const std::string& row : rows) {
        const std::string label = labelled ? label_of(facts, row.size(), on) : "";
        const std::size_t indent = row.find_first_not_of(' ');
        const std::size_t width = on.width.value_or(0);
        if (width < shortest_wrapped || label.size() + row.size() <= width || indent != 0) {
            text += label + row + '\n';
            continue;
        }
        // Words go on in the next line.
        bool first = true;
        for (const std::string& line : tools::wrapped(label + row, width - 2)) {
            text += (first ? "" : "  ") + line + '\n';
            first = false;
        }
    }
    return text;
}

std::string xyz(const file_report& report) {
    const file_facts& facts = report.facts;
    if (!facts.geometry) return {};
    const flib::vector_list& x = facts.geometry->x;
    std::string text = std::to_string(x.size()) + '\n' + flib::printable(facts.file) +
                       ": geometry, " + place_of(*facts.geometry) + '\n';
    for (std::size_t i = 0; i < x.size(); ++i) {
        text += formatted("%-3s", std::string(symbol_of(facts, i)).c_str());
        text += columns(x[i], "%18.10f", flib::bohr_radius) + '\n';
    }
    return text;
}

}  // namespace qm_file
