// Putting one question to a file: which reader, how many atoms; and what came back.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "flib/qm_file/qm_file_coord.h"
#include "flib/qm_file/qm_file_force_tdip.h"
#include "flib/qm_file/qm_file_mass.h"
#include "flib/qm_file/qm_file_nat.h"
#include "flib/qm_file/qm_file_natom.h"
#include "support/support.h"

enum class reader { natom, nat, coord, mass, force_tdip };

/// What the caller's arrays hold before the call.
inline constexpr std::int32_t untouched = -77;

struct answer {
    std::optional<support::ending> end;  // how the run ended, if it did
    std::int32_t info = untouched;
    std::vector<double> values;  // of force_tdip: the forces, then one dipole

    bool unchanged() const { return values == std::vector<double>(values.size(), untouched); }
};

inline answer ask(reader who, const std::string& file, std::int32_t atoms = 3) {
    using enum reader;
    answer a;
    const auto n = static_cast<std::size_t>(atoms > 0 ? atoms : 0);
    std::vector<std::int32_t> whole(who == natom ? 1 : n, untouched);
    a.values.assign(who == mass ? n : who == coord ? 3 * n : 3 * n + 3, untouched);
    const flib::matrix_view<double> x(a.values.data(), 3, atoms);
    a.end = support::ending_of([&] {
        if (who == natom) flib::qm_file_natom(file, whole[0], a.info);
        if (who == nat) flib::qm_file_nat(file, atoms, whole, a.info);
        if (who == coord) flib::qm_file_coord(file, atoms, x, a.info);
        if (who == mass) flib::qm_file_mass(file, atoms, a.values, a.info);
        if (who == force_tdip) {
            flib::qm_file_force_tdip(file, atoms, 1, x, {x.data() + 3 * n, 3, 1}, a.info);
        }
    });
    if (who == natom || who == nat) a.values.assign(whole.begin(), whole.end());
    return a;
}

/// `text` with every `from` replaced by `to`.
inline std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}
