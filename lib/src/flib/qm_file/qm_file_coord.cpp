#include "flib/qm_file/qm_file_coord.h"

#include <algorithm>
#include <iterator>

#include "flib/io/free_format.h"
#include "flib/io/number.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/detail/facts_steps.h"
#include "flib/qm_file/detail/keyword.h"
#include "flib/qm_file/detail/oniom_steps.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/qm_file/type_tag.h"
#include "flib/text/line_test.h"
#include "flib/text/string.h"
#include "flib/util/units.h"

namespace flib {
namespace {

using vectors = matrix_view<double>;

/// Reads a table in atomic units, or one that is stored as it stands.
bool read_as_printed(std::int32_t fid, std::int32_t thrown_away, matrix_view<double> x) {
    read_vector_rows(fid, thrown_away, x);
    return true;
}

/// The end of a table in Angstrom.
bool from_angstrom(matrix_view<double> x) {
    for (double& value : x.all()) value /= bohr_radius;
    return true;
}

bool read_angstrom(std::int32_t fid, std::int32_t thrown_away, matrix_view<double> x) {
    read_vector_rows(fid, thrown_away, x);
    return from_angstrom(x);
}

[[noreturn]] void stop_without_coordinates(std::string_view program) {
    throw stop_run{exit_status::complete,
                   {"  Error!", "  Can not find coordinate in " + std::string(program) +
                                    " output file, stop!"}};
}

/// Reads rows of an orientation table. Dummy atoms, whose atomic number is -1, are none.
void read_orientation_rows(std::int32_t fid, matrix_view<double> x) {
    for (std::int32_t i = 1; i <= x.columns(); ++i) {
        line_buffer number;
        do {
            read_items(fid, discard{1}, number, discard{1}, x(1, i), x(2, i), x(3, i));
        } while (number.padded().starts_with('-'));
    }
}

//                          Standard orientation:
//  ---------------------------------------------------------------------
//  Center     Atomic      Atomic             Coordinates (Angstroms)
//  Number     Number       Type             X           Y           Z
//  ---------------------------------------------------------------------
//       1          8           0        0.000000    0.000000    0.118000
bool gaussian_log_coord(std::int32_t fid, vectors x) {
    const bool ifoniom = is_oniom(fid, tag::gaussian_log);
    go_to_end(fid);
    line_buffer line;
    const bool found = ifoniom
                           ? search_word_back_del_space(fid, keyword::gaussian_orientation, line)
                           : search_word_last_del_space(fid, keyword::gaussian_orientation, line);
    if (!found) miss_keyword(keyword::gaussian_orientation);
    if (!go_before_first_number(fid)) return false;
    read_orientation_rows(fid, x);
    return from_angstrom(x);
}

//                                *      Input Coordinates      *
//                                *******************************
//                                  atom  charge
//    1    O       8.00       0.00000000       0.00000000       0.22298768
bool chemshell_coord(std::int32_t fid, vectors x) {
    line_buffer line;
    if (!search_word(fid, 32, 48, keyword::chemshell_input_coordinates, line)) {
        stop_without_coordinates("ChemShell");
    }
    skip_records(fid, 2);
    return read_as_printed(fid, 3, x);
}

//  Dump information in style XYZ to output
//
//  3
//  RHF/USER  ENERGY=-76.01604102
//  O          0.0000000000        0.0000000000        0.1180000000
bool molpro_coord(std::int32_t fid, vectors x) {
    line_buffer line;
    if (!search_word(fid, 2, 40, keyword::molpro_xyz, line)) {
        stop_without_coordinates("Molpro");
    }
    skip_records(fid, 3);
    return read_as_printed(fid, 1, x);
}

//                 atomic coordinates            atom    charge  isotop
//           0.00000000    0.00000000    0.22298768    o      8.000     0
bool turbomole_coord(std::int32_t fid, vectors x) {
    line_buffer line;
    if (!search_word_free(fid, keyword::turbomole_geometry, line))
        stop_without_coordinates("TURBOMOLE");
    return read_as_printed(fid, 0, x);
}

//  Output coordinates in angstroms (scale by  1.889725989 to convert to a.u.)
//
//   No.       Tag          Charge          X              Y              Z
//  ---- ---------------- ---------- -------------- -------------- --------------
//     1 O                    8.0000     0.00000000     0.00000000     0.11800000
bool nwchem_coord(std::int32_t fid, vectors x) {
    line_buffer line;
    require_found(search_word_free_last(fid, keyword::nwchem_coordinates, line), fid,
                  keyword::nwchem_coordinates);
    go_to(fid, keyword::nwchem_column_titles, line);
    skip_records(fid, 1);
    return read_angstrom(fid, 3, x);
}

//  Coordinate
//  ------------------------------------------------------------
//     1    8   15.99491464    0.00000000    0.00000000    0.11800000
bool evc_coord(std::int32_t fid, vectors x) {
    line_buffer line;
    if (!search_word_free(fid, keyword::coordinate, line)) return false;
    skip_records(fid, 1);
    return read_angstrom(fid, 3, x);
}

//  Coordinate  Bohr
//  ------------------------------------------------------------
//     1    8   15.99491464    0.00000000    0.00000000    0.22298768
bool numforce_coord(std::int32_t fid, vectors x) {
    line_buffer line;
    if (!search_word_free(fid, keyword::coordinate, line)) return false;
    bool isbohr = false;
    if (number_of_words(trim_left(line.padded())) == 2) {
        const line_buffer unit = item_of(held_record{fid, line.padded()}, 2);
        isbohr = unit.padded().front() == 'B' || unit.padded().front() == 'b';
    }
    skip_records(fid, 1);
    return isbohr ? read_as_printed(fid, 3, x) : read_angstrom(fid, 3, x);
}

// CARTESIAN COORDINATES (A.U.)
// ----------------------------
//   NO LB      ZA    FRAG     MASS         X           Y           Z
//    0 O     8.0000    0    15.999    0.000000    0.000000    0.222988
bool orca_coord(std::int32_t fid, vectors x) {
    line_buffer line;
    if (!search_word_free(fid, keyword::orca_bohr, line)) return false;
    skip_records(fid, 2);
    return read_as_printed(fid, 5, x);
}

// $atoms
// 3
//  O     15.99900     0.000000000000     0.000000000000     0.222987680000
bool orca_hessian_coord(std::int32_t fid, vectors x) {
    line_buffer line;
    if (!search_word_free(fid, keyword::orca_hessian_atoms, line)) return false;
    skip_records(fid, 1);
    return read_as_printed(fid, 2, x);
}

//              Standard Nuclear Orientation (Angstroms)
//     I     Atom           X                Y                Z
//  ----------------------------------------------------------------
//     1      O       0.0000000000     0.0000000000     0.1180000000
bool qchem_coord(std::int32_t fid, vectors x) {
    line_buffer line;
    if (!search_word_free_last(fid, keyword::qchem_orientation, line)) return false;
    skip_records(fid, 2);
    return read_angstrom(fid, 2, x);
}

//  POSITION                                       TOTAL-FORCE (eV/Angst)
//  -----------------------------------------------------------------------------------
//       0.00000      0.00000      0.11800         0.000000      0.000000     -0.012345
bool vasp_coord(std::int32_t fid, vectors x) {
    line_buffer line;
    if (!search_word_free_last(fid, keyword::vasp_positions, line)) return false;
    skip_records(fid, 1);
    return read_angstrom(fid, 0, x);
}

/// Whether a line is a row of a GAMESS table: a name, a charge and three numbers.
bool is_gamess_row(const line_buffer& line) {
    std::string_view rest = line.trimmed();
    const auto next_item = [&] {
        const std::string_view item = first_token(rest);
        rest.remove_prefix(static_cast<std::size_t>(item.data() + item.size() - rest.data()));
        return item;
    };
    if (next_item().empty()) return false;
    double value = 0;
    for (int i = 0; i < 4; ++i) {
        if (parse_real(next_item(), value) != number_error::none) return false;
    }
    return true;
}

/// Goes from the heading of a GAMESS table to its first row: one that begins with a number or, as
/// nearly all names begin with a letter, the third line. False if the file ends before that.
bool go_to_gamess_rows(std::int32_t fid) {
    constexpr int usual_place = 3;
    const line_test begins_with_number = line_test::first_number(record_length);
    line_buffer line;
    int at = 1;
    for (; read_record(fid, line); ++at) {
        const bool may_be_first = at == usual_place || begins_with_number.accepts(line.padded());
        if (may_be_first && is_gamess_row(line)) {
            step_back(fid);
            return true;
        }
        if (at > usual_place && line.trimmed().empty()) break;
    }
    if (at < usual_place) return false;
    for (; at >= usual_place; --at) step_back(fid);
    return true;
}

/// Reads the rows of a GAMESS table, none of which may be anything else.
void read_gamess_rows(std::int32_t fid, matrix_view<double> x) {
    line_buffer row;
    for (std::int32_t i = 1; i <= x.columns(); ++i) {
        require_record(fid, row);
        if (!is_gamess_row(row)) {
            throw error_at_last_record(fid, "expected an atom: its name, charge and coordinates");
        }
        read_items(held_record{fid, row.padded()}, discard{2}, x(1, i), x(2, i), x(3, i));
    }
}

//  COORDINATES OF ALL ATOMS ARE (ANGS)
//    ATOM   CHARGE       X              Y              Z
//  ------------------------------------------------------------
//  O           8.0   0.0000000000   0.0000000000   0.1180000000
//
// or, without it,
//
//  ATOM      ATOMIC                      COORDINATES (BOHR)
//            CHARGE         X                   Y                   Z
//  O           8.0     0.0000000000        0.0000000000        0.2229876800
bool gamess_coord(std::int32_t fid, vectors x) {
    line_buffer line;
    if (search_word_last_del_space(fid, keyword::gamess_angstrom, line) && go_to_gamess_rows(fid)) {
        read_gamess_rows(fid, x);
        return from_angstrom(x);
    }
    if (!search_word_last_del_space(fid, keyword::gamess_bohr, line)) return false;
    skip_records(fid, 1);
    return read_as_printed(fid, 2, x);
}

// ****** Molecular Geometry (bohr) ******
// O      0.000000    0.000000    0.222988
bool terachem_coord(std::int32_t fid, vectors x) {
    line_buffer line;
    if (!search_word_free_last(fid, keyword::terachem_geometry, line)) return false;
    return read_as_printed(fid, 1, x);
}

// Which of several tables the steps take, and the searches by which they find it.

constexpr bool the_first = false;
constexpr bool the_last = true;

bool anywhere(std::int32_t fid, std::string_view word, text_span line) {
    return search_word_free(fid, word, line);
}

template <std::int32_t i, std::int32_t j>
bool in_columns(std::int32_t fid, std::string_view word, text_span line) {
    return search_word(fid, i, j, word, line);
}

/// What stands two lines above the last orientation table, without the colon at its end.
std::string last_title(std::int32_t fid) {
    line_buffer line;
    if (!search_word_last_del_space(fid, keyword::gaussian_orientation, line)) return {};
    for (int i = 0; i < 3; ++i) step_back(fid);
    require_record(fid, line);
    std::string title(trim(line.padded()));
    if (title.ends_with(':')) title.pop_back();
    return title;
}

/// What stands above the tables that the steps of a row read.
struct heading {
    bool last;  ///< the last of them counts, else the first
    std::string_view word;
    std::string_view instead{};  ///< counts only where no table has the first
    bool (*find_next)(std::int32_t fid, std::string_view word, text_span line) = anywhere;
    /// Of a program that prints its tables in several frames: that of the table read.
    std::string (*frame)(std::int32_t fid) = nullptr;
};

struct coord_row : reader_row<vectors> {
    constexpr coord_row(std::string_view its_tag, const heading& its_heading,
                        bool (*steps)(std::int32_t fid, vectors x))
        : reader_row(its_tag, steps), above(its_heading) {}

