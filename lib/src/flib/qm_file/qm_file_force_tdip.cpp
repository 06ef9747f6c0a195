#include "flib/qm_file/qm_file_force_tdip.h"

#include <algorithm>
#include <span>
#include <vector>

#include "flib/io/detail/record_file.h"
#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/detail/oniom_steps.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/qm_file/qm_file_oniom.h"
#include "flib/qm_file/qm_file_type.h"
#include "flib/qm_file/type_tag.h"

namespace flib {
namespace {

/// Where the results go; `force` has a column per atom asked for, `tdip` one per state.
struct gradient {
    matrix_view<double> force;
    matrix_view<double> tdip;
};

/// A header that fills the columns from 2 on exactly.
void go_up_to(std::int32_t fid, std::string_view header) {
    line_buffer line;
    const auto last = static_cast<std::int32_t>(header.size()) + 1;
    if (!search_word_back(fid, 2, last, header, line)) miss_keyword(header);
}

/// Reads the table below `header`, the last of the file.
void read_forces(std::int32_t fid, std::string_view header, matrix_view<double> force) {
    go_up_to(fid, header);
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

/// Reads the integrated forces on all `nqmmm` atoms and keeps those on the atoms `idx`.
void read_oniom_forces(std::int32_t fid, std::int32_t nqmmm, std::span<const std::int32_t> idx,
                       matrix_view<double> force) {
    matrix<double> force_qmmm(3, nqmmm, "the forces of all layers");
    read_forces(fid, "Center     Atomic             Integrated Forces (Hartrees/Bohr)",
                force_qmmm.view());
    std::int32_t k = 0;
    for (const std::int32_t atom : idx) {
        std::ranges::copy(force_qmmm.view().column(atom), force.column(++k).begin());
    }
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
    const bool ifoniom = names_oniom(fid);
    std::vector<std::int32_t> idx;
    std::int32_t nqmmm = 0;
    if (ifoniom) idx = high_layer_index(fid, out.force.columns(), nqmmm);
    go_to_end(fid);
    if (ifoniom) {
        read_oniom_forces(fid, nqmmm, idx, out.force);
    } else {
        read_forces(fid, "Center     Atomic                   Forces (Hartrees/Bohr)", out.force);
    }
    go_up_to(fid, "Ground to excited state transition electric dipole moments (Au):");
    skip_records(fid, 1);
    read_vector_rows(fid, 1, out.tdip);
}

// Other programs' gradients are not read.
constexpr reader_row<gradient> force_tdip_table[] = {
    {tag::gaussian_log, gaussian_log_force_tdip},
};

}  // namespace

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
