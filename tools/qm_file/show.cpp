#include "qm_file/show.h"
#include "flib/text/shown_text.h"

#include <algorithm>
#include <cmath>
#include <concepts>
#include <vector>

#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "flib/qm_file/type_tag.h"
#include "flib/text/fixed_text.h"
#include "flib/text/string.h"
#include "flib/util/elements.h"
#include "flib/util/sum_formula.h"
#include "flib/util/units.h"
#include "sgn/inputs/layers.h"

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

void append(std::string& text, std::string_view words) {
    text += words;
}

void append(std::string& text, std::integral auto number) {
    text += std::to_string(number);
}

/// Words and integers, one after the other.
template <class... Parts>
std::string joined(const Parts&... parts) {
    std::string text;
    (append(text, parts), ...);
    return text;
}

/// `text` in `width` columns or, if it is longer, in as many as it takes.
std::string at_right(std::string_view text, std::size_t width) {
    return std::string(width > text.size() ? width - text.size() : 0, ' ').append(text);
}

std::string at_right(std::size_t number, std::size_t width) {
    return at_right(std::to_string(number), width);
}

std::string at_left(std::string_view text, std::size_t width) {
    return std::string(text).append(width > text.size() ? width - text.size() : 0, ' ');
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
    for (const std::string& line : flib::wrapped(text, width - heading_width)) {
        if (!first) lines.append(heading_width, ' ');
        first = false;
        lines += line + '\n';
    }
    return lines;
}

/// A column of real numbers; one that is wider than it goes on beyond it.
struct real_column {
    std::size_t width;
    int decimals;
};

constexpr real_column shown_real{12, 6};

/// A number in a column of `format`, or as wide a "?" for what the file does not tell.
std::string column(double value, real_column format) {
    return at_right(std::isnan(value) ? "?" : flib::fixed_field(value, 0, format.decimals),
                    format.width);
}

