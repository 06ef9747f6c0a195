#include "sgn_derive/html.h"

#include <algorithm>
#include <cmath>

#include "common/number_text.h"
#include "common/version.h"
#include "flib/io/stop_run.h"
#include "sgn_derive/html_drawings.h"
#include "sgn_derive/html_style.h"
#include "sgn_derive/svg.h"
#include "sgn_derive/text.h"

namespace sgn_derive {
namespace {

using sgn::displaced_job;
using sgn::role;
using sgn::sum_rules;
using svg::escaped;
using tools::decimal;

std::string tag(std::string_view name, std::string_view contents, std::string_view kind = {}) {
    std::string text = std::string("<").append(name);
    if (!kind.empty()) text.append(" class=\"").append(kind).append("\"");
    return text.append(">").append(contents).append("</").append(name).append(">\n");
}

std::string section(std::string_view title, const std::string& contents,
                    std::string_view kind = {}) {
    return tag("section", std::string("\n") + tag("h2", escaped(title)) + contents, kind);
}

std::string number(double value, int decimals) {
    return std::isfinite(value) ? decimal(value, decimals) : "\u2013";
}

/// Cells of a row; those of kind "n" hold numbers.
std::string cell(const std::string& contents, std::string_view kind = "n") {
    return std::string("<td class=\"").append(kind).append("\">").append(contents).append("</td>");
}

std::string head(std::string_view contents, std::string_view kind = "n") {
    return std::string("<th class=\"").append(kind).append("\">").append(contents).append("</th>");
}

std::string table_of(const std::string& heads, const std::string& rows) {
    return tag(
        "div",
        "<table><thead><tr>" + heads + "</tr></thead>\n<tbody>\n" + rows + "</tbody></table>",
        "wide");
}

bool rules_fail(const sum_rules& rules) {
    return rules.judged && !rules.satisfied;
}

/// No more digits than mean something.
std::string chi2_text(const sum_rules& rules) {
    return decimal(rules.chi2, rules.chi2 < 1000 ? 1 : 0);
}

std::size_t repaired(const sgn::report& of) {
    return static_cast<std::size_t>(
        std::count_if(of.set.jobs.begin(), of.set.jobs.end(),
                      [](const displaced_job& each) { return each.sign < 0; }));
}

std::string mark(bool fine) {
    const std::string sign =
        fine ? svg::path({{9, 20}, {17, 27}, {29, 12}}, "tick")
             : svg::line({19, 9}, {19, 21}, "tick") + svg::circle({19, 28}, 2.4, "dot");
    return "<svg class=\"mark\" viewBox=\"0 0 38 38\" aria-hidden=\"true\">" +
           svg::circle({19, 19}, 18, "disc") + sign + "</svg>\n";
}

/// The verdict of the whole set, and all that speaks against it.
std::string verdict_part(const sgn::report& of) {
    std::string contents =
        std::string("\n") + tag("h1", mark(of.fine()) + tag("span", escaped(verdict_of(of))));
    std::string list;
    for (const sgn::finding& each : of.findings) {
        const bool of_set = each.job == sgn::finding::whole_set;
        const std::string file = of_set ? "the set" : escaped(of.set.jobs[each.job].name);
        list += tag("li", "<b>" + file + "</b>: " + escaped(each.text));
    }
    for (std::size_t i = 1; i < of.suspects.flips.size(); ++i) {
        list += tag("li", "As good a guess at the wrong signs: <b>" +
                              escaped(names_of(of.suspects.flips[i], of)) + "</b>");
    }
    if (!list.empty()) contents += tag("ul", "\n" + list);
    return tag("section", contents, of.fine() ? "verdict" : "verdict doubt");
}

std::string fact(std::string_view name, const std::string& value, const std::string& rest,
                 bool bad = false) {
    return "<div><dt>" + escaped(name) + (bad ? "</dt><dd class=\"bad\">" : "</dt><dd>") + value +
           " <small>" + escaped(rest) + "</small></dd></div>\n";
}

std::string facts_part(const sgn::report& of) {
    const sgn::displaced_set& set = of.set;
    const sum_rules& rules = of.dipole_rules;
    std::string text;
    text +=
        fact("Files", std::to_string(set.jobs.size()),
             std::to_string(set.pairs) + (set.pairs == 1 ? " pair" : " pairs") +
                 (set.one_sided > 0 ? ", " + std::to_string(set.one_sided) + " one-sided" : ""));
    text += fact("Signs put right", std::to_string(repaired(of)),
                 "of " + std::to_string(set.jobs.size()));
    text += rules.judged ? fact("Sum rules, \u03C7\u00B2", chi2_text(rules),
                                "of " + std::to_string(rules.sums) + " sums", !rules.satisfied)
                         : fact("Sum rules", "\u2013", "not judged");
    text += fact("Transition dipole", decimal(sgn::length(set.jobs.front().dipole), 4), "au");
    text += fact("Displacement", decimal(set.largest_step, 4), "\u00C5");
    return tag("dl", "\n" + text, "facts");
}

std::string molecule_part(const sgn::report& of) {
    std::string rows;
    for (std::size_t i = 0; i < of.set.atoms.size(); ++i) {
        const sgn::atom& atom = of.set.atoms[i];
        std::string row = cell(std::to_string(i + 1)) + cell(escaped(atom.symbol), "name");
        for (const double x : atom.x) row += cell(decimal(x, 4));
        rows += tag("tr", row + cell(number(atom.mass, 4)));
    }
    const std::string table =
        table_of(head("Atom") + head("", "") + head("x (\u00C5)") + head("y (\u00C5)") +
                     head("z (\u00C5)") + head("Mass (u)"),
                 rows);
    constexpr std::size_t many = 12;
    const std::string shown =
        of.set.atoms.size() <= many
            ? table
            : tag("details", "<summary>Coordinates of the reference</summary>\n" + table);
    return section("The molecule",
                   tag("div",
                       molecule_drawing(of) +
                           tag("div", shown + tag("p",
                                                  "The arrow is the transition dipole of the "
                                                  "reference.",
                                                  "note")),
                       "two"),
                   of.set.atoms.size() > many ? "long" : "");
}

std::string legend_item(const std::string& drawing, const std::string& words) {
    return tag("li", "<svg viewBox=\"0 0 26 14\" aria-hidden=\"true\">" + drawing + "</svg>" +
                         escaped(words));
}

std::string dipole_part(const sgn::report& of) {
    std::string legend =
        legend_item(svg::line({0, 7}, {26, 7}, "printed-line") + svg::circle({13, 7}, 4, "printed"),
                    "as printed, where the sign was turned round");
    legend += legend_item(svg::line({13, 0}, {13, 14}, "jump"), "put right");
    legend += legend_item(
        svg::line({0, 7}, {26, 7}, "corrected-line") + svg::circle({13, 7}, 4, "corrected"),
        "corrected");
    if (!of.suspects.flips.empty()) {
        legend += legend_item(
            svg::circle({13, 7}, 3, "corrected suspect") + svg::circle({13, 7}, 6, "suspect-ring"),
            "suspect sign");
    }
    const std::size_t turned = repaired(of);
    const std::string words =
        turned == 0 ? std::string(
                          "No sign had to be put right: all jobs have "
                          "the phase of the reference.")
                    : "The phase of an excited state is arbitrary: " + std::to_string(turned) +
                          " of " + std::to_string(of.set.jobs.size()) +
                          " jobs came out with the other sign. Corrected, the "
                          "dipole follows the "
                          "displacements.";
    return section("The dipole along the jobs", tag("p", escaped(words), "note") +
                                                    tag("ul", legend, "legend") +
                                                    tag("div", dipole_drawing(of), "wide"));
}

std::string rule_words(const char* what, const sum_rules& rules) {
    if (!rules.judged) return std::string(what) + ": not judged, " + rules.why_not + ".";
    return std::string(what) + ": \u03C7\u00B2 = " + chi2_text(rules) + " for " +
           std::to_string(rules.sums) + " sums, the largest residue is " +
           decimal(rules.largest, 1) + " times its uncertainty: they " +
           (rules.satisfied ? "hold." : "fail.");
}

std::string rules_part(const sgn::report& of) {
    std::string contents =
        tag("p",
            "Moving the whole molecule changes no transition dipole, and turning "
            "it turns the "
            "dipole along. So sums over the derivatives must vanish but for the "
            "rounding of the "
            "printed values: a test of all signs at once.",
            "note") +
        tag("p", escaped(rule_words("Dipole", of.dipole_rules)),
            rules_fail(of.dipole_rules) ? "warning" : "") +
        tag("p", escaped(rule_words("Forces", of.force_rules)),
            rules_fail(of.force_rules) ? "warning" : "");
    if (!of.dipole_rules.judged) return section("Sum rules", contents);
    const auto swatch = [](const char* kind) { return svg::rectangle({0, 2}, 26, 10, kind); };
    std::string legend = legend_item(swatch(rules_fail(of.dipole_rules) ? "bar bar-bad" : "bar"),
                                     "residue of the dipole's sums / its uncertainty");
    if (!rules_fail(of.dipole_rules) && of.dipole_rules.largest > sgn::unremarkable_residue) {
        legend += legend_item(swatch("bar bar-beyond"), "beyond its uncertainty, but no doubt");
    }
    if (!of.suspects.flips.empty()) {
        legend += legend_item(swatch("bar bar-mended"), "once the suspect signs are reversed");
    }
    legend += legend_item(swatch("rounding"), "what rounding explains");
    return section("Sum rules",
                   contents + tag("ul", legend, "legend") + tag("div", rules_drawing(of), "wide"));
}

std::string mode_rows(const sgn::report& of) {
    std::string rows;
    for (std::size_t i = 0; i < of.modes.size(); ++i) {
        const sgn::normal_mode& mode = of.modes[i];
        std::string row = cell(std::to_string(i + 1)) + cell(decimal(mode.wavenumber, 1)) +
                          cell(decimal(mode.reduced_mass, 4));
        for (const double each : mode.dipole_derivative_q) row += cell(number(each, 5));
        rows += tag("tr", row + cell(number(borrowed_by(of, mode), 5)));
    }
    return rows;
}

std::string modes_part(const sgn::report& of) {
    constexpr const char* title = "Borrowed intensity";
    if (of.modes.empty()) {
        return section(title, tag("p",
                                  of.set.has_forces
                                      ? "A mass is missing, so there are no normal modes."
                                      : "The files hold no forces, so there are no normal modes.",
                                  "note"));
    }
    std::string words =
        "What each normal mode adds to the transition by "
        "changing the dipole: the square of its "
        "derivative with respect to the dimensionless coordinate";
    words += has_own_intensity(of) ? ", against the square of the dipole itself." : ".";
    if (!of.stationary()) {
        words += " The reference is no stationary point (a force of " +
                 decimal(of.largest_force, 4) +
                 " Hartree/Bohr is left): the wavenumbers are those of a slope.";
    }
    const std::string warning = rules_fail(of.dipole_rules)
                                    ? tag("p",
                                          "The sum rules of the dipole fail: "
                                          "these heights mean nothing yet.",
                                          "warning")
                                    : "";
    const std::string table =
        table_of(head("Mode") + head("Wavenumber (1/cm)") + head("Reduced mass (u)") +
                     head("d\u03BCx/dq (au)") + head("d\u03BCy/dq") + head("d\u03BCz/dq") +
                     head(has_own_intensity(of) ? "Borrowed" : "Square (au)"),
                 mode_rows(of));
    constexpr std::size_t many = 12;
    return section(
        title,
        tag("p", escaped(words), "note") + warning + tag("div", modes_drawing(of), "wide") +
            (of.modes.size() <= many ? table
                                     : tag("details", "<summary>All modes</summary>\n" + table)),
        of.modes.size() > many ? "long" : "");
}

/// "1 O +z 0.0100", or how many atoms and how far.
std::string displacement_of(const sgn::report& of, const displaced_job& each) {
    if (each.is == role::reference) return "reference";
    return each.moved.text(of.set.atoms[each.moved.farthest].symbol);
}

std::string files_part(const sgn::report& of) {
    std::string rows;
    for (std::size_t i = 0; i < of.set.jobs.size(); ++i) {
        const displaced_job& each = of.set.jobs[i];
        std::string doubts;
        for (const sgn::finding& found : of.findings) {
            if (found.job == i) doubts += (doubts.empty() ? "" : "; ") + found.text;
        }
        std::string row = cell(escaped(each.name), "name") +
                          cell(escaped(displacement_of(of, each)), "kept") +
                          (each.sign < 0    ? cell("put right", "kept turned")
                           : each.sign == 0 ? cell("not told", "kept doubtful")
                                            : cell("as printed", "kept"));
        for (const double component : each.dipole) {
            row += cell(decimal(component, std::clamp(of.set.dipole_decimals, 4, 8)), "n aside");
        }
        row += doubts.empty() ? cell("fine", "fine") : cell(escaped(doubts), "verdicts doubtful");
        rows += tag("tr", row);
    }
    return section("All files",
                   table_of(head("File", "") + head("Displaced (\u00C5)", "") + head("Sign", "") +
                                head("\u03BCx (au)", "n aside") + head("\u03BCy", "n aside") +
                                head("\u03BCz", "n aside") + head("Verdict", ""),
                            rows),
                   "long");
}

}  // namespace

std::string html_of(const sgn::report& of) {
    const std::string name = escaped(of.set.jobs.front().name);
    std::string text =
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta name=\"generator\" content=\"sgn_derive\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, "
        "initial-scale=1\">\n"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src "
        "'none'; "
        "style-src 'unsafe-inline'\">\n<title>" +
        name + ": transition dipole derivatives</title>\n<style>";
    text += page_style;
    text += "</style>\n</head>\n<body>\n<main>\n";
    text += tag("p",
                "Derivatives of the transition dipole \u00B7 " + escaped(formula_of(of.set.atoms)) +
                    " \u00B7 reference " + name,
                "over");
    text += verdict_part(of) + facts_part(of) + molecule_part(of) + dipole_part(of) +
            rules_part(of) + modes_part(of) + files_part(of);
    text += tag("footer", "sgn_derive " + escaped(tools::version()) +
                              ". Dipoles and their derivatives in atomic units; forces in "
                              "Hartree/Bohr.");
    return text + "</main>\n</body>\n</html>\n";
}

}  // namespace sgn_derive
