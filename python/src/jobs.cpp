// Jobs, their states followed, and the sign from arrays.

#include <algorithm>
#include <limits>
#include <memory>
#include <numeric>
#include <utility>

#include "flib/excited/density_parts.h"
#include "flib/io/stop_run.h"
#include "module.h"
#include "sgn/job/density.h"
#include "sgn/job/job.h"
#include "sgn/set/set_moments.h"
#include "sgn/states/follow.h"
#include "sgn/states/state_file.h"
#include "values.h"

namespace stigruz_python {
namespace {

using sgn::job;

sgn::job_files files_from(const py::object& checkpoint, const py::object& log,
                          const py::object& dump) {
    sgn::job_files files = sgn::files_beside(path_from(checkpoint));
    if (!log.is_none()) files.log = path_from(log);
    if (!dump.is_none()) files.dump = path_from(dump);
    return files;
}

/// Roots that an array of amplitudes has room for.
std::int32_t roots_of(const job& of) {
    const auto& [natom, nbasis, nbsuse, mi, ma, mci, nfc, nfv] = of.counts;
    return static_cast<std::int32_t>(
        of.xpy.size() / (2 * static_cast<std::size_t>(mi) * static_cast<std::size_t>(ma)));
}

/// What a reference is made of, which takes the orbitals and amplitudes with it.
job copy_of(const job& of) {
    job copy(of.files, of.counts, of.states);
    const auto put = [](auto from, auto to) { std::ranges::copy(from, to.begin()); };
    put(of.atoms.x.view().all(), copy.atoms.x.view().all());
    put(of.atoms.nat.all(), copy.atoms.nat.all());
    put(of.atoms.mass.all(), copy.atoms.mass.all());
    put(of.moc.view().all(), copy.moc.view().all());
    put(of.tdip.view().all(), copy.tdip.view().all());
    copy.xpy = {{of.counts.ma, of.counts.mi, 2, roots_of(of)}, "the excitation amplitudes"};
    put(of.xpy.all(), copy.xpy.all());
    copy.energy = of.energy;
    copy.spin = of.spin;
    return copy;
}

/// Overlaps are those of jobs that differ in nothing but the geometry.
void require_same_sizes(const job& reference, const job& now) {
    const auto sizes = [](const job& of) {
        const auto& [natom, nbasis, nbsuse, mi, ma, mci, nfc, nfv] = of.counts;
        return std::array{natom, nbasis, nbsuse, mi, ma, nfc, nfv};
    };
    const bool same = sizes(reference) == sizes(now) &&
                      std::ranges::equal(reference.atoms.nat.all(), now.atoms.nat.all());
    if (same) return;
    throw flib::io_error(now.files.checkpoint, 0,
                         "has other atoms, orbitals or frozen orbitals than " +
                             flib::printable(reference.files.checkpoint));
}

std::int32_t state_of(const job& of, const py::object& state) {
    const std::int32_t number = whole_number_from(state, "state");
    if (number >= 1 && number <= of.states) return number;
    throw flib::io_error(of.files.checkpoint, 0,
                         "has no state " + std::to_string(number) + " of " +
                             std::to_string(of.states) + " in its log");
}

py::dict counts_of(const sgn::job_counts& of) {
    py::dict values;
    values["natom"] = of.natom;
    values["basis_functions"] = of.nbasis;
    values["orbitals"] = of.nbsuse;
    values["active_occupied"] = of.mi;
    values["active_virtual"] = of.ma;
    values["roots"] = of.mci;
    values["frozen_core"] = of.nfc;
    values["frozen_virtual"] = of.nfv;
    return values;
}

/// The first `states` rows of a moment.
py::array_t<double> moment(const std::vector<double>& values, std::int32_t states,
                           std::int32_t components) {
    return array_of(std::span(values).first(static_cast<std::size_t>(states) *
                                            static_cast<std::size_t>(components)),
                    {states, components});
}

/// None where there is no other state.
py::object near_or_none(const std::optional<sgn::near_state>& of) {
    if (!of) return py::none();
    py::dict values;
    values["root"] = of->root;
    values["distance"] = of->distance;
    values["is_near"] = of->is_near();
    return values;
}

py::object spin_or_none(const std::optional<flib::root_spin>& spin) {
    if (!spin) return py::none();
    return text_of(flib::name_of(*spin));
}

/// A job, with the coordinates of its checkpoint (Angstrom), if they are told.
struct whole_job {
    job is;
    std::vector<sgn::vec3> full_x;

