// Putting one question to a file: which reader, how many atoms. The answer is a text.
#pragma once

#include <iomanip>
#include <map>
#include <span>
#include <sstream>
#include <vector>

#include "flib/excited/qm_file_ci_xpy.h"
#include "flib/excited/qm_file_mo_coeff_nbasis_nbsuse.h"
#include "flib/excited/qm_file_nbasis_nbsuse.h"
#include "flib/excited/qm_file_nci.h"
#include "flib/qm_file/qm_file_coord.h"
#include "flib/qm_file/qm_file_force_tdip.h"
#include "flib/qm_file/qm_file_mass.h"
#include "flib/qm_file/qm_file_nat.h"
#include "flib/qm_file/qm_file_natom.h"
#include "flib/qm_file/qm_file_oniom.h"
#include "flib/qm_file/qm_file_type.h"
#include "support/support.h"

/// What the reader `who` answers: "INFO: VALUES", with '-' for what it leaves as it was, or of type
/// "INFO: TAG [VERSION]"; or how it ends the run. The values of force_tdip are the forces and room
/// for the dipoles of three states, of which two are asked for (of dipoles, four); those of layers
/// are the high layer's count, that of all atoms and the positions. Orbitals are three of four
/// functions, amplitudes those of three roots, from two occupied to four virtual orbitals.
/// Coordinates are told in Angstrom, eight digits of them. "short " before the reader: the array
/// handed in has a value or a column less.
inline std::string ask(std::string_view who, const std::string& file, std::int32_t atoms = 3) {
    constexpr std::int32_t untouched = -77;
    const auto n = static_cast<std::size_t>(std::max(atoms, 0));
    const bool is_short = who.starts_with("short ");
    if (is_short) who.remove_prefix(6);
    const std::map<std::string_view, std::size_t> integers = {
        {"natom", 1},      {"nat", n},    {"ifoniom", 1}, {"layer_count", 2},
        {"layers", n + 2}, {"nbasis", 4}, {"nci", 6}};
    const std::map<std::string_view, std::size_t> reals = {{"mass", n}, {"xpy", 48}, {"energy", 3}};
    const std::map<std::string_view, std::size_t> vectors = {
        {"coord", n}, {"force_tdip", n + 3}, {"dipoles", n + 3}, {"mo", 4}};
    const auto room = [&](const auto& sizes) {
        return sizes.contains(who) ? sizes.at(who) - (is_short ? 1 : 0) : 0;
    };
    std::vector<std::int32_t> whole(room(integers), untouched);
    std::vector<double> real(room(reals) + 3 * room(vectors), untouched);
    flib::line_buffer type{"unset"};
    flib::line_buffer version{"unset"};
    std::int32_t info = untouched;
    return support::answer_of(file, [&] {
        const auto columns = static_cast<std::int32_t>(real.size() / 3);
        const flib::matrix_view<double> x(real.data(), 3, columns);
        if (who == "type") flib::qm_file_type(file, type, version, info);
        if (who == "natom") flib::qm_file_natom(file, whole[0], info);
        if (who == "nat") flib::qm_file_nat(file, atoms, whole, info);
        if (who == "coord") flib::qm_file_coord(file, atoms, x, info);
        if (who == "mass") flib::qm_file_mass(file, atoms, real, info);
        if (who == "force_tdip" || who == "dipoles") {
            const flib::matrix_view<double> tdip(real.data() + real.size() - 9, 3, 3);
            flib::qm_file_force_tdip(file, atoms, who == "dipoles" ? 4 : 2,
                                     {real.data(), 3, columns - 3}, tdip, info);
        }
        if (who == "ifoniom") {
            bool named = true;
            flib::qm_file_ifoniom(file, named, info);
            whole[0] = named;
        }
        if (who.starts_with("layer")) {
            flib::qm_file_natom_oniom_qm(file, whole[0], whole[1], info);
        }
        if (who == "layers") {
            flib::qm_file_oniom_index(file, atoms, whole[1], std::span(whole).subspan(2), info);
        }
        if (who == "nbasis") {
            flib::qm_file_nbasis_nbsuse(file, whole[0], whole[1], whole[2], whole[3], info);
        }
        if (who == "nci") {
            flib::qm_file_nci(file, whole[0], whole[1], whole[2], whole[3], whole[4], whole[5],
                              info);
        }
        if (who == "mo") {
            flib::qm_file_mo_coeff_nbasis_nbsuse(file, 4, 3, x, info);
        }
        if (who == "xpy") flib::qm_file_ci_xpy(file, 2, 4, 3, real, info);
        if (who == "energy") flib::qm_file_ci_energy(file, 3, real, info);
        std::ostringstream answer;
        const bool places = who == "coord";
        for (double& value : real) value *= places && value != untouched ? 0.529177249 : 1;
        answer << std::setprecision(places ? 8 : 10) << info << ':';
        if (who == "type") answer << ' ' << type.trimmed() << " [" << version.trimmed() << ']';
        real.insert(real.end(), whole.begin(), whole.end());
        for (const double value : real) {
            value == untouched ? answer << " -" : answer << ' ' << value;
        }
        return answer.str();
    });
}
