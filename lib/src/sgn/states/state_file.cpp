#include "sgn/states/state_file.h"

#include <algorithm>
#include <vector>

#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/util/elements.h"
#include "flib/util/matrix.h"
#include "flib/util/units.h"
#include "sgn/job/job_files.h"
#include "sgn/result/sgn_file.h"
#include "sgn/set/set_moments.h"

namespace sgn {
namespace {

std::vector<vec3> columns_of(const flib::matrix<double>& of, double unit) {
    std::vector<vec3> columns;
    for (std::int32_t i = 1; i <= of.view().columns(); ++i) {
        columns.push_back({of(1, i) * unit, of(2, i) * unit, of(3, i) * unit});
    }
    return columns;
}

/// The sizes are those of the reference, as in every result file of a set.
result_file values_of_state(const reference_set& from, const job& now, const reference_state& state,
                            std::int32_t root, std::int32_t sign, double element_value,
                            const std::array<double, 3>& dipole,
                            const std::optional<full_digits>& full) {
    const job_counts& counts = from.reference.counts;
    result_file made{now.files.checkpoint, {}};
    made.contents.parameters = {sign,          counts.natom, counts.nbasis, counts.mi,
                                counts.ma,     counts.mci,   counts.nfc,    counts.nfv,
                                state.element, element_value};
    made.contents.symbol.resize(now.atoms.nat.size());
    flib::nat_to_symbol(now.atoms.natom, now.atoms.nat.all(), made.contents.symbol);
    made.contents.nat.assign(now.atoms.nat.all().begin(), now.atoms.nat.all().end());
    made.contents.mass.assign(now.atoms.mass.all().begin(), now.atoms.mass.all().end());
    made.contents.x = coordinates_of(now);
    made.contents.corrected_tdip = dipole;
    made.contents.frc = columns_of(now.force, 1);
    // Zeros of a lost state, which has no dipole either.
    if (now.moments) made.full = full.value_or(full_digits{});
    if (root > 0) {
        made.excited = {root, now.forces_of,
                        now.moments ? now.moments->excitation_energy(root) : std::nullopt};
    }
    return made;
}

}  // namespace

std::vector<vec3> coordinates_of(const job& of) {
    return columns_of(of.atoms.x, flib::bohr_radius);
}

std::vector<vec3> take_full_coordinates(job& of) {
    if (!of.moments) return {};
    try {
        return full_coordinates(of.files.checkpoint, coordinates_of(of), of.files.log);
    } catch (const flib::ending& ending) {
        of.moments.reset();
        of.no_moments = ending.what();
        return {};
    }
}

std::string state_file_name(const std::string& name, std::int32_t state) {
    return name + "_s" + std::to_string(state) + std::string(suffix::result);
}

result_file values_of_reference(const reference_set& from, const reference_state& state) {
    return values_of_state(from, from.reference, state, state.state, 1, state.element_value,
                           state.values.dipole, state.full);
}

result_file values_of_followed(const reference_set& from, const job& now,
                               const followed_state& state) {
    const auto its_reference = std::ranges::find(from.states, state.state, &reference_state::state);
    return values_of_state(from, now, *its_reference, state.root, state.sign, state.element_value,
                           state.values ? state.values->dipole : std::array<double, 3>{},
                           state.full);
}

void write_state_file(const std::string& name, const result_file& values, bool full_digits) {
    const sgn_contents& of = values.contents;
    flib::matrix<double> x(3, of.parameters.natom, "the coordinates");
    flib::matrix<double> forces(3, of.parameters.natom, "the forces");
    for (std::int32_t i = 1; i <= of.parameters.natom; ++i) {
        for (std::int32_t k = 1; k <= 3; ++k) {
            const auto at = static_cast<std::size_t>(i) - 1;
            const auto axis = static_cast<std::size_t>(k) - 1;
            x(k, i) = of.x[at][axis] / flib::bohr_radius;
            forces(k, i) = of.frc[at][axis];
        }
    }
    std::int32_t fid = 0;
    flib::get_free_fid(fid);
    flib::open_replace(fid, name);
    write_sgn_parameters(fid, of.parameters);
    write_sgn_body(
        fid, {of.symbol, of.nat, of.mass, x.view(),
              full_digits && values.full ? values.full->dipole : of.corrected_tdip, forces.view()});
    flib::commit_unit(fid);
}

}  // namespace sgn
