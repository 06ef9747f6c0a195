// Putting one question to a file: which reader, how many atoms; and what came back.
#pragma once

#include <cmath>
#include <cstdint>
#include <optional>
#include <ostream>
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

    bool unchanged() const {
        for (const double value : values) {
            if (value != untouched) return false;
        }
        return true;
    }
};

inline answer ask(reader who, const std::string& file, std::int32_t natom = 3) {
    answer a;
    const auto n = static_cast<std::size_t>(natom > 0 ? natom : 0);
    std::int32_t count = untouched;
    std::vector<std::int32_t> nat(n, untouched);
    std::vector<double> real(3 * n + 3, untouched);
    const flib::matrix_view<double> x(real.data(), 3, natom);
    a.end = support::ending_of([&] {
        switch (who) {
            case reader::natom:
                return flib::qm_file_natom(file, count, a.info);
            case reader::nat:
                return flib::qm_file_nat(file, natom, nat, a.info);
            case reader::coord:
                return flib::qm_file_coord(file, natom, x, a.info);
            case reader::mass:
                return flib::qm_file_mass(file, natom, {real.data(), n}, a.info);
            case reader::force_tdip:
                const flib::matrix_view<double> tdip(real.data() + 3 * n, 3, 1);
                return flib::qm_file_force_tdip(file, natom, 1, x, tdip, a.info);
        }
    });
    switch (who) {
        case reader::natom:
            a.values = {static_cast<double>(count)};
            break;
        case reader::nat:
            a.values.assign(nat.begin(), nat.end());
            break;
        case reader::coord:
            real.resize(3 * n);
            a.values = real;
            break;
        case reader::mass:
            real.resize(n);
            a.values = real;
            break;
        case reader::force_tdip:
            a.values = real;
            break;
    }
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
