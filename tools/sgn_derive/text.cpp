#include "sgn_derive/text.h"
#include "flib/text/shown_text.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "flib/util/units.h"
#include "sgn/set/decimals.h"
#include "sgn/set/geometry.h"
#include "sgn/set/input_numbers.h"
#include "sgn/set/listed.h"
#include "sgn/set/molecule.h"
#include "sgn/set/set_moments.h"

namespace sgn_derive {
namespace {

using flib::decimal;
using sgn::axis_names;
using sgn::role;
using sgn::sum_rules;
using tools::paint;

std::string left(std::string_view text, std::size_t width) {
    std::string result(text);
    result.resize(std::max(width, result.size() + 1), ' ');
    return result;
}

/// Fixed point that shows no minus sign before a zero.
std::string number(double value, int width, int decimals) {
    return flib::text_field(std::isnan(value) ? "-" : decimal(value, decimals), width);
}

std::string count(std::size_t n, const char* one, const char* many) {
    return std::to_string(n) + " " + (n == 1 ? one : many);
}

/// A paragraph, on a terminal no wider than that.
std::string paragraph(std::string_view words, const tools::terminal& on) {
    constexpr std::size_t usual = 84;
    std::string text;
    for (const std::string& line :
         flib::wrapped(words, std::min(usual, on.width.value_or(usual)))) {
        text += line + '\n';
    }
    return text;
}

std::string what_it_is(const sgn::report& of, const tools::terminal& on) {
    const sgn::displaced_set& set = of.set;
    std::string steps = decimal(set.largest_step, 4);
    if (set.largest_step - set.smallest_step > sgn::rounding) {
        steps = decimal(set.smallest_step, 4) + " to " + steps;
    }
    std::string text = flib::printable(set.jobs.front().name) + ": " + sgn::formula_of(set.atoms) +
                       ", " + count(set.atoms.size(), "atom", "atoms") + "; " +
                       count(set.pairs, "pair", "pairs") + " of displacements by " + steps +
                       " Angstrom";
    if (set.one_sided > 0) {
        text += ", " + std::to_string(set.one_sided) + " one-sided";
    }
    const auto left_out = std::count_if(set.jobs.begin(), set.jobs.end(), [](const auto& job) {
        return job.is == role::undisplaced || job.is == role::repeated;
    });
    if (left_out > 0) text += ", " + std::to_string(left_out) + " left out";
    text += '.';
    return on.width ? paragraph(text, on) : text + '\n';
}

/// Which transition it is, where a checkpoint tells.
std::string excitation_text(const sgn::report& of) {
    const auto& reference = of.set.jobs.front().excited;
    if (!reference) return {};
    std::string text = " The dipole is that of state " + std::to_string(reference->state);
    if (reference->energy) {
        text += ", " + decimal(*reference->energy * flib::hartree_energy, 4) +
                " eV above the ground state";
    }
    const std::vector<double> gradient = excitation_gradient(of.set, of.derivatives);
    if (!gradient.empty()) {
        double largest = 0;
        for (const double each : gradient) largest = std::max(largest, std::abs(each));
        text += "; the gradient of this energy has components of up to " + decimal(largest, 4) +
                " Hartree/Bohr";
    }
    if (of.set.has_forces && reference->target != 0 && reference->state != reference->target) {
        text += "; the forces are those of state " + std::to_string(reference->target);
    }
    return text + '.';
}

/// Where the dipoles come from, and which they are.
std::string source_text(const sgn::report& of, const tools::terminal& on) {
    std::string text = "The dipoles are those of the " + std::string(source_of_dipoles(of.set)) +
                       ", with " + std::to_string(of.set.dipole_decimals) + " decimals";
    // Where not even the reference has one, nobody asks for checkpoints.
    const bool some = of.set.jobs.front().excited.has_value();
    if (some && !of.no_full_digits.empty()) text += " (" + of.no_full_digits + ")";
    return '\n' + paragraph(text + '.' + excitation_text(of), on);
}

/// What the derivatives of a state are worth that another one comes near to.
std::string near_text(const sgn::report& of, const tools::terminal& on) {
    return of.near ? '\n' + paragraph(text_of(*of.near), on) : std::string();
}

std::string coordinate_text(const sgn::report& of, std::size_t c) {
    return flib::integer_field(number_of(of.set.atoms[c / 3], c / 3), 5) + " " +
           left(flib::printable(of.set.atoms[c / 3].symbol), 3) + axis_names[c % 3];
}

std::string noise_text(double noise) {
    return flib::scientific_field(noise, 7, 1) + " au";
}

std::string dipole_text(const sgn::report& of, const tools::terminal& on, bool by_angstrom) {
    const auto& d = of.derivatives;
    const sgn::vec3& dipole = of.set.jobs.front().dipole;
    const double unit = by_angstrom ? flib::bohr_radius : 1;
    // Dipoles with nine digits are worth more decimals.
    const bool full = of.set.has_moments;
    const int decimals = full ? 6 : 4;
    std::string uncertain = "), and what makes them uncertain: the rounding of the dipoles to " +
                            std::to_string(of.set.dipole_decimals) + " decimals";
    if (of.dipole_rules.noise > 0) {
        uncertain += ", noise of " + noise_text(of.dipole_rules.noise);
    }
    uncertain += of.signs.unseen.empty() ? " and the size of the steps"
                                         : ", the size of the steps, and signs that would not be "
                                           "seen if they were wrong";
    std::string text =
        '\n' +
        paragraph(std::string("Derivatives of the transition dipole (") +
                      (by_angstrom ? "e Bohr, by Angstrom" : "au: e, by Bohr") + uncertain,
                  on) +
        (full ? "\n   Atom            x          y          z        +-\n"
              : "\n   Atom            x          y          z    +-\n");
    for (std::size_t c = 0; c < d.dipole.rows; ++c) {
        text += coordinate_text(of, c);
        for (const double value : d.dipole.row(c)) text += number(value / unit, 11, decimals);
        text +=
            number(std::ranges::max(of.uncertainties.total.row(c)) / unit, full ? 12 : 8, decimals);
        if (c % 3 == 0) text += place_text(of.set.atoms[c / 3], c / 3);
        text += '\n';
    }
    text += "   dipole ";
    for (const double value : dipole) text += number(value, 11, decimals);
    return text + "\n";
}

/// The table of a moment with these components; `reference` has that of the reference.
std::string moment_table(const sgn::report& of, const sgn::moment_derivatives& derivatives,
                         std::span<const std::string_view> components,
                         std::span<const double> reference, bool by_angstrom) {
    // Six columns fit a terminal with a digit less.
    const bool narrow = components.size() > 3;
    const int width = narrow ? 10 : 11;
    const int last_width = narrow ? 9 : 12;
    const int decimals = narrow ? 5 : 6;
    const double step = by_angstrom ? flib::bohr_radius : 1;
    std::string text = "\n   Atom   ";
    for (const std::string_view each : components) text += flib::text_field(each, width);
    text += flib::text_field("+-", last_width) + '\n';
    for (std::size_t c = 0; c < derivatives.values.rows; ++c) {
        text += coordinate_text(of, c);
        for (const double value : derivatives.values.row(c)) {
            text += number(value / step, width, decimals);
        }
        text +=
            number(std::ranges::max(derivatives.uncertainty.row(c)) / step, last_width, decimals);
        if (c % 3 == 0) text += place_text(of.set.atoms[c / 3], c / 3);
        text += '\n';
    }
    text += "   moment ";
    for (const double value : reference) text += number(value, width, decimals);
    return text + '\n';
}

/// The derivatives of the moments that only checkpoints tell.
std::string moments_text(const sgn::report& of, const tools::terminal& on, bool by_angstrom) {
    const auto& moments = of.set.jobs.front().moments;
    if (!moments) {
        return '\n' + paragraph("There are no derivatives of velocity and magnetic moments: the " +
                                    std::string(source_of_dipoles(of.set)) + " do not tell them.",
                                on);
    }
    static constexpr std::string_view axes[] = {"x", "y", "z"};
    static constexpr std::string_view products[] = {"xx", "yy", "zz", "xy", "xz", "yz"};
    const auto& d = of.derivatives;
    const auto& decimals = of.set.moment_decimals;
    const auto table = [&](const std::string& name, const sgn::moment_derivatives& derivatives,
                           std::span<const std::string_view> components,
                           std::span<const double> reference, int digits) {
        std::string title =
            "Derivatives of the " + name + (by_angstrom ? " (au, by Angstrom)" : " (au, by Bohr)");
        if (derivatives.noise.front() > 0) {
            const double noise = derivatives.noise.front() / derivatives.rounding.front() *
                                 sgn::rounding_error(digits);
            title += ", with noise of " + noise_text(noise);
        }
        return '\n' + paragraph(title, on) +
               moment_table(of, derivatives, components, reference, by_angstrom);
    };
    return table("velocity dipole", d.velocity_dipole, axes, moments->velocity_dipole,
                 decimals[0]) +
           table("magnetic dipole", d.magnetic_dipole, axes, moments->magnetic_dipole,
                 decimals[1]) +
           table("velocity quadrupole", d.velocity_quadrupole, products,
                 moments->velocity_quadrupole, decimals[2]);
}

std::string rule_line(const char* name, const sum_rules& rules, const tools::terminal& on) {
    if (!rules.judged) {
        return "   " + left(name, 9) + painted("not judged", paint::bad, on) + ": " +
               rules.why_not + '\n';
    }
    return "   " + left(name, 9) + flib::integer_field(static_cast<std::int64_t>(rules.sums), 5) +
           number(rules.chi2, 15, 1) + number(rules.largest_residue, 18, 5) +
           number(rules.largest, 20, 1) + "    " +
           (rules.satisfied ? painted("hold", paint::good, on) : painted("FAIL", paint::bad, on)) +
           '\n';
}

/// Of the moments that only checkpoints tell.
std::string moment_rules_text(const sgn::report& of, const tools::terminal& on) {
    if (!of.set.has_moments) return {};
    return rule_line("velocity", of.velocity_rules, on) +
           rule_line("magnetic", of.magnetic_rules, on);
}

std::string vector_text(const sgn::vec3& of, int width, int decimals) {
    std::string text;
    for (const double value : of) text += number(value, width, decimals);
    return text;
}

/// Columns that the table of modes takes with all derivatives side by side.
constexpr std::size_t wide_modes = 118;

std::string modes_table(const sgn::report& of, bool narrow) {
    std::string text =
        narrow
            ? "         Wavenumber   Reduced  Dipole derivatives (au) by the       Square of them\n"
              "  Mode       (1/cm)  mass (u)  dimensionless coordinate: x, y, z     / "
              "dipole\u00b2\n"
            : "         Wavenumber   Reduced    Derivatives of the dipole (au) by the coordinate "
              "of the mode            Square of the\n  Mode       (1/cm)  mass (u)             "
              "mass-weighted: x, y, z          dimensionless: x, y, z    latter / dipole\u00b2\n";
    std::string rest =
        "\n  Mode  Dipole derivatives (au) by the mass-weighted coordinate: x, y, z\n";
    for (std::size_t m = 0; m < of.modes.size(); ++m) {
        const sgn::normal_mode& mode = of.modes[m];
        const std::string name = flib::integer_field(static_cast<std::int64_t>(m) + 1, 6);
        const std::string weighted = vector_text(mode.dipole_derivative, 11, 6);
        text += name + number(mode.wavenumber, 13, 1) + number(mode.reduced_mass, 10, 4) +
                (narrow ? "" : "   " + weighted) + "  " +
                vector_text(mode.dipole_derivative_q, 10, 5) + number(mode.borrowed, 17, 5) + '\n';
        rest += name + weighted + '\n';
    }
    return narrow ? text + rest : text;
}

std::string modes_text(const sgn::report& of, const tools::terminal& on) {
    if (!of.set.has_forces) return "\nThe files hold no forces: no force constants, no modes.\n";
    if (of.modes.empty()) return {};
    std::string text =
        '\n' + paragraph(
                   "Harmonic modes, translations and rotations projected out; the force "
                   "constants are symmetric within " +
                       decimal(of.asymmetry, 5) + " Hartree/Bohr^2",
                   on);
    if (!of.stationary()) {
        text += paragraph("The reference is no stationary point: a force of " +
                              decimal(of.largest_force, 4) +
                              " Hartree/Bohr is left, and the wavenumbers are those of a slope.",
                          on);
    }
    return text + '\n' + modes_table(of, on.width.value_or(wide_modes) < wide_modes);
}

/// Why the sum rules may fail though all signs are right.
std::string surroundings_text(const sgn::report& of, const tools::terminal& on) {
    if (of.surroundings.empty() || !of.dipole_rules.judged) return {};
    return '\n' + paragraph("The job has " + sgn::listed(of.surroundings) +
                                ", which do not move with the atoms: the sums need not vanish "
                                "(--no-sum-rules leaves them out).",
                            on);
}

/// An indented line, its beginning in red; on a terminal as many as it takes.
std::string item(const std::string& name, const std::string& rest, const tools::terminal& on) {
    constexpr std::size_t indent = 3;
    auto lines = on.width ? flib::wrapped(name + rest, std::max(indent + 1, *on.width) - indent)
                          : std::vector{name + rest};
    if (lines.front().starts_with(name)) {
        lines.front().replace(0, name.size(), painted(name, paint::bad, on));
    }
    std::string text;
    for (const std::string& line : lines) text += std::string(indent, ' ') + line + '\n';
    return text;
}

std::string findings_text(const sgn::report& of, const tools::terminal& on) {
    if (of.fine()) return {};
    std::string text = "\nWhat deserves doubt\n\n";
    for (const sgn::finding& each : of.findings) {
        const std::string file = each.job == sgn::finding::whole_set
                                     ? "the set"
                                     : flib::printable(of.set.jobs[each.job].name);
        text += item(file, ": " + each.text, on);
    }
    for (std::size_t i = 1; i < of.suspects.flips.size(); ++i) {
        text += item(
            "", "as good a guess at the wrong signs: " + names_of(of.suspects.flips[i], of), on);
    }
    return text;
}

}  // namespace

std::string rules_text(const sum_rules& dipole, const sum_rules& forces,
                       const tools::terminal& on) {
    return "\nSum rules\n\n            sums    chi-squared   largest residue   over uncertainty\n" +
           rule_line("dipole", dipole, on) + rule_line("forces", forces, on);
}

std::string residues_text(const sum_rules& rules, std::string_view of_what,
                          std::span<const sgn::atom> atoms) {
    if (!rules.judged || rules.satisfied) return {};
    std::vector<sgn::residue> all = residues_of(rules);
    constexpr std::size_t most = 5;
    const std::size_t shown = std::min(most, all.size());
    std::partial_sort(
        all.begin(), all.begin() + static_cast<std::ptrdiff_t>(shown), all.end(),
        [](const sgn::residue& a, const sgn::residue& b) { return a.ratio() > b.ratio(); });
    std::string text = "\nThe largest residues of the " + std::string(of_what) + "\n\n";
    for (std::size_t i = 0; i < shown; ++i) {
        const sgn::residue& each = all[i];
        std::string component(1, axis_names[each.component % 3]);
        if (rules.translation.columns > 3) {
            const std::size_t atom = each.component / 3;
            component += " of atom " + (atom < atoms.size() ? name_of(atoms[atom], atom)
                                                            : std::to_string(atom + 1));
        }
        text += "   " +
                left((each.turning ? "turning about " : "moving along ") +
                         std::string(1, axis_names[each.axis]) + ", component " + component,
                     40) +
                number(each.value, 12, 5) + " +- " + decimal(each.uncertainty, 5) + '\n';
    }
    return text;
}

std::string text_of(const sgn::report& of, const tools::terminal& on, const shown_as& how) {
    std::string text = what_it_is(of, on) + source_text(of, on) + near_text(of, on) +
                       dipole_text(of, on, how.by_angstrom) +
                       (how.moments ? moments_text(of, on, how.by_angstrom) : std::string()) +
                       rules_text(of.dipole_rules, of.force_rules, on) + moment_rules_text(of, on) +
                       surroundings_text(of, on);
    if (of.suspects.flips.empty()) {
        text += residues_text(of.dipole_rules, "dipole") +
                residues_text(of.velocity_rules, "velocity dipole") +
                residues_text(of.magnetic_rules, "magnetic dipole");
    }
    text += residues_text(of.force_rules, "forces", of.set.atoms) + modes_text(of, on) +
            findings_text(of, on) + '\n';
    const std::string verdict = verdict_of(of);
    for (const std::string& line :
         on.width ? flib::wrapped(verdict, *on.width) : std::vector{verdict}) {
        text += painted(line, of.fine() ? paint::good : paint::bad, on) + '\n';
    }
    return text;
}

std::string text_of(const sgn::judgement& of, const std::string& file, const tools::terminal& on) {
    const char* verdict = "The derivatives obey the sum rules.";
    if (!of.dipole.satisfied) {
        verdict = "The derivatives of the dipole are unsound.";
    } else if (!of.fine()) {
        verdict = "The force constants are unsound.";
    }
    return flib::printable(file) + ": derivatives for " + std::to_string(of.atoms) +
           (of.atoms == 1 ? " atom.\n" : " atoms.\n") + rules_text(of.dipole, of.forces, on) +
           residues_text(of.dipole, "dipole") + residues_text(of.forces, "forces") + '\n' +
           painted(verdict, of.fine() ? tools::paint::good : tools::paint::bad, on) + '\n';
}

}  // namespace sgn_derive
