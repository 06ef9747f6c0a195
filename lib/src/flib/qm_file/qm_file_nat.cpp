#include "flib/qm_file/qm_file_nat.h"

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

using numbers = std::span<std::int32_t>;

/// Reads symbols after `thrown_away` tokens and looks their numbers up.
void read_symbols(std::int32_t fid, std::int32_t thrown_away, std::span<std::int32_t> nat,
                  std::int32_t then_thrown_away = 0) {
    const auto natom = static_cast<std::int32_t>(nat.size());
    symbol_to_nat(natom, read_symbol_rows(fid, natom, thrown_away, then_thrown_away), nat);
}

/// Reads the symbols of the first table that has `header`, after `skipped` lines more.
void read_symbols_below(std::int32_t fid, std::string_view header, std::int32_t skipped,
                        std::int32_t thrown_away, std::span<std::int32_t> nat) {
    line_buffer line;
    go_to(fid, header, line);
    skip_records(fid, skipped);
    read_symbols(fid, thrown_away, nat);
}

/// Ends the run at the first atomic number that no element has.
void check_range(std::span<const std::int32_t> nat) {
    std::int32_t i = 0;
    for (const std::int32_t number : nat) require_element(++i, number);
}

//                          Input orientation:
//  ---------------------------------------------------------------------
//  Center     Atomic      Atomic             Coordinates (Angstroms)
//  Number     Number       Type             X           Y           Z
//  ---------------------------------------------------------------------
//       1          8           0        0.000000    0.000000    0.118000
//
// or, without that table:
//
//  Mulliken charges:
//                1
//      1  O   -0.873000
void gaussian_log_nat(std::int32_t fid, numbers nat) {
    line_buffer line;
    if (search_word_del_space(fid, "Center Atomic Atomic Coordinates", line)) {
        go_before_first_number(fid);
        read_orientation_numbers(fid, nat);
        return;
    }
    rewind_unit(fid);
    go_to_del_space(fid, "Mulliken charges", line);
    skip_records(fid, 1);
    read_symbols(fid, 1, nat);
}

//                     *      Input Coordinates      *
//   1    O       0.00000000       0.00000000       0.22298768
void chemshell_nat(std::int32_t fid, numbers nat) {
    line_buffer line;
    if (search_word_free(fid, keyword::chemshell_input_coordinates, line) &&
        go_before_first_number(fid)) {
        read_symbols(fid, 1, nat);
    }
    check_range(nat);
}

//  Coordinate
//  ------------------------------------------------------------
//     1    8   15.99491464    0.00000000    0.00000000    0.11800000
template <std::int32_t i, std::int32_t j>
void workflow_nat(std::int32_t fid, numbers nat) {
    line_buffer line;
    go_to_columns(fid, i, j, keyword::coordinate, line);
    skip_records(fid, 1);
    read_number_rows(fid, 1, nat);
    check_range(nat);
}

constexpr reader_row<numbers> nat_table[] = {
    {tag::gaussian_log, gaussian_log_nat},
    {tag::chemshell, chemshell_nat},
    // Atomic numbers                             I   N=           3
    //            8           1           1
    {tag::gaussian_fchk,
     [](std::int32_t fid, numbers nat) {
         line_buffer line;
         if (search_word_del_space(fid, fchk_label::numbers, line)) read_items(fid, nat);
     }},
    //  ATOMIC COORDINATES
    //
    //  NR  ATOM    CHARGE       X              Y              Z
    //
    //   1  O       8.00    0.000000000    0.000000000    0.222987680
    {tag::molpro,
     [](std::int32_t fid, numbers nat) {
         line_buffer line;
         go_to_columns(fid, 2, 19, keyword::atomic_coordinates, line);
         skip_records(fid, 3);
         read_symbols(fid, 1, nat);
     }},
    //               | Atomic coordinate, charge and isotop information |
    //               +--------------------------------------------------+
    //                 atomic coordinates            atom    charge  isotop
    //           0.00000000    0.00000000    0.22298768    o      8.000     0
    {tag::turbomole,
     [](std::int32_t fid, numbers nat) {
         line_buffer line;
         go_to_columns(fid, 17, 64, keyword::turbomole_coordinates, line);
         skip_records(fid, 1);
         // The column titles.
         require_found(search_word_first_letter(fid, line), fid, "column titles");
         read_symbols(fid, 3, nat);
     }},
    //  Output coordinates in angstroms (scale by  1.889725989 to convert to a.u.)
    //
    //   No.       Tag          Charge          X              Y              Z
    //  ---- ---------------- ---------- -------------- -------------- --------------
    //     1 O                    8.0000     0.00000000     0.00000000     0.11800000
    {tag::nwchem,
     [](std::int32_t fid, numbers nat) {
         line_buffer line;
         go_to(fid, keyword::nwchem_coordinates, line);
         go_to(fid, keyword::nwchem_column_titles, line);
         skip_records(fid, 1);
         read_symbols(fid, 1, nat);
         return true;
     }},
    {tag::evc, workflow_nat<4, 13>},
    {tag::numforce, workflow_nat<2, 11>},
    // CARTESIAN COORDINATES (ANGSTROEM)
    // ---------------------------------
    //   O      0.000000    0.000000    0.118000
    {tag::orca, [](std::int32_t fid,
                   numbers nat) { read_symbols_below(fid, keyword::orca_angstrom, 1, 0, nat); }},
    // $atoms
    // 3
    //  O     15.99900     0.000000000000     0.000000000000     0.222987680000
    {tag::orca_hessian,
     [](std::int32_t fid, numbers nat) {
         read_symbols_below(fid, keyword::orca_hessian_atoms, 1, 0, nat);
     }},
    //              Standard Nuclear Orientation (Angstroms)
    //     I     Atom           X                Y                Z
    //  ----------------------------------------------------------------
    //     1      O       0.0000000000     0.0000000000     0.1180000000
    {tag::qchem,
     [](std::int32_t fid, numbers nat) {
         read_symbols_below(fid, keyword::qchem_orientation, 2, 1, nat);
     }},
    //               ATOMIC WEIGHTS (AMU)
    //
    //     1     O                15.99491
    {tag::gamess_us,
     [](std::int32_t fid, numbers nat) {
         read_symbols_below(fid, keyword::atomic_weights, 1, 1, nat);
     }},
    // ****** Molecular Geometry (bohr) ******
    // O      0.000000    0.000000    0.222988
    {tag::terachem,
     [](std::int32_t fid, numbers nat) {
         line_buffer line;
         go_to(fid, keyword::terachem_geometry, line);
         read_symbols(fid, 0, nat, 3);
     }},
};

}  // namespace

bool reads_nat(std::string_view tag) {
    return has_row(nat_table, tag);
}

void qm_file_nat(std::string_view fname, std::int32_t natom, std::span<std::int32_t> nat,
                 std::int32_t& info) {
    require_positive("natom", natom);
    info = -1;
    const auto count = static_cast<std::size_t>(natom);
    require_room(fname, count, "atomic numbers", nat.size());
    const recognised_file file(fname);
    read_by_row(file, nat_table, nat.first(count), info);
}

}  // namespace flib
