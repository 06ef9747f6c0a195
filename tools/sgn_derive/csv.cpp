#include "sgn_derive/csv.h"

#include <algorithm>
#include <vector>

#include "common/csv.h"
#include "flib/io/stop_run.h"
#include "sgn/set/geometry.h"
#include "sgn/set/input_numbers.h"

namespace sgn_derive {
namespace {

using tools::csv_real;

template <class Vector>
void add(std::vector<std::string>& fields, const Vector& values) {
    for (const double value : values) fields.push_back(csv_real(value));
}

}  // namespace

std::string derivatives_csv(const sgn::report& of) {
    std::string text = "atom,input,symbol,axis,dx,dy,dz,uncertainty";
    if (of.set.has_moments) {
        text +=
            ",velocity_x,velocity_y,velocity_z,magnetic_x,magnetic_y,magnetic_z,"
            "quadrupole_xx,quadrupole_yy,quadrupole_zz,quadrupole_xy,quadrupole_xz,quadrupole_yz,"
            "velocity_uncertainty,magnetic_uncertainty,quadrupole_uncertainty";
    }
    text += "\r\n";
    const auto& d = of.derivatives;
    for (std::size_t c = 0; c < d.dipole.rows; ++c) {
        std::vector<std::string> fields{
            std::to_string(c / 3 + 1), std::to_string(number_of(of.set.atoms[c / 3], c / 3)),
            flib::printable(of.set.atoms[c / 3].symbol), std::string(1, sgn::axis_names[c % 3])};
        add(fields, d.dipole.row(c));
        fields.push_back(csv_real(std::ranges::max(of.uncertainties.total.row(c))));
        for (const auto& [name, derivatives] : other_derivatives(d)) {
            if (of.set.has_moments) add(fields, derivatives->values.row(c));
        }
        for (const auto& [name, derivatives] : other_derivatives(d)) {
            if (!of.set.has_moments) break;
            fields.push_back(csv_real(std::ranges::max(derivatives->uncertainty.row(c))));
        }
        text += tools::csv_line(fields);
    }
    return text;
}

std::string modes_csv(const sgn::report& of) {
    std::string text =
        "mode,wavenumber,reduced_mass,dx_mass_weighted,dy_mass_weighted,dz_mass_weighted,"
        "dx_dimensionless,dy_dimensionless,dz_dimensionless,borrowed\r\n";
    for (std::size_t m = 0; m < of.modes.size(); ++m) {
        const sgn::normal_mode& mode = of.modes[m];
        std::vector<std::string> fields{std::to_string(m + 1), csv_real(mode.wavenumber),
                                        csv_real(mode.reduced_mass)};
        add(fields, mode.dipole_derivative);
        add(fields, mode.dipole_derivative_q);
        fields.push_back(csv_real(mode.borrowed));
        text += tools::csv_line(fields);
    }
    return text;
}

}  // namespace sgn_derive
