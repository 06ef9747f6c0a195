#include "sgn/states/state_file.h"

#include <algorithm>
#include <vector>

#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/util/elements.h"
#include "sgn/job/job_files.h"
#include "sgn/result/sgn_file.h"

namespace sgn {
namespace {

/// The sizes are those of the reference, as in every result file of a set.
void write_state(const reference_set& from, const job& now, const reference_state& state,
                 std::int32_t sign, double element_value, const std::array<double, 3>& dipole) {
    if (!now.no_forces.empty()) throw flib::io_error(now.files.log, 0, now.no_forces);
    const job_counts& counts = from.reference.counts;
    std::vector<sgn::report_symbol> symbol(now.atoms.nat.size());
    flib::nat_to_symbol(now.atoms.natom, now.atoms.nat.all(), symbol);
    std::int32_t fid = 0;
    flib::get_free_fid(fid);
    flib::open_replace(fid, state_file_name(now.files.name, state.state));
    sgn::write_sgn_parameters(
        fid, {sign, counts.natom, counts.nbasis, counts.mi, counts.ma, counts.mci, counts.nfc,
              counts.nfv, state.element, element_value});
    sgn::write_sgn_body(fid, {symbol, now.atoms.nat.all(), now.atoms.mass.all(), now.atoms.x.view(),
                              dipole, now.force.view()});
    flib::commit_unit(fid);
}

}  // namespace

std::string state_file_name(const std::string& name, std::int32_t state) {
    return name + "_s" + std::to_string(state) + std::string(suffix::result);
}

void write_reference_state(const reference_set& from, const reference_state& state) {
    write_state(from, from.reference, state, 1, state.element_value, state.values.dipole);
}

void write_followed_state(const reference_set& from, const job& now, const followed_state& state) {
    const auto its_reference = std::ranges::find(from.states, state.state, &reference_state::state);
    write_state(from, now, *its_reference, state.sign, state.element_value,
                state.values ? state.values->dipole : std::array<double, 3>{});
}

}  // namespace sgn
