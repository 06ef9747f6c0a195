#include "flib/qm_file/qm_file_natom.h"

#include "flib/io/unit.h"
#include "flib/qm_file/detail/facts_steps.h"
#include "flib/qm_file/detail/keyword.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/qm_file/fchk_label.h"
#include "flib/qm_file/type_tag.h"
#include "flib/text/padded_view.h"
#include "flib/text/string.h"

namespace flib {
namespace {

/// The item after `before` others of `text`, which is (part of) the line read last.
bool take_count(std::int32_t fid, std::string_view text, std::int32_t before, std::int32_t& natom) {
    read_items(held_record{fid, text}, discard{before}, natom);
    return true;
}

/// Counts the lines from the next one on for which `belongs` holds; the end of the file ends them
/// too.
template <class Belongs>
bool count_lines(std::int32_t fid, std::int32_t& natom, Belongs belongs) {
    line_buffer line;
    natom = 0;
    while (read_record(fid, line) && belongs(line)) ++natom;
    return true;
}

/// The same, but the block must be closed before the file ends.
template <class Belongs>
bool count_closed_block(std::int32_t fid, std::int32_t& natom, Belongs belongs) {
    line_buffer line;
    natom = 0;
    for (require_record(fid, line); belongs(line); require_record(fid, line)) ++natom;
    return true;
}

bool not_blank(const line_buffer& line) {
    return !line.trimmed().empty();
}

/// Whether the first token of a line is a number, as search_word_first_number() judges it.
bool begins_with_number(const line_buffer& line) {
    line_buffer token{first_token(line.padded())};
    return is_number(token);
}

// loop_
// _atom_site_label
// _atom_site_occupancy
// O1 0.0000 0.0000 0.1180 1.0
// H1 0.0000 0.7600 -0.4720 1.0
// loop_
bool cif_natom(std::int32_t fid, std::int32_t& natom) {
    line_buffer line;
    // Without the keyword the search has come to the end, and there is nothing to count.
    static_cast<void>(search_word_free(fid, "_atom_site_occupancy", line));
    return count_lines(fid, natom, [](const line_buffer& text) { return !(text == "loop_"); });
}

//                     *******************************
//                     *      Input Coordinates      *
//                     *******************************
//   1    O       0.00000000       0.00000000       0.22298768
bool chemshell_natom(std::int32_t fid, std::int32_t& natom) {
    line_buffer line;
    if (!search_word_free(fid, keyword::chemshell_input_coordinates, line)) return false;
    if (!go_before_first_number(fid)) return false;
    return count_closed_block(fid, natom, begins_with_number);
}

// One count of a line: "NAtoms 3"
bool natoms_line(std::int32_t fid, std::int32_t& natom) {
    line_buffer line;
    go_to_del_space(fid, "NAtoms", line);
    return take_count(fid, line.padded(), 1, natom);
}

// True where the count was found.
constexpr reader_row<std::int32_t&> natom_table[] = {
    //  NAtoms=      3 NQM=        3 NQMF=       0 NMMI=      0 NMMIF=      0
    {tag::gaussian_log,
     [](std::int32_t fid, std::int32_t& natom) {
         line_buffer line;
         return search_word(fid, 2, 8, keyword::gaussian_atom_count, line) &&
                take_count(fid, line.padded(), 1, natom);
     }},
    // Number of atoms                            I                3
    {tag::gaussian_fchk,
     [](std::int32_t fid, std::int32_t& natom) {
         line_buffer line;
         return search_word(fid, 1, 15, fchk_label::atoms, line) &&
                take_count(fid, line.padded(), 4, natom);
     }},
    {tag::chemshell, chemshell_natom},
    {tag::cif, cif_natom},
    {tag::evc, natoms_line},
    {tag::numforce, natoms_line},
    //  TOTAL NUMBER OF ATOMS                        =    3
    {tag::gamess_us,
     [](std::int32_t fid, std::int32_t& natom) {
         line_buffer line;
         go_to(fid, "TOTAL NUMBER OF ATOMS", line);
         return take_count(fid, after_first('=', line.padded()), 0, natom);
     }},
    //  ATOMIC COORDINATES
    //
    //  NR  ATOM    CHARGE       X              Y              Z
    //
    //   1  O       8.00    0.000000000    0.000000000    0.222987680
    //
    {tag::molpro,
     [](std::int32_t fid, std::int32_t& natom) {
         line_buffer line;
         go_to(fid, keyword::atomic_coordinates, line);
         require_found(go_before_first_number(fid), fid, "an atom number");
         return count_lines(fid, natom, not_blank);
     }},
    //                              Geometry "geometry" -> ""
    //   No.       Tag          Charge          X              Y              Z
    //  ---- ---------------- ---------- -------------- -------------- --------------
    //     1 O                    8.0000     0.00000000     0.00000000     0.11800000
    //
    {tag::nwchem,
     [](std::int32_t fid, std::int32_t& natom) {
         line_buffer line;
         go_to(fid, "Geometry", line);
         go_to(fid, keyword::nwchem_column_titles, line);
         skip_records(fid, 1);
         return count_closed_block(fid, natom, not_blank);
     }},
    // CARTESIAN COORDINATES (ANGSTROEM)
    // ---------------------------------
    //   O      0.000000    0.000000    0.118000
    //
    {tag::orca,
     [](std::int32_t fid, std::int32_t& natom) {
         line_buffer line;
         go_to(fid, keyword::orca_angstrom, line);
         skip_records(fid, 1);
         return count_closed_block(fid, natom, not_blank);
     }},
    // $atoms
    // 3
    {tag::orca_hessian,
     [](std::int32_t fid, std::int32_t& natom) {
         line_buffer line;
         go_to(fid, keyword::orca_hessian_atoms, line);
         read_items(fid, natom);
         return true;
     }},
    //      number of atoms/cell      =            3
    {tag::pwout,
     [](std::int32_t fid, std::int32_t& natom) {
         line_buffer line;
         go_to(fid, "number of atoms", line);
         return take_count(fid, line.padded().substr(34 - 1), 0, natom);
     }},
    //  ----------------------------------------------------------------
    //              Standard Nuclear Orientation (Angstroms)
    //     I     Atom           X                Y                Z
    //  ----------------------------------------------------------------
    //     1      O       0.0000000000     0.0000000000     0.1180000000
    //  ----------------------------------------------------------------
    {tag::qchem,
     [](std::int32_t fid, std::int32_t& natom) {
         line_buffer line;
         go_to(fid, keyword::qchem_orientation, line);
         skip_records(fid, 2);
         return count_closed_block(fid, natom, [](const line_buffer& text) {
             return !trim_left(text.padded()).starts_with("--");
         });
     }},
    // Total atoms:            3
    {tag::terachem,
     [](std::int32_t fid, std::int32_t& natom) {
         line_buffer line;
         go_to(fid, "Total atoms:", line);
         return take_count(fid, after_first(':', line.padded()), 0, natom);
     }},
    //               total:     3
    {tag::turbomole,
     [](std::int32_t fid, std::int32_t& natom) {
         line_buffer line;
         go_to_del_space(fid, "total:", line);
         return take_count(fid, line.padded(), 1, natom);
     }},
    //    natoms=           3
    {tag::turbomole_ctrl,
     [](std::int32_t fid, std::int32_t& natom) {
         line_buffer line;
         go_to_del_space(fid, "natoms=", line);
         return take_count(fid, line.padded().substr(11 - 1), 0, natom);
     }},
    //    number of dos      NEDOS =    301   number of ions     NIONS =      3
    {tag::vasp,
     [](std::int32_t fid, std::int32_t& natom) {
         line_buffer line;
         go_to(fid, "number of ions", line);
         return take_count(fid, line.padded().substr(67 - 1), 0, natom);
     }},
};

}  // namespace

bool reads_natom(std::string_view tag) {
    return has_row(natom_table, tag);
}

void qm_file_natom(std::string_view fname, std::int32_t& natom, std::int32_t& info) {
    natom = 0;
    info = -1;
    const recognised_file file(fname);
    read_by_row(file, natom_table, natom, info);
}

}  // namespace flib