    heading above;
};

// True where the table was read. A formatted checkpoint has no row: its coordinates are not read.
constexpr coord_row coord_table[] = {
    {tag::gaussian_log,
     {.last = the_last,
      .word = keyword::gaussian_orientation,
      .find_next = search_word_del_space,
      .frame = last_title},
     gaussian_log_coord},
    {tag::chemshell,
     {.last = the_first,
      .word = keyword::chemshell_input_coordinates,
      .find_next = in_columns<32, 48>},
     chemshell_coord},
    {tag::molpro,
     {.last = the_first, .word = keyword::molpro_xyz, .find_next = in_columns<2, 40>},
     molpro_coord},
    {tag::turbomole, {the_first, keyword::turbomole_geometry}, turbomole_coord},
    {tag::nwchem, {the_last, keyword::nwchem_coordinates}, nwchem_coord},
    {tag::evc, {the_first, keyword::coordinate}, evc_coord},
    {tag::numforce, {the_first, keyword::coordinate}, numforce_coord},
    {tag::orca, {the_first, keyword::orca_bohr}, orca_coord},
    {tag::orca_hessian, {the_first, keyword::orca_hessian_atoms}, orca_hessian_coord},
    {tag::qchem, {the_last, keyword::qchem_orientation}, qchem_coord},
    {tag::vasp, {the_last, keyword::vasp_positions}, vasp_coord},
    {tag::gamess_us,
     {the_last, keyword::gamess_angstrom, keyword::gamess_bohr, search_word_del_space},
     gamess_coord},
    {tag::terachem, {the_last, keyword::terachem_geometry}, terachem_coord},
};

}  // namespace

bool reads_coord(std::string_view tag) {
    return has_row(coord_table, tag);
}

geometry_place place_of_geometry(std::int32_t fid, std::string_view tag) {
    geometry_place place;
    const auto row = std::ranges::find(coord_table, tag, &coord_row::tag);
    if (row == std::end(coord_table)) return place;
    const heading& above = row->above;
    place.last = above.last;
    if (above.frame != nullptr) place.title = above.frame(fid);
    // A step has up to two tables, in different frames: those of one frame are counted.
    const std::string_view word = place.title.empty() ? above.word : place.title;
    line_buffer line;
    for (const std::string_view wanted : {word, above.instead}) {
        if (wanted.empty() || place.tables > 0) continue;
        rewind_unit(fid);
        while (above.find_next(fid, wanted, line)) ++place.tables;
    }
    return place;
}

bool read_last_orientation(std::int32_t fid, std::string_view title, matrix_view<double> x) {
    line_buffer line;
    if (!search_word_free_last(fid, title, line)) return false;
    if (!go_before_first_number(fid)) return false;
    read_orientation_rows(fid, x);
    return true;
}

void qm_file_coord(std::string_view fname, std::int32_t natom, matrix_view<double> x,
                   std::int32_t& info) {
    require_positive("natom", natom);
    info = -1;
    const vectors wanted(x.data(), 3, natom);
    require_room(fname, wanted.all().size(), "coordinates", x.all().size());
    const recognised_file file(fname);
    read_by_row(file, coord_table, wanted, info);
}

}  // namespace flib
