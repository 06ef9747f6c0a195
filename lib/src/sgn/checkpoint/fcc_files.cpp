#include "sgn/checkpoint/fcc_files.h"

#include <cmath>
#include <span>
#include <string_view>

#include "flib/io/fixed_field.h"
#include "flib/io/number.h"
#include "flib/io/stop_run.h"
#include "flib/text/fixed_text.h"
#include "sgn/checkpoint/detail/lower_triangle.h"
#include "sgn/set/modes.h"

namespace sgn {
namespace {

/// An exponent of three digits would lose its letter.
double without_dust(double value) {
    constexpr double smallest = 1e-98;
    return std::abs(value) < smallest ? 0 : value;
}

/// As Fortran writes ES16.8.
std::string scientific(double value) {
    return flib::scientific_field(without_dust(value), 16, 8);
}

/// As Fortran writes E18.9: no digit but 0 before the point.
std::string engineering(double value) {
    value = without_dust(value);
    constexpr int digits = 9;
    // -1.23456789E+01 becomes -0.123456789E+02.
    std::string text(flib::trim(flib::scientific_field(value, 24, digits - 1)));
    const std::size_t point = text.find('.');
    const std::size_t letter = text.find('E');
    if (point == std::string::npos || letter == std::string::npos)
        return flib::text_field(text, 18);
    std::int32_t exponent = 0;
    flib::parse_integer(std::string_view(text).substr(letter + 1), exponent);
    if (value != 0) ++exponent;
    std::string power = std::to_string(std::abs(exponent));
    if (power.size() < 2) power.insert(0, 1, '0');
    std::string mantissa = text.substr(0, letter);
    mantissa.erase(point, 1).insert(point - 1, "0.");
    return flib::text_field(mantissa + (exponent < 0 ? "E-" : "E+") + power, 18);
}

/// Five values a line.
std::string block(std::span<const double> values) {
    constexpr std::size_t in_line = 5;
    std::string text;
    for (std::size_t i = 0; i < values.size(); ++i) {
        text += scientific(values[i]);
        if (i % in_line == in_line - 1 || i + 1 == values.size()) text += '\n';
    }
    return text;
}

std::string dipole_line(std::span<const double> dipole) {
    std::string text;
    for (const double component : dipole) text += ' ' + engineering(component);
    return text + '\n';
}

}  // namespace

fcc_state fcc_state_of(const displaced_set& set, const derivatives& of, double energy) {
    const displaced_job& reference = set.jobs.front();
    if (!set.has_forces) {
        throw flib::io_error(reference.name, 0,
                             "holds no forces, and a state file needs gradient and force "
                             "constants");
    }
    fcc_state state{
        "State by sgn_derive, from " + flib::printable(reference.name) + " and displaced jobs",
        set.atoms,
        energy,
        {},
        force_constants(of.forces)};
    for (const vec3& force : reference.forces) state.gradient.push_back(scaled(-1, force));
    return state;
}

std::string fcc_state_text(const fcc_state& state) {
    std::string text = "INFO\n" + state.title + "\n\nGEOM      UNITS=ANGS\n" +
                       std::to_string(state.atoms.size()) + '\n' + state.title + '\n';
    for (const atom& each : state.atoms) {
        std::string symbol = flib::printable(each.symbol);
        symbol.resize(std::max<std::size_t>(2, symbol.size()), ' ');
        text += symbol;
        for (const double x : each.x) text += ' ' + flib::fixed_field(x, 15, 8);
        text += '\n';
    }
    text += "\nENER      UNITS=AU\n" + flib::text_field(flib::decimal(state.energy, 12), 20) + '\n';
    std::vector<double> gradient;
    for (const vec3& each : state.gradient) {
        gradient.insert(gradient.end(), each.begin(), each.end());
    }
    text += "\nGRAD      UNITS=AU\n" + block(gradient);
    return text + "\nHESS      UNITS=AU\n" + block(lower_triangle(state.force_constants));
}

std::string fcc_dipole_text(const vec3& dipole, const table& derivatives) {
    std::string text = dipole_line(dipole) + dipole_line(dipole);
    for (std::size_t c = 0; c < derivatives.rows; ++c) text += dipole_line(derivatives.row(c));
    return text;
}

fcc_names fcc_names_of(const std::string& name) {
    const std::size_t base = name.rfind('/') + 1;
    const auto with_prefix = [&](const char* prefix) {
        return name.substr(0, base) + prefix + name.substr(base);
    };
    return {name + ".fcc", with_prefix("eldip_"), with_prefix("magdip_")};
}

std::vector<fcc_file> fcc_files_of(const std::string& name, const displaced_set& set,
                                   const derivatives& of, double energy) {
    const displaced_job& reference = set.jobs.front();
    const fcc_names names = fcc_names_of(name);
    std::vector<fcc_file> files{{names.state, fcc_state_text(fcc_state_of(set, of, energy))},
                                {names.electric, fcc_dipole_text(reference.dipole, of.dipole)}};
    if (set.has_moments) {
        files.push_back({names.magnetic, fcc_dipole_text(reference.moments->magnetic_dipole,
                                                         of.magnetic_dipole.values)});
    }
    return files;
}

}  // namespace sgn