    explicit whole_job(const sgn::job_files& files)
        : is(sgn::read_job(files)), full_x(sgn::take_full_coordinates(is)) {}
};

/// Of one state; None where only the log tells.
void add_moments(py::dict& to, const std::optional<sgn::full_digits>& full) {
    for (const char* name : {"velocity_dipole", "magnetic_dipole", "velocity_quadrupole"}) {
        to[name] = py::none();
    }
    if (!full) return;
    to["velocity_dipole"] = array_of(full->moments.velocity_dipole);
    to["magnetic_dipole"] = array_of(full->moments.magnetic_dipole);
    to["velocity_quadrupole"] = array_of(full->moments.velocity_quadrupole);
}

py::dict values_of(const whole_job& from) {
    const job& of = from.is;
    py::dict values;
    values["name"] = file_name(of.files.name);
    values["checkpoint"] = file_name(of.files.checkpoint);
    values["log"] = file_name(of.files.log);
    values["dump"] = file_name(of.files.dump);
    values["counts"] = counts_of(of.counts);
    values["states"] = of.states;
    values["atomic_numbers"] = whole_numbers(of.atoms.nat.all());
    values["coordinates"] = array_of(from.full_x.empty() ? sgn::coordinates_of(of) : from.full_x);
    values["masses"] = array_of(of.atoms.mass.all());
    values["forces"] = of.no_forces.empty() ? py::object(columns_of(of.force.view())) : py::none();
    values["forces_of"] = of.forces_of > 0 ? py::cast(of.forces_of) : py::none();
    values["energies"] = array_of(of.energy);
    values["printed_dipoles"] = columns_of(of.tdip.view());
    py::list spins;
    py::list nearest;
    std::vector<double> strengths;
    for (std::int32_t state = 1; state <= of.states; ++state) {
        spins.append(spin_or_none(of.spin_of(state)));
        nearest.append(near_or_none(nearest_to(of, state)));
        std::optional<sgn::full_digits> full;
        if (of.moments) full = sgn::full_digits_of(of.moments->of_states, state, 1);
        strengths.push_back(best_values(sgn::values_of(of, state), full).oscillator_strength());
    }
    values["spins"] = spins;
    values["nearest"] = nearest;
    values["oscillator_strengths"] = array_of(strengths);
    py::dict missing;
    if (!of.no_forces.empty()) missing["forces"] = text_of(of.no_forces);
    if (of.moments) {
        const flib::moment_rows& rows = of.moments->of_states;
        values["electric_dipoles"] = moment(rows.dipole, of.states, 3);
        values["velocity_dipoles"] = moment(rows.velocity_dipole, of.states, 3);
        values["magnetic_dipoles"] = moment(rows.magnetic_dipole, of.states, 3);
        values["velocity_quadrupoles"] = moment(rows.velocity_quadrupole, of.states, 6);
    } else {
        values["electric_dipoles"] = columns_of(of.tdip.view());
        for (const char* name : {"velocity_dipoles", "magnetic_dipoles", "velocity_quadrupoles"}) {
            values[name] = py::none();
            missing[name] = text_of(of.no_moments);
        }
    }
    values["missing"] = missing;
    return values;
}

/// A reference with all of its states, or those that are wanted.
struct reference {
    sgn::reference_set set;

