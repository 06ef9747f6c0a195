#include "sgn/set/same_atoms.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"

namespace sgn {
namespace {

std::string atom_text(const sgn_contents& contents, std::size_t i) {
    return flib::printable(contents.symbol[i].trimmed()) + " " + std::to_string(contents.nat[i]) +
           " " + flib::decimal(contents.mass[i], 6);
}

}  // namespace

std::string other_shape(const sgn_contents& file) {
    const std::pair<const char*, std::size_t> counts[] = {{"symbols", file.symbol.size()},
                                                          {"atomic numbers", file.nat.size()},
                                                          {"masses", file.mass.size()},
                                                          {"forces", file.frc.size()}};
    for (const auto& [what, count] : counts) {
        if (count == file.x.size()) continue;
        return "has " + std::to_string(count) + " " + what + " of " +
               std::to_string(file.x.size()) + " atoms";
    }
    return {};
}

std::string other_atoms(const sgn_contents& file, const sgn_contents& reference) {
    if (file.x.size() != reference.x.size()) {
        return "has " + std::to_string(file.x.size()) + " atoms instead of " +
               std::to_string(reference.x.size());
    }
    if (std::string shape = other_shape(file); !shape.empty()) return shape;
    constexpr double mass_rounding = 1e-6;
    for (std::size_t i = 0; i < file.nat.size(); ++i) {
        if (file.nat[i] != reference.nat[i] || !(file.symbol[i] == reference.symbol[i].padded()) ||
            std::abs(file.mass[i] - reference.mass[i]) > mass_rounding) {
            return "atom " + std::to_string(i + 1) + " is " + atom_text(file, i) + " instead of " +
                   atom_text(reference, i);
        }
    }
    return {};
}

std::string not_finite(const sgn_contents& file) {
    const auto finite = [](double value) { return std::isfinite(value); };
    const auto all_finite = [&](const auto& values) { return std::ranges::all_of(values, finite); };
    if (!all_finite(file.corrected_tdip)) return "the dipole";
    if (!all_finite(file.mass)) return "the masses";
    if (!std::ranges::all_of(file.x, all_finite)) return "the geometry";
    if (!std::ranges::all_of(file.frc, all_finite)) return "the forces";
    return {};
}

}  // namespace sgn
