// Putting one question to a file: which reader, how many atoms. The answer is a text.
#pragma once

#include <algorithm>
#include <iomanip>
#include <span>
#include <sstream>
#include <vector>

#include "flib/qm_file/qm_file_coord.h"
#include "flib/qm_file/qm_file_force_tdip.h"
#include "flib/qm_file/qm_file_mass.h"
#include "flib/qm_file/qm_file_nat.h"
#include "flib/qm_file/qm_file_natom.h"
#include "flib/qm_file/qm_file_oniom.h"
#include "flib/qm_file/qm_file_type.h"
#include "support/support.h"

/// What the reader `who` (natom, nat, coord, mass, force_tdip, ifoniom, layer_count or layers)
/// answers: "INFO: VALUES", with '-' for what the reader leaves as it was; or how it ends the run.
/// The values of force_tdip are the forces and room for the dipoles of three states, of which two
/// are asked for; those of layers are the high layer's count, that of all atoms and the positions.
inline std::string ask(std::string_view who, const std::string& file, std::int32_t atoms = 3,
                       int digits = 10) {
    constexpr std::int32_t untouched = -77;
    const auto n = static_cast<std::size_t>(std::max(atoms, 0));
    std::int32_t info = untouched;
    std::vector<std::int32_t> whole(who == "nat"           ? n
                                    : who == "layers"      ? n + 2
                                    : who == "layer_count" ? 2
                                                           : 1,
                                    untouched);
    std::vector<double> real(who == "mass" ? n : who == "coord" ? 3 * n : 3 * n + 9, untouched);
    const flib::matrix_view<double> x(real.data(), 3, atoms);
    return support::answer_of(file, [&] {
        if (who == "natom") flib::qm_file_natom(file, whole[0], info);
        if (who == "nat") flib::qm_file_nat(file, atoms, whole, info);
        if (who == "coord") flib::qm_file_coord(file, atoms, x, info);
        if (who == "mass") flib::qm_file_mass(file, atoms, real, info);
        if (who == "force_tdip") {
            flib::qm_file_force_tdip(file, atoms, 2, x, {real.data() + 3 * n, 3, 3}, info);
        }
        if (who == "ifoniom") {
            bool named = true;
            flib::qm_file_ifoniom(file, named, info);
            whole[0] = named;
        }
        if (who == "layer_count") {
            flib::qm_file_natom_oniom_qm(file, whole[0], whole[1], info);
        }
        if (who == "layers") {
            flib::qm_file_natom_oniom_qm(file, whole[0], whole[1], info);
            flib::qm_file_oniom_index(file, atoms, whole[1], std::span(whole).subspan(2), info);
        }
        const bool is_whole = who != "coord" && who != "mass" && who != "force_tdip";
        if (is_whole) real.assign(whole.begin(), whole.end());
        std::ostringstream answer;
        answer << std::setprecision(digits) << info << ':';
        for (const double value : real) {
            value == untouched ? answer << " -" : answer << ' ' << value;
        }
        return answer.str();
    });
}

/// What qm_file_type() tells: "TAG, VERSION, INFO".
inline std::string type_of(const std::string& file) {
    flib::line_buffer type{"unset"};
    flib::line_buffer version{"unset"};
    std::int32_t info = 0;
    return support::answer_of(file, [&] {
        flib::qm_file_type(file, type, version, info);
        return std::string(type.trimmed()) + ", " + std::string(version.trimmed()) + ", " +
               std::to_string(info);
    });
}
