#include "flib/qm_file/qm_file_mass.h"

#include <algorithm>

#include "flib/io/free_format.h"
#include "flib/io/unit.h"
#include "flib/qm_file/detail/facts_steps.h"
#include "flib/qm_file/detail/keyword.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/qm_file/fchk_label.h"
#include "flib/qm_file/type_tag.h"
#include "flib/util/elements.h"

namespace flib {
namespace {

using masses = std::span<double>;

/// Reads symbols after `thrown_away` tokens and takes their elements' masses.
void symbols_then_table(std::int32_t fid, std::int32_t thrown_away, std::span<double> mass,
                        std::int32_t then_thrown_away = 0) {
    const auto natom = static_cast<std::int32_t>(mass.size());
    const symbol_fields symbols = read_symbol_rows(fid, natom, thrown_away, then_thrown_away);
    std::vector<std::int32_t> nat(mass.size());
    symbol_to_nat(natom, symbols, nat);
    nat_to_mass(natom, nat, mass);
}

//  AtmWgt=  15.9949146   1.0078250   1.0078250
void printed_weights(std::int32_t fid, masses mass) {
    constexpr std::size_t block = 10;
    line_buffer line;
    for (std::size_t ib = 0; ib < mass.size(); ib += block) {
        go_to(fid, "AtmWgt", line);
        const masses of_line = mass.subspan(ib, std::min(block, mass.size() - ib));
        read_items(held_record{fid, line.padded()}, discard{1}, of_line);
    }
}

//  - Thermochemistry -
//  -------------------
//  Temperature   298.150 Kelvin.  Pressure   1.00000 Atm.
//  Atom     1 has atomic number  8 and mass  15.99491
//
// or, without that section, the elements of the first orientation table.
void gaussian_log_mass(std::int32_t fid, masses mass) {
    line_buffer line;
    if (search_word_free(fid, "AtmWgt", line)) {
        step_back(fid);
        printed_weights(fid, mass);
        return;
    }
    rewind_unit(fid);
    if (search_word_free(fid, "Thermochemistry", line)) {
        if (!search_word_free(fid, "Atom", line)) return;
        step_back(fid);
        read_real_rows(fid, 8, mass);
        return;
    }
    rewind_unit(fid);
    if (!search_word_del_space(fid, "Center Atomic Atomic Coordinates", line)) return;
    go_before_first_number(fid);
    std::vector<std::int32_t> nat(mass.size());
    read_orientation_numbers(fid, nat);
    nat_to_mass(static_cast<std::int32_t>(nat.size()), nat, mass);
}

//               | Atomic coordinate, charge and isotop information |
//               +--------------------------------------------------+
//                 atomic coordinates            atom    charge  isotop
//           0.00000000    0.00000000    0.22298768    o      8.000     0
void turbomole_symbols(std::int32_t fid, masses mass) {
    line_buffer line;
    rewind_unit(fid);
    if (!search_word(fid, 17, 64, keyword::turbomole_coordinates, line)) return;
    skip_records(fid, 1);
    require_found(search_word_first_letter(fid, line), fid, "column titles");
    symbols_then_table(fid, 3, mass);
}

/// Rows of number, symbol and mass below a header that has been found.
void weights_after_titles(std::int32_t fid, masses mass) {
    if (go_before_first_number(fid)) read_real_rows(fid, 2, mass);
}

//           atomic weights
//    1   O     15.99491464
void chemshell_mass(std::int32_t fid, masses mass) {
    line_buffer line;
    if (search_word(fid, 11, 24, "atomic weights", line)) {
        weights_after_titles(fid, mass);
    } else {
        turbomole_symbols(fid, mass);
    }
}

//               ATOMIC WEIGHTS
//    1   o     15.99491
void turbomole_mass(std::int32_t fid, masses mass) {
    line_buffer line;
    if (search_word_free(fid, keyword::atomic_weights, line)) {
        weights_after_titles(fid, mass);
    } else {
        turbomole_symbols(fid, mass);
    }
}

//  Atomic Masses
//   1-  3   15.994914    1.007825    1.007825
//
// or, without it, the elements of ATOMIC COORDINATES.
void molpro_mass(std::int32_t fid, masses mass) {
    line_buffer line;
    if (search_word(fid, 2, 14, "Atomic Masses", line)) {
        // All of them stand on one line; the read does not go on to the next.
        require_record(fid, line);
        read_items(held_record{fid, line.padded()}, discard{2}, mass);
        return;
    }
    rewind_unit(fid);
    if (!search_word(fid, 2, 19, keyword::atomic_coordinates, line)) return;
    skip_records(fid, 3);
    symbols_then_table(fid, 1, mass);
}

//  Coordinate
//  ------------------------------------------------------------
//     1    8   15.99491464    0.00000000    0.00000000    0.11800000
void workflow_mass(std::int32_t fid, masses mass) {
    line_buffer line;
    if (!search_word_free(fid, keyword::coordinate, line)) return;
    skip_records(fid, 1);
    read_real_rows(fid, 2, mass);
}

//  Atom    1 Element O  Has Mass   15.99491
//  Atom    2 Element H  Has Mass    1.00783
void qchem_mass(std::int32_t fid, masses mass) {
    line_buffer line;
    if (!search_word_del_space(fid, "Atom    1 Element", line)) return;
    read_items(held_record{fid, line.padded()}, discard{6}, mass.front());
    for (double& value : mass.subspan(1)) {
        require_record(fid, line);
        read_items(held_record{fid, line.padded()}, discard{6}, value);
    }
}

// Real atomic weights                        R   N=           3
//   1.59949146E+01  1.00782504E+00  1.00782504E+00
void gaussian_fchk_mass(std::int32_t fid, masses mass) {
    line_buffer line;
    if (search_word_free(fid, fchk_label::masses, line)) read_items(fid, mass);
}

//  Output coordinates in angstroms (scale by  1.889725989 to convert to a.u.)
//
//   No.       Tag          Charge          X              Y              Z
//  ---- ---------------- ---------- -------------- -------------- --------------
//     1 O                    8.0000     0.00000000     0.00000000     0.11800000
bool nwchem_mass(std::int32_t fid, masses mass) {
    line_buffer line;
    if (!search_word_free(fid, keyword::nwchem_coordinates, line)) return false;
    if (!search_word_free(fid, keyword::nwchem_column_titles, line)) return false;
    skip_records(fid, 1);
    symbols_then_table(fid, 1, mass);
    return true;
}

// $atoms
// 3
//  O     15.99900     0.000000000000     0.000000000000     0.222987680000
void orca_hessian_mass(std::int32_t fid, masses mass) {
    line_buffer line;
    if (!search_word_free(fid, keyword::orca_hessian_atoms, line)) return;
    skip_records(fid, 1);
    read_real_rows(fid, 1, mass);
}

//               ATOMIC WEIGHTS (AMU)
//
//     1     O                15.99491
void gamess_mass(std::int32_t fid, masses mass) {
    line_buffer line;
    if (!search_word_free(fid, keyword::atomic_weights, line)) return;
    skip_records(fid, 1);
    read_real_rows(fid, 2, mass);
}

// ****** Molecular Geometry (bohr) ******
// O      0.000000    0.000000    0.222988
void terachem_mass(std::int32_t fid, masses mass) {
    line_buffer line;
    if (!search_word_free(fid, keyword::terachem_geometry, line)) return;
    symbols_then_table(fid, 0, mass, 3);
}

constexpr reader_row<masses> mass_table[] = {
    {tag::gaussian_log, gaussian_log_mass},
    {tag::chemshell, chemshell_mass},
    {tag::turbomole, turbomole_mass},
    {tag::gaussian_fchk, gaussian_fchk_mass},
    {tag::molpro, molpro_mass},
    {tag::nwchem, nwchem_mass},
    {tag::evc, workflow_mass},
    {tag::numforce, workflow_mass},
    {tag::orca_hessian, orca_hessian_mass},
    {tag::qchem, qchem_mass},
    {tag::gamess_us, gamess_mass},
    {tag::terachem, terachem_mass},
};

}  // namespace

bool reads_mass(std::string_view tag) {
    return has_row(mass_table, tag);
}

void qm_file_mass(std::string_view fname, std::int32_t natom, std::span<double> mass,
                  std::int32_t& info) {
    require_positive("natom", natom);
    info = -1;
    const auto count = static_cast<std::size_t>(natom);
    require_room(fname, count, "masses", mass.size());
    const recognised_file file(fname);
    read_by_row(file, mass_table, mass.first(count), info);
}

}  // namespace flib
