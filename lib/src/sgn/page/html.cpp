#include "sgn/page/html.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

#include "flib/io/fixed_field.h"
#include "flib/util/units.h"
#include "sgn/page/detail/drawings.h"
#include "sgn/page/detail/style.h"
#include "sgn/page/detail/svg.h"
#include "sgn/set/input_numbers.h"
#include "sgn/set/listed.h"
#include "sgn/set/molecule.h"

namespace sgn::page {
namespace {

using flib::decimal;
using sgn::sum_rules;
using svg::escaped;

std::string element(std::string_view name, std::string_view contents, std::string_view kind = {},
                    std::string_view end = "\n") {
    std::string text = std::string("<").append(name);
    if (!kind.empty()) text.append(" class=\"").append(kind).append("\"");
    return text.append(">").append(contents).append("</").append(name).append(">").append(end);
}

std::string paragraph(std::string_view words, std::string_view kind = {}) {
    return element("p", escaped(words), kind);
}

std::string section(std::string_view title, const std::string& contents,
                    std::string_view kind = {}) {
    return element("section", std::string("\n") + element("h2", title) + contents, kind);
}

std::string wide(const std::string& contents) {
    return element("div", contents, "wide");
}

std::string number(double value, int decimals) {
    return std::isfinite(value) ? decimal(value, decimals) : "\u2013";
}

/// Classes of cells; one has it always, however it looks.
constexpr std::string_view of_number = "n";
constexpr std::string_view of_text{};

struct cell {
    std::string text;
    std::string_view kind = of_number;
};

/// `name` is "td", or "th" of headings.
std::string row_of(const std::vector<cell>& cells, const std::string& name = "td") {
    std::string text;
    for (const cell& each : cells) {
        text.append("<" + name + " class=\"").append(each.kind).append("\">");
        text.append(escaped(each.text)).append("</" + name + ">");
    }
    return element("tr", text, {}, "");
}

std::string table_of(const std::vector<cell>& heads, const std::string& rows) {
    return wide("<table><thead>" + row_of(heads, "th") + "</thead>\n<tbody>\n" + rows +
                "</tbody></table>");
}

/// Long tables are folded, and their section may go on on the next sheet of paper.
constexpr std::size_t many = 12;

std::string folded(std::size_t rows, std::string_view summary, const std::string& table) {
    if (rows <= many) return table;
    return element("details", element("summary", summary) + table);
}

bool fail(const sum_rules& rules) {
    return rules.judged && !rules.satisfied;
}

/// No more digits than mean something.
std::string chi2_text(const sum_rules& rules) {
    return decimal(rules.chi2, rules.chi2 < 1000 ? 1 : 0);
}

std::size_t put_right(const sgn::report& of) {
    return static_cast<std::size_t>(std::ranges::count_if(
        of.set.jobs, [](const sgn::displaced_job& each) { return each.sign < 0; }));
}

/// The verdict of the whole set, and all that speaks against it.
std::string verdict_part(const sgn::report& of) {
    const std::string sign =
        of.fine() ? svg::path({{9, 20}, {17, 27}, {29, 12}}, "tick")
                  : svg::line({19, 9}, {19, 21}, "tick") + svg::circle({19, 28}, 2.4, "dot");
    const std::string mark = "<svg class=\"mark\" viewBox=\"0 0 38 38\" aria-hidden=\"true\">" +
                             svg::circle({19, 19}, 18, "disc") + sign + "</svg>\n";
    std::string list;
    for (const sgn::finding& each : of.findings) {
        const bool of_set = each.job == sgn::finding::whole_set;
        const std::string file = of_set ? "the set" : of.set.jobs[each.job].name;
        list += element("li", "<b>" + escaped(file) + "</b>: " + escaped(each.text));
    }
    for (std::size_t i = 1; i < of.suspects.flips.size(); ++i) {
        list += element("li", "As good a guess at the wrong signs: <b>" +
                                  escaped(names_of(of.suspects.flips[i], of)) + "</b>");
    }
    if (!list.empty()) list = element("ul", std::string("\n") + list);
    return element(
        "section",
        std::string("\n") + element("h1", mark + element("span", escaped(verdict_of(of)))) + list,
        of.fine() ? "verdict" : "verdict doubt");
}

std::string fact(std::string_view name, const std::string& value, const std::string& rest,
                 bool bad = false) {
    return "<div>" + element("dt", escaped(name), {}, "") +
           element("dd", value + " <small>" + escaped(rest) + "</small>", bad ? "bad" : "", "") +
           "</div>\n";
}

/// Which transition it is, where a checkpoint tells.
std::string excitation_fact(const sgn::report& of) {
    const auto& excited = of.set.jobs.front().excited;
    if (!excited) return {};
    std::string rest = (excited->energy ? "eV, state " : "state ") + std::to_string(excited->state);
    const bool others = excited->target != 0 && excited->target != excited->state;
    if (of.set.has_forces && others) {
        rest += "; forces of state " + std::to_string(excited->target);
    }
    return fact("Excitation",
                excited->energy ? decimal(*excited->energy * flib::hartree_energy, 4) : "\u2013",
                rest);
}

std::string facts_part(const sgn::report& of) {
    const sgn::displaced_set& set = of.set;
    const sum_rules& rules = of.dipole_rules;
    const std::string files = std::to_string(set.jobs.size());
    std::string steps = decimal(set.largest_step, 4);
    if (set.largest_step - set.smallest_step > sgn::rounding) {
        steps = decimal(set.smallest_step, 4) + " to " + steps;
    }
    const std::string one_sided =
        set.one_sided > 0 ? ", " + std::to_string(set.one_sided) + " one-sided" : "";
    return element(
        "dl",
        std::string("\n") +
            fact("Files", files,
                 std::to_string(set.pairs) + (set.pairs == 1 ? " pair" : " pairs") + one_sided) +
            fact("Signs put right", std::to_string(put_right(of)), "of " + files) +
            (rules.judged ? fact("Sum rules, \u03C7\u00B2", chi2_text(rules),
                                 "of " + std::to_string(rules.sums) + " sums", fail(rules))
                          : fact("Sum rules", "\u2013", "not judged")) +
            fact("Transition dipole", decimal(sgn::length(set.jobs.front().dipole), 4), "au") +
            fact("Dipoles", std::to_string(set.dipole_decimals),
                 "decimals, of the " + std::string(source_of_dipoles(set))) +
            excitation_fact(of) + fact("Displacement", steps, "\u00C5"),
        "facts");
}

std::string molecule_part(const sgn::report& of) {
    const auto& atoms = of.set.atoms;
    std::string rows;
    for (std::size_t i = 0; i < atoms.size(); ++i) {
        std::vector<cell> row{{std::to_string(number_of(atoms[i], i))},
                              {atoms[i].symbol + place_text(atoms[i], i), "name"}};
        for (const double x : atoms[i].x) row.push_back({decimal(x, 4)});
        row.push_back({number(atoms[i].mass, 4)});
        rows += row_of(row) + "\n";
    }
    const std::string table = table_of(
        {{"Atom"}, {"", of_text}, {"x (\u00C5)"}, {"y (\u00C5)"}, {"z (\u00C5)"}, {"Mass (u)"}},
        rows);
    const std::string beside =
        folded(atoms.size(), "Coordinates of the reference", table) +
        paragraph("The arrow is the transition dipole of the reference.", "note");
    return section("The molecule",
                   element("div", molecule_drawing(of) + element("div", beside), "two"),
                   atoms.size() > many ? "long" : "");
}

std::string legend_item(const std::string& drawing, std::string_view words) {
    return element("li", "<svg viewBox=\"0 0 26 14\" aria-hidden=\"true\">" + drawing + "</svg>" +
                             escaped(words));
}

std::string legend_of(const std::string& items) {
    return element("ul", items, "legend");
}

std::string dipole_part(const sgn::report& of) {
    std::string legend =
        legend_item(svg::line({0, 7}, {26, 7}, "printed-line") + svg::circle({13, 7}, 4, "printed"),
                    "as printed, where the sign was turned round") +
        legend_item(svg::line({13, 0}, {13, 14}, "jump"), "put right") +
        legend_item(
            svg::line({0, 7}, {26, 7}, "corrected-line") + svg::circle({13, 7}, 4, "corrected"),
            "corrected");
    if (!of.suspects.flips.empty()) {
        legend += legend_item(
            svg::circle({13, 7}, 3, "corrected suspect") + svg::circle({13, 7}, 6, "suspect-ring"),
            "suspect sign");
    }
    const std::size_t turned = put_right(of);
    const std::string words =
        turned == 0 ? "No sign had to be put right: all jobs have the phase of the reference."
                    : "The phase of an excited state is arbitrary: " + std::to_string(turned) +
                          " of " + std::to_string(of.set.jobs.size()) +
                          " jobs came out with the other sign. Corrected, the dipole follows the "
                          "displacements.";
    const std::string near = of.near ? paragraph(text_of(*of.near), "note") : std::string();
    return section("The dipole along the jobs",
                   paragraph(words, "note") + near + legend_of(legend) + wide(dipole_drawing(of)));
}

std::string rule_words(const std::string& what, const sum_rules& rules) {
    if (!rules.judged) return paragraph(what + ": not judged, " + rules.why_not + ".");
    return paragraph(what + ": \u03C7\u00B2 = " + chi2_text(rules) + " for " +
                         std::to_string(rules.sums) + " sums, the largest residue is " +
                         decimal(rules.largest, 1) + " times its uncertainty: they " +
                         (rules.satisfied ? "hold." : "fail."),
                     fail(rules) ? "warning" : "");
}

std::string rules_part(const sgn::report& of) {
    const sum_rules& rules = of.dipole_rules;
    const std::string contents =
        paragraph(
            "Moving the whole molecule changes no transition dipole, and turning it turns the "
            "dipole along. So sums over the derivatives must vanish but for the rounding of the "
            "printed values: a test of all signs at once.",
            "note") +
        rule_words("Dipole", rules) + rule_words("Forces", of.force_rules) +
        (of.set.has_moments ? rule_words("Velocity dipole", of.velocity_rules) +
                                  rule_words("Magnetic dipole", of.magnetic_rules)
                            : std::string());
    if (!rules.judged) return section("Sum rules", contents);
    const std::string surroundings =
        of.surroundings.empty()
            ? std::string()
            : paragraph("The job has " + listed(of.surroundings) +
                            ", which do not move with the atoms: the sums need not vanish.",
                        "warning");
    const auto swatch = [](std::string_view kind, std::string_view words) {
        return legend_item(svg::rectangle({0, 2}, 26, 10, kind), words);
    };
    std::string legend = swatch(fail(rules) ? "bar bar-bad" : "bar",
                                "residue of the dipole's sums / its uncertainty");
    if (!fail(rules) && rules.largest > sgn::unremarkable_residue) {
        legend += swatch("bar bar-beyond", "beyond its uncertainty, but no doubt");
    }
    if (!of.suspects.flips.empty()) {
        legend += swatch("bar bar-mended", "once the suspect signs are reversed");
    }
    legend += swatch("rounding", "what rounding explains");
    return section("Sum rules",
                   contents + surroundings + legend_of(legend) + wide(rules_drawing(of)));
}

std::string modes_part(const sgn::report& of) {
    constexpr const char* title = "Borrowed intensity";
    if (of.modes.empty()) {
        return section(title, paragraph(of.set.has_forces ? "A mass is missing, so there are no "
                                                            "normal modes."
                                                          : "The files hold no forces, so there "
                                                            "are no normal modes.",
                                        "note"));
    }
    const bool own = has_own_intensity(of);
    std::string words =
        "What each normal mode adds to the transition by changing the dipole: the square of its "
        "derivative with respect to the dimensionless coordinate";
    words += own ? ", against the square of the dipole itself." : ".";
    if (!of.stationary()) {
        words += " The reference is no stationary point (a force of " +
                 decimal(of.largest_force, 4) +
                 " Hartree/Bohr is left): the wavenumbers are those of a slope.";
    }
    std::string contents = paragraph(words, "note");
    if (fail(of.dipole_rules)) {
        contents += paragraph("The sum rules of the dipole fail: these heights mean nothing yet.",
                              "warning");
    }
    std::string rows;
    for (std::size_t i = 0; i < of.modes.size(); ++i) {
        const sgn::normal_mode& mode = of.modes[i];
        std::vector<cell> row{{std::to_string(i + 1)},
                              {decimal(mode.wavenumber, 1)},
                              {decimal(mode.reduced_mass, 4)}};
        for (const double each : mode.dipole_derivative_q) row.push_back({number(each, 5)});
        row.push_back({number(borrowed_by(of, mode), 5)});
        rows += row_of(row) + "\n";
    }
    const std::string table = table_of({{"Mode"},
                                        {"Wavenumber (1/cm)"},
                                        {"Reduced mass (u)"},
                                        {"d\u03BCx/dq (au)"},
                                        {"d\u03BCy/dq"},
                                        {"d\u03BCz/dq"},
                                        {own ? "Borrowed" : "Square (au)"}},
                                       rows);
    return section(title,
                   contents + wide(modes_drawing(of)) + folded(of.modes.size(), "All modes", table),
                   of.modes.size() > many ? "long" : "");
}

cell sign_cell(const sgn::displaced_job& of) {
    if (of.sign == 0) return {"not told", "kept doubtful"};
    return of.sign < 0 ? cell{"put right", "kept turned"} : cell{"as printed", "kept"};
}

std::string files_part(const sgn::report& of) {
    std::string rows;
    for (std::size_t i = 0; i < of.set.jobs.size(); ++i) {
        const sgn::displaced_job& each = of.set.jobs[i];
        std::string doubts;
        for (const sgn::finding& found : of.findings) {
            if (found.job == i) doubts += (doubts.empty() ? "" : "; ") + found.text;
        }
        const std::size_t farthest = each.moved.farthest;
        const std::string moved = each.is == sgn::role::reference
                                      ? "reference"
                                      : each.moved.text(name_of(of.set.atoms[farthest], farthest));
        std::vector<cell> row{{each.name, "name"}, {moved, "kept"}, sign_cell(each)};
        for (const double component : each.dipole) {
            row.push_back(
                {decimal(component, std::clamp(of.set.dipole_decimals, 4, 8)), "n aside"});
        }
        row.push_back(doubts.empty() ? cell{"fine", "fine"} : cell{doubts, "verdicts doubtful"});
        rows += row_of(row) + "\n";
    }
    return section("All files",
                   table_of({{"File", of_text},
                             {"Displaced (\u00C5)", of_text},
                             {"Sign", of_text},
                             {"\u03BCx (au)", "n aside"},
                             {"\u03BCy", "n aside"},
                             {"\u03BCz", "n aside"},
                             {"Verdict", of_text}},
                            rows),
                   "long");
}

}  // namespace

std::string html_of(const sgn::report& of, const std::string& maker) {
    const std::string name = escaped(of.set.jobs.front().name);
    std::string text =
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta name=\"generator\" content=\"" +
        escaped(maker) +
        "\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
        "style-src 'unsafe-inline'\">\n<title>" +
        name + ": transition dipole derivatives</title>\n<style>";
    text.append(style).append("</style>\n</head>\n<body>\n<main>\n");
    text += paragraph("Derivatives of the transition dipole \u00B7 " + formula_of(of.set.atoms) +
                          " \u00B7 reference " + of.set.jobs.front().name,
                      "over");
    text += verdict_part(of) + facts_part(of) + molecule_part(of) + dipole_part(of) +
            rules_part(of) + modes_part(of) + files_part(of);
    text += element("footer", escaped(maker) +
                                  ". Dipoles and their derivatives in atomic units; "
                                  "forces in Hartree/Bohr.");
    return text + "</main>\n</body>\n</html>\n";
}

}  // namespace sgn::page