    reference(const job& of, std::span<const std::int32_t> states)
        : set(prepare(copy_of(of), states)) {}
};

py::dict values_of(const sgn::followed_state& of) {
    py::dict values;
    values["state"] = of.state;
    values["root"] = of.values ? py::cast(of.root) : py::none();
    values["verdict"] = text_of(sgn::name_of(of.kind));
    values["overlap"] = of.values ? py::cast(of.overlap) : py::none();
    values["sign"] = of.sign;
    values["spin"] = spin_or_none(of.spin);
    values["energy"] = py::none();
    values["dipole"] = py::none();
    values["oscillator_strength"] = py::none();
    if (of.values) {
        const sgn::root_values best = best_values(*of.values, of.full);
        values["energy"] = best.energy;
        values["dipole"] = array_of(best.dipole);
        values["oscillator_strength"] = best.oscillator_strength();
    }
    add_moments(values, of.full);
    values["nearest"] = near_or_none(of.nearest);
    values["overlaps"] = array_of(of.overlaps);
    return values;
}

py::dict values_of(const sgn::followed_job& of) {
    py::dict values;
    py::list states;
    for (const sgn::followed_state& each : of.states) states.append(values_of(each));
    values["states"] = states;
    values["clear"] = of.clear();
    values["stigruz_sign"] = of.stigruz ? py::cast(of.stigruz->sign) : py::none();
    values["stigruz_agrees"] = of.stigruz ? py::cast(of.stigruz->agrees) : py::none();
    return values;
}

std::unique_ptr<reference> prepared(const whole_job& from, const py::object& states) {
    const job& of = from.is;
    std::vector<std::int32_t> wanted;
    if (states.is_none()) {
        wanted.resize(static_cast<std::size_t>(of.states));
        std::iota(wanted.begin(), wanted.end(), 1);
    } else {
        for (const py::handle each : py::iter(states)) {
            wanted.push_back(state_of(of, py::reinterpret_borrow<py::object>(each)));
        }
    }
    std::ranges::sort(wanted);
    wanted.erase(std::unique(wanted.begin(), wanted.end()), wanted.end());
    return without_lock([&] { return std::make_unique<reference>(of, wanted); });
}

/// A job of one state, of arrays: orbitals as columns, amplitudes (virtual, occupied).
job job_of(const char* name, const numbers& orbitals, const numbers& amplitudes,
           std::int32_t frozen_core) {
    sgn::job_counts counts;
    counts.nbasis = orbitals.count(0);
    counts.nbsuse = orbitals.count(1);
    counts.ma = amplitudes.count(0);
    counts.mi = amplitudes.count(1);
    counts.mci = 1;
    counts.nfc = frozen_core;
    const std::int64_t taken = std::int64_t{counts.nfc} + counts.mi + counts.ma;
    if (counts.mi < 1 || counts.ma < 1 || frozen_core < 0 || taken > counts.nbsuse ||
        counts.nbsuse > counts.nbasis) {
        throw flib::run_error(std::string(name) + ": " + std::to_string(counts.nbsuse) +
                              " orbitals of " + std::to_string(counts.nbasis) +
                              " basis functions are not " + std::to_string(counts.nfc) +
                              " frozen core, " + std::to_string(counts.mi) + " active occupied, " +
                              std::to_string(counts.ma) + " active virtual ones or more");
    }
    counts.nfv = counts.nbsuse - static_cast<std::int32_t>(taken);
    job made({name, name, name, name}, counts, 1);
    for (std::int32_t p = 1, at = 0; p <= counts.nbasis; ++p) {
        for (std::int32_t q = 1; q <= counts.nbsuse; ++q, ++at) {
            made.moc(p, q) = orbitals.values[static_cast<std::size_t>(at)];
        }
    }
    const flib::matrix_view<double> x(made.xpy.data(), counts.ma, counts.mi);
    for (std::int32_t a = 1, at = 0; a <= counts.ma; ++a) {
        for (std::int32_t i = 1; i <= counts.mi; ++i, ++at) {
            x(a, i) = amplitudes.values[static_cast<std::size_t>(at)];
        }
    }
    if (std::ranges::all_of(amplitudes.values, [](double value) { return value == 0; })) {
        throw flib::run_error(std::string(name) + ": the amplitudes are all zero");
    }
    made.energy.assign(1, 0);
    return made;
}

struct signed_element {
    std::int32_t sign = 0;
    double overlap = 0;
    flib::element_location at{0, 0};
    double reference_value = 0;
    double value = 0;
};

py::dict sign_of(const py::object& c0, const py::object& x0, const py::object& c1,
                 const py::object& x1, const py::object& frozen_core) {
    const numbers orbitals = numbers_from(c0, "C0", {-1, -1});
    const numbers amplitudes = numbers_from(x0, "X0", {-1, -1});
    const numbers its_orbitals = numbers_from(c1, "C1", orbitals.shape);
    const numbers its_amplitudes = numbers_from(x1, "X1", amplitudes.shape);
    const std::int32_t frozen = whole_number_from(frozen_core, "frozen_core");
    const signed_element found = without_lock([&] {
        const std::array wanted{1};
        const auto from = prepare(job_of("C0, X0", orbitals, amplitudes, frozen), wanted);
        const job now = job_of("C1, X1", its_orbitals, its_amplitudes, frozen);
        const sgn::followed_job followed = follow(from, now, {});
        const auto& [natom, nbasis, nbsuse, mi, ma, mci, nfc, nfv] = now.counts;
        const sgn::reference_state& state = from.states.front();
        flib::density_element element({nbasis, nbsuse, mi, ma, nfc, nfv}, state.element);
        element.take(now.moc.view());
        return signed_element{followed.stigruz->sign, followed.states.front().overlaps.front(),
                              state.element, state.element_value, element.value(now.amplitudes(1))};
    });
    py::dict values;
    values["sign"] = found.sign;
    values["overlap"] = found.overlap;
    values["element"] = py::make_tuple(found.at[0] - 1, found.at[1] - 1);
    values["reference_value"] = found.reference_value;
    values["value"] = found.value;
    return values;
}

}  // namespace

void add_jobs(py::module_& module) {
    const py::class_<whole_job> of_job(module, "Job", "A job that was read.");
    forbid_new(of_job);
    const py::class_<reference> of_reference(module, "Reference",
                                             "A job that others are compared with.");
    forbid_new(of_reference);
    module.def(
        "read_job",
        [](const py::object& checkpoint, const py::object& log, const py::object& dump) {
            const sgn::job_files files = files_from(checkpoint, log, dump);
            return without_lock([&] { return std::make_unique<whole_job>(files); });
        },
        py::arg("checkpoint"), py::arg("log"), py::arg("dump"));
    module.def(
        "job_values", [](const whole_job& of) { return values_of(of); }, py::arg("job"));
    module.def(
        "transition_density",
        [](const whole_job& of, const py::object& state) {
            const std::int32_t root = state_of(of.is, state);
            const auto density = without_lock([&] { return sgn::transition_density(of.is, root); });
            return array_of(density.view());
        },
        py::arg("job"), py::arg("state"));
    module.def(
        "orbitals", [](const whole_job& of) { return array_of(of.is.moc.view()); }, py::arg("job"));
    module.def(
        "amplitudes",
        [](const whole_job& from, const py::object& state) {
            const job& of = from.is;
            const std::span<const double> values = of.amplitudes(state_of(of, state));
            return array_of(
                flib::matrix_view<const double>(values.data(), of.counts.ma, of.counts.mi));
        },
        py::arg("job"), py::arg("state"));
    module.def("prepare", prepared, py::arg("job"), py::arg("states"));
    module.def(
        "follow",
        [](const reference& from, const whole_job& now, double mixed_below, double lost_below) {
            require_same_sizes(from.set.reference, now.is);
            return values_of(without_lock([&] {
                return follow(from.set, now.is, {mixed_below, lost_below});
            }));
        },
        py::arg("reference"), py::arg("job"), py::arg("mixed_below"), py::arg("lost_below"));
    module.def("sign", sign_of, py::arg("c0"), py::arg("x0"), py::arg("c1"), py::arg("x1"),
               py::arg("frozen_core"));
}

}  // namespace stigruz_python