/// One vector's numbers in columns of `format`.
std::string columns(const std::array<double, 3>& vector, real_column format, double factor = 1) {
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
                              return columns(of.geometry->x[i], shown_real, flib::bohr_radius);
                          }});
    }
    if (facts.masses) {
        groups.push_back({"        mass", "u", [](const file_facts& of, std::size_t i) {
                              return column((*of.masses)[i], shown_real);
                          }});
    }
    if (facts.forces) {
        groups.push_back({"     force x     force y     force z", "Hartree/Bohr",
                          [](const file_facts& of, std::size_t i) {
                              const auto* force = force_on(of, i);
                              return force == nullptr ? "" : columns(*force, shown_real);
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
        text += "  " + at_right(i + 1, 6) + "  " + at_left(symbol_of(facts, i), 2);
        for (const column_group& group : groups) text += group.cells(facts, i);
        text += '\n';
    }
    if (natom > most_shown) text += joined("  ... and ", natom - most_shown, " more atoms\n");
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
        text += "state " + at_right(i + 1, 3) + columns(dipoles[i], {10, 4}) + '\n';
    }
    return text;
}

std::string layers_text(const flib::oniom_layers& layers) {
    return sgn::inputs::high_layer_in_words(layers.high.size(),
                                            static_cast<std::size_t>(layers.natom));
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
    return joined(basis.functions, " functions, ", basis.independent, " of them independent; ",
                  basis.alpha_electrons, " alpha and ", basis.beta_electrons, " beta electrons");
}

std::string excitation_text(const flib::excitation_counts& space) {
    return joined(space.roots, " roots; orbitals: ", space.frozen_core, " frozen core, ",
                  space.active_occupied, " active occupied, ", space.active_virtual,
                  " active virtual, ", space.frozen_virtual, " frozen virtual");
}

bool is_checkpoint(const file_facts& facts) {
    return facts.kind && facts.kind->tag == flib::tag::gaussian_fchk;
}

/// The reasons for what is missing, each with all that it holds for.
std::string missing_lines(const file_facts& facts, const terminal& on) {
    std::vector<std::pair<std::string, std::string>> reasons;  // and the quantities
    for (const auto& [which, why] : facts.missing) {
        // Nobody expects these.
        if (!why.damaged && (which == quantity::oniom || which == quantity::dump)) continue;
        if (!why.damaged && which == quantity::moments && !is_checkpoint(facts)) continue;
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
    const std::string text = joined("record ", dump.number, ": ", dump.values, " values");
    if (dump.number != flib::amplitude_record) {
        return joined(text, "; the excitation amplitudes are record ", flib::amplitude_record);
    }
    if (!dump.layout) return text + "; the layout is not told, so nothing can be checked here";
    return joined(text, "; ", dump.layout->states, " states, ", dump.layout->roots, " roots of ",
                  dump.layout->amplitudes, " amplitudes per spin");
}

/// A row for each state of a dump that tells its layout, with what is doubtful.
std::vector<std::string> state_rows(const flib::dump_header& dump) {
    std::vector<std::string> rows;
    for (const flib::dumped_state& state : dump.states) {
        const flib::root_norms& norms = state.norms;
        std::string row = "state" + at_right(rows.size() + 1, 4);
        if (state.energy) {
            const double energy = *state.energy * flib::hartree_energy;
            row += at_right(flib::fixed_field(energy, 0, 4), 10) + " eV";
        }
        row += "  " + at_left(flib::name_of(norms.spin), 8);
        row += norms.has_minus ? " (X+Y)(X-Y) " : " (X+Y)^2 ";
        row += flib::fixed_field(norms.alpha, 0, 6) + ", " + flib::fixed_field(norms.beta, 0, 6);
        if (!norms.are_of_amplitudes()) {
            row += norms.has_minus ? "  doubt: not 1/2" : "  doubt: not 0.1 to 5";
        } else if (norms.spin == flib::root_spin::neither) {
            row += "  doubt: spin";
        }
        rows.push_back(row);
    }
    return rows;
}

std::string spin_in_words(std::int32_t spin) {
    if (spin == 0) return "singlet";
    return spin == 2 ? "triplet" : "spin " + std::to_string(spin);
}

/// A line for each state: its energy of excitation or, where that is not told, its total energy,
/// and its electric dipole.
std::string moment_lines(const flib::state_moments& moments) {
    std::string text =
        joined("  moments       ", moments.states, moments.states == 1 ? " state, " : " states, ",
               moments.target, " is the job's: energy and dipole (a.u.)\n");
    for (std::int32_t state = 1; state <= moments.states; ++state) {
        const auto i = static_cast<std::size_t>(state) - 1;
        const auto excitation = moments.excitation_energy(state);
        text.append(heading_width, ' ');
        text +=
            joined("state", at_right(i + 1, 4), "  ", at_left(spin_in_words(moments.spin[i]), 8));
        text += excitation ? flib::fixed_field(*excitation * flib::hartree_energy, 10, 4) + " eV"
                           : flib::fixed_field(moments.of_states.energy[i], 13, 6);
        for (std::size_t k = 0; k < 3; ++k) {
            text += flib::text_field(flib::decimal(moments.of_states.dipole[3 * i + k], 6), 11);
        }
        text += '\n';
    }
    if (moments.derivatives) {
        text.append(heading_width, ' ');
        text += joined("and derivatives by ", moments.derivatives->energy.size(), " coordinates\n");
    }
    return text;
}

/// A row for each moment, of every state and of every coordinate that they are differentiated by.
std::vector<std::string> moment_rows_of(const flib::state_moments& moments, real_column real) {
    std::vector<std::string> rows;
    const auto add = [&](const std::string& title, const flib::moment_rows& of, std::size_t i) {
        const auto add_row = [&](const char* moment, const std::vector<double>& values,
                                 std::size_t count) {
            std::string row = title + "  " + at_left(moment, 20);
            for (std::size_t k = 0; k < count; ++k) row += column(values[count * i + k], real);
            rows.push_back(row);
        };
        add_row("energy", of.energy, 1);
        add_row("electric dipole", of.dipole, 3);
        add_row("velocity dipole", of.velocity_dipole, 3);
        add_row("magnetic dipole", of.magnetic_dipole, 3);
        add_row("velocity quadrupole", of.velocity_quadrupole, 6);
    };
    for (std::size_t i = 0; i < moments.of_states.energy.size(); ++i) {
        add("state" + at_right(i + 1, 4), moments.of_states, i);
    }
    if (!moments.derivatives) return rows;
    for (std::size_t c = 0; c < moments.derivatives->energy.size(); ++c) {
        add("by" + at_right(c + 1, 7), *moments.derivatives, c);
    }
    return rows;
}

std::string kind_text(const flib::file_kind& kind) {
    if (kind.tag == sgn::result_tag) return "stigruz (a result file)";
    const std::string_view whose = sgn::owner_of_version(kind);
    if (whose == "the program" || kind.tag == flib::tag::gaussian_fchk) {
        return joined(kind.tag, ", version ", flib::printable(kind.version), " (class ",
                      kind.class_code, ")");
    }
    if (kind.version == "0") return joined(kind.tag, " (class ", kind.class_code, ")");
    std::string version = "not told";
    if (!whose.empty()) {
        version += std::string(" (") + flib::printable(kind.version) + " is that of ";
        version.append(whose).append(")");
    } else if (!kind.version.empty()) {
        version += " (" + flib::quoted(kind.version) + " stands in its place)";
    }
    return joined(kind.tag, ", version ", version, " (class ", kind.class_code, ")");
}

std::string result_text(const sgn::sgn_contents& result) {
    const sgn::sgn_parameters& parameters = result.parameters;
    return joined(parameters.sign, "; the chosen element, row ", parameters.tden_maxloc[0],
                  " and column ", parameters.tden_maxloc[1], " of ", parameters.nmo, ", is ",
                  flib::scientific_field(parameters.tden_maxval, 0, 10));
}

/// The name of a file before one of its rows, which has `row_width` columns.
std::string label_of(const file_facts& facts, std::size_t row_width, const terminal& on) {
    std::string name = flib::printable(facts.file);
    if (on.width) {
        constexpr std::size_t shortest = 8;
        const std::size_t left = *on.width > row_width + 2 ? *on.width - row_width - 2 : 0;
        name = flib::shortened(name, std::max(left, shortest));
    }
    return name + ": ";
}

}  // namespace

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
    if (facts.moments) text += moment_lines(*facts.moments);
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
    const real_column real = narrow ? real_column{14, 8} : real_column{20, 12};
    const auto add_vectors = [&](const flib::vector_list& vectors, std::string_view title,
                                 std::size_t width) {
        for (std::size_t i = 0; i < vectors.size(); ++i) {
            rows.push_back(joined(title, at_right(i + 1, width)) + columns(vectors[i], real));
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
                const std::string shown =
                    number == flib::unknown_number ? "?" : std::to_string(number);
                rows.push_back(
                    joined(at_right(i + 1, 6), at_right(shown, 6), "  ", symbol_of(facts, i)));
            }
            break;
        case quantity::geometry:
            if (facts.geometry) add_vectors(facts.geometry->x, "", 6);
            break;
        case quantity::masses:
            for (std::size_t i = 0; facts.masses && i < facts.masses->size(); ++i) {
                rows.push_back(at_right(i + 1, 6) + column((*facts.masses)[i], real));
            }
            break;
        case quantity::forces:
            if (facts.forces) add_vectors(*facts.forces, "", 6);
            if (facts.dipoles) add_vectors(*facts.dipoles, "state", 4);
            break;
        case quantity::basis:
            if (facts.basis) rows.push_back(basis_text(*facts.basis));
            break;
        case quantity::excitations:
            if (facts.excitations) rows.push_back(excitation_text(*facts.excitations));
            break;
        case quantity::oniom:
            if (facts.oniom) {
                rows.push_back(sgn::inputs::high_layer_in_words(
                    facts.oniom->high, static_cast<std::size_t>(facts.oniom->natom)));
            }
            break;
        case quantity::dump:
            if (facts.dump) {
                rows = state_rows(*facts.dump);
                rows.insert(rows.begin(), dump_text(*facts.dump));
            }
            break;
        case quantity::moments:
            if (facts.moments) rows = moment_rows_of(*facts.moments, real);
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
        for (const std::string& line : flib::wrapped(label + row, width - 2)) {
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
        text += at_left(symbol_of(facts, i), 3) + columns(x[i], {18, 10}, flib::bohr_radius) + '\n';
    }
    return text;
}

}  // namespace qm_file
