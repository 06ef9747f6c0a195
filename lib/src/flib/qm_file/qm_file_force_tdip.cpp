#include "flib/qm_file/qm_file_force_tdip.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "flib/io/detail/record_file.h"
#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/detail/facts_steps.h"
#include "flib/qm_file/detail/oniom_steps.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/qm_file/qm_file_oniom.h"
#include "flib/qm_file/qm_file_type.h"
#include "flib/qm_file/type_tag.h"
#include "flib/text/string.h"

namespace flib {
namespace {

/// Where the results go; `force` has a column per atom asked for, `tdip` one per state.
struct gradient {
    matrix_view<double> force;
    matrix_view<double> tdip;
};

constexpr std::string_view forces_header =
    "Center     Atomic                   Forces (Hartrees/Bohr)";
constexpr std::string_view oniom_forces_header =
    "Center     Atomic             Integrated Forces (Hartrees/Bohr)";
constexpr std::string_view dipoles_header =
    "Ground to excited state transition electric dipole moments (Au):";

/// Looks upwards for a header, which fills the columns from 2 on exactly.
bool find_up(std::int32_t fid, std::string_view header) {
    line_buffer line;
    const auto last = static_cast<std::int32_t>(header.size()) + 1;
    return search_word_back(fid, 2, last, header, line);
}

void go_up_to(std::int32_t fid, std::string_view header) {
    if (!find_up(fid, header)) miss_keyword(header);
}

/// Reads the table whose header was found.
void read_rows(std::int32_t fid, matrix_view<double> force) {
    go_before_first_number(fid);
    read_vector_rows(fid, 2, force);
}

/// The positions of an ONIOM job's `natom` high-layer atoms among all `nqmmm`.
std::vector<std::int32_t> high_layer_index(std::int32_t fid, std::int32_t natom,
                                           std::int32_t& nqmmm) {
    layer_counts counts;
    rewind_unit(fid);
    count_layers(fid, counts);
    nqmmm = counts.nqmmm;
    std::vector<std::int32_t> idx(static_cast<std::size_t>(counts.nqm));
    rewind_unit(fid);
    read_layer_index(fid, nqmmm, idx);
    if (natom != counts.nqm) throw stop_run{exit_status::stopped, {" natom != nqm, stop!"}};
    for (const std::int32_t atom : idx) require_in_system(input_of(fid).path(), atom, nqmmm);
    return idx;
}

/// Whether the table whose header was found has a row for each of `natom` atoms and no other: a
/// plain table of an ONIOM job may be that of the model system.
bool has_row_for_each(std::int32_t fid, std::int32_t natom) {
    if (!go_before_first_number(fid)) return false;
    line_buffer row;
    for (std::int32_t i = 1; i <= natom; ++i) {
        if (!read_record(fid, row) || first_token(row.padded()) != std::to_string(i)) return false;
    }
    line_buffer after;
    return natom > 0 && read_record(fid, after) && trim_left(after.trimmed()).starts_with("--");
}

/// Goes to the end of an ONIOM job's log and from there up to the last forces on all `nqmmm` atoms:
/// the integrated ones or, if there are none (Gaussian 09), those of the last plain table.
bool find_last_oniom_forces(std::int32_t fid, std::int32_t nqmmm) {
    go_to_end(fid);
    if (find_up(fid, oniom_forces_header)) return true;
    go_to_end(fid);
    if (!find_up(fid, forces_header) || !has_row_for_each(fid, nqmmm)) return false;
    return find_up(fid, forces_header);
}

/// Reads the forces on all `nqmmm` atoms and keeps those on the atoms `idx`.
void read_oniom_forces(std::int32_t fid, std::int32_t nqmmm, std::span<const std::int32_t> idx,
                       matrix_view<double> force) {
    matrix<double> force_qmmm(3, nqmmm, "the forces of all layers");
    if (!find_last_oniom_forces(fid, nqmmm)) miss_keyword(oniom_forces_header);
    read_rows(fid, force_qmmm.view());
    std::int32_t k = 0;
    for (const std::int32_t atom : idx) {
        std::ranges::copy(force_qmmm.view().column(atom), force.column(++k).begin());
    }
}

/// Reads the last forces of a log, from its start.
void read_log_forces(std::int32_t fid, matrix_view<double> force) {
    if (is_oniom(fid, tag::gaussian_log)) {
        std::int32_t nqmmm = 0;
        const std::vector<std::int32_t> idx = high_layer_index(fid, force.columns(), nqmmm);
        read_oniom_forces(fid, nqmmm, idx, force);
    } else {
        go_to_end(fid);
        go_up_to(fid, forces_header);
        read_rows(fid, force);
    }
}

/// Goes to the end of a log and from there up to its last forces, if there are some.
bool find_last_forces(std::int32_t fid) {
    rewind_unit(fid);
    if (is_oniom(fid, tag::gaussian_log)) {
        layer_counts counts;
        rewind_unit(fid);
        count_atoms(fid, counts);
        return find_last_oniom_forces(fid, counts.nqmmm);
    }
    go_to_end(fid);
    return find_up(fid, forces_header);
}

//  Ground to excited state transition electric dipole moments (Au):
//        state          X           Y           Z        Dip. S.      Osc.
//          1        -0.5354      0.0000      0.0000      0.2867      0.0655
//
//  Center     Atomic                   Forces (Hartrees/Bohr)
//  Number     Number              X              Y              Z
//  -------------------------------------------------------------------
//       1        8           0.000000000    0.000000000   -0.012345678
void gaussian_log_force_tdip(std::int32_t fid, gradient out) {
    read_log_forces(fid, out.force);
    go_up_to(fid, dipoles_header);
    skip_records(fid, 1);
    read_vector_rows(fid, 1, out.tdip);
}

// Other programs' gradients are not read.
constexpr reader_row<gradient> force_tdip_table[] = {
    {tag::gaussian_log, gaussian_log_force_tdip},
};

}  // namespace

bool read_last_forces(std::int32_t fid, matrix_view<double> force) {
    if (!find_last_forces(fid)) return false;
    rewind_unit(fid);
    read_log_forces(fid, force);
    return true;
}

std::vector<std::array<double, 3>> read_last_dipoles(std::int32_t fid) {
    std::vector<std::array<double, 3>> dipoles;
    if (!find_last_forces(fid)) go_to_end(fid);
    if (!find_up(fid, dipoles_header)) return dipoles;
    skip_records(fid, 1);
    line_buffer line;
    // As many rows as there are: more roots may have been sought than are printed.
    while (read_record(fid, line)) {
        line_buffer token{first_token(line.padded())};
        if (!is_number(token)) break;
        auto& [x, y, z] = dipoles.emplace_back();
        read_items(held_record{fid, line.padded()}, discard{1}, x, y, z);
    }
    return dipoles;
}

void qm_file_force_tdip(std::string_view fname, std::int32_t natom, std::int32_t ns,
                        matrix_view<double> force, matrix_view<double> tdip, std::int32_t& info) {
    std::ranges::fill(force.all(), 0.0);
    info = -1;
    const gradient wanted{{force.data(), 3, natom}, {tdip.data(), 3, ns}};
    require_room(fname, wanted.force.all().size(), "forces", force.all().size());
    require_room(fname, wanted.tdip.all().size(), "transition dipoles", tdip.all().size());
    // A file that cannot be opened is taken for one of another kind.
    if (type_tag_of(fname).trimmed().empty()) return;
    const recognised_file file(fname);
    read_by_row(file, force_tdip_table, wanted, info);
}

}  // namespace flib
