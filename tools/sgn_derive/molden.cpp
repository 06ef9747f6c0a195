#include "sgn_derive/molden.h"

#include <algorithm>

#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "flib/util/units.h"

namespace sgn_derive {
namespace {

void append_vector(std::string& text, const sgn::vec3& v, double unit) {
    for (const double component : v) text += flib::fixed_field(component / unit, 14, 8);
    text += '\n';
}

std::string symbol_of(const sgn::atom& of) {
    std::string symbol = flib::printable(of.symbol);
    symbol.resize(std::max<std::size_t>(2, symbol.size()), ' ');
    return symbol;
}

}  // namespace

std::string molden_of(const sgn::report& of) {
    std::string text = "[Molden Format]\n[Title]\n by sgn_derive\n[Atoms] AU\n";
    for (std::size_t i = 0; i < of.set.atoms.size(); ++i) {
        const sgn::atom& each = of.set.atoms[i];
        text += symbol_of(each) + flib::integer_field(static_cast<std::int64_t>(i) + 1, 7) +
                flib::integer_field(each.number, 5);
        append_vector(text, each.x, flib::bohr_radius);
    }
    text += "[FREQ]\n";
    for (const auto& mode : of.modes) text += flib::fixed_field(mode.wavenumber, 14, 4) + '\n';
    text += "[FR-COORD]\n";
    for (const sgn::atom& each : of.set.atoms) {
        text += symbol_of(each);
        append_vector(text, each.x, flib::bohr_radius);
    }
    text += "[FR-NORM-COORD]\n";
    for (std::size_t m = 0; m < of.modes.size(); ++m) {
        text += "vibration" + flib::integer_field(static_cast<std::int64_t>(m) + 1, 6) + '\n';
        for (const sgn::vec3& each : of.modes[m].displacement) append_vector(text, each, 1);
    }
    return text;
}

}  // namespace sgn_derive
