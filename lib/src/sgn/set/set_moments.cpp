#include "sgn/set/set_moments.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <system_error>
#include <utility>

#include "flib/io/fixed_field.h"
#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/fchk_label.h"
#include "flib/qm_file/qm_file_natom.h"
#include "flib/search/search_word.h"
#include "flib/util/units.h"
#include "sgn/set/decimals.h"

namespace sgn {
namespace {

bool is_file(const std::string& name) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(name, ignored);
}

/// "h2o_ref" of "h2o_ref_s2"; the name itself if it does not end so.
std::string without_state(const std::string& name) {
    const std::size_t last = name.find_last_not_of("0123456789");
    const bool ends_so = last != std::string::npos && last + 1 < name.size() && last > 1 &&
                         name.compare(last - 1, 2, "_s") == 0;
    return ends_so ? name.substr(0, last - 1) : name;
}

/// The states whose dipole, with the sign of `of`, rounds to the one there.
std::vector<std::int32_t> states_like(const result_file& of, const flib::state_moments& moments) {
    constexpr int usual_decimals = 4;
    decimals_seen printed(usual_decimals);
    for (const double value : of.contents.corrected_tdip) printed.look_at(value);
    constexpr double digits_of_checkpoint = 1e-9;
    const double tolerance = 0.5 * std::pow(10.0, -printed.decimals()) + digits_of_checkpoint;
    std::vector<std::int32_t> found;
    for (std::int32_t state = 1; state <= moments.states; ++state) {
        bool rounds = true;
        for (std::size_t k = 0; k < 3; ++k) {
            const double value =
                of.contents.parameters.sign *
                moments.of_states.dipole[3 * (static_cast<std::size_t>(state) - 1) + k];
            rounds = rounds && std::abs(value - of.contents.corrected_tdip[k]) <= tolerance;
        }
        if (rounds) found.push_back(state);
    }
    return found;
}

/// The coordinates in a checkpoint (Angstrom); empty if it has not so many atoms.
std::vector<vec3> coordinates_in(const std::string& checkpoint, std::size_t count) {
    std::int32_t natom = 0;
    std::int32_t info = 0;
    flib::qm_file_natom(checkpoint, natom, info);
    const flib::input_unit fid(checkpoint);
    flib::line_buffer line;
    if (natom < 1 || static_cast<std::size_t>(natom) != count ||
        !flib::search_word_free(fid, flib::fchk_label::coordinates, line)) {
        return {};
    }
    std::vector<double> x(3 * count);
    flib::read_items(fid, std::span(x));
    std::vector<vec3> places;
    for (std::size_t i = 0; i < x.size(); i += 3) {
        places.push_back(scaled(flib::bohr_radius, {x[i], x[i + 1], x[i + 2]}));
    }
    return places;
}

/// Adds what the checkpoint of a result file has. Throws flib::ending if it is not of one run with
/// it, and returns why there is nothing to be had without a doubt.
std::string add_digits(result_file& to) {
    const std::string checkpoint = file_beside(to.name, ".fchk");
    if (!is_file(checkpoint)) {
        return flib::io_error(checkpoint, 0, "is not there beside " + flib::printable(to.name))
            .what();
    }
    const std::int32_t sign = to.contents.parameters.sign;
    if (sign == 0) return flib::io_error(to.name, 0, "has no sign").what();
    std::optional<flib::state_moments> moments;
    try {
        moments = flib::qm_file_state_moments(checkpoint);
    } catch (const flib::stop_run&) {
        throw flib::io_error(checkpoint, 0, "is no formatted checkpoint");
    }
    if (!moments) throw flib::io_error(checkpoint, 0, "holds no excited states");
    const std::vector<std::int32_t> states = states_like(to, *moments);
    if (states.empty()) {
        throw flib::io_error(checkpoint, 0,
                             "has no state whose dipole rounds to that of " +
                                 flib::printable(to.name) + ": they are not of one run");
    }
    std::vector<vec3> x = full_coordinates(checkpoint, to.contents.x, to.name);
    if (states.size() > 1) {
        return flib::io_error(checkpoint, 0,
                              "has " + std::to_string(states.size()) +
                                  " states whose dipoles round to that of " +
                                  flib::printable(to.name))
            .what();
    }
    to.full = full_digits_of(moments->of_states, states.front(), sign);
    to.full->x = std::move(x);
    to.excited = {states.front(), moments->target, moments->excitation_energy(states.front())};
    return {};
}

}  // namespace

std::string file_beside(const std::string& name, const std::string& suffix) {
    const bool of_set = name.ends_with(".sgn") || name.ends_with(".fchk");
    const std::string of_job = of_set ? name.substr(0, name.rfind('.')) : name;
    const std::string of_state = without_state(of_job) + suffix;
    return !is_file(of_job + suffix) && is_file(of_state) ? of_state : of_job + suffix;
}

full_digits full_digits_of(const flib::moment_rows& rows, std::int32_t state, double sign) {
    const auto take = [&](const std::vector<double>& from, auto& into) {
        const std::size_t first = into.size() * (static_cast<std::size_t>(state) - 1);
        for (std::size_t k = 0; k < into.size(); ++k) into[k] = sign * from[first + k];
    };
    full_digits of;
    take(rows.dipole, of.dipole);
    take(rows.velocity_dipole, of.moments.velocity_dipole);
    take(rows.magnetic_dipole, of.moments.magnetic_dipole);
    take(rows.velocity_quadrupole, of.moments.velocity_quadrupole);
    return of;
}

std::vector<vec3> full_coordinates(const std::string& checkpoint, std::span<const vec3> x,
                                   const std::string& name) {
    std::vector<vec3> full = coordinates_in(checkpoint, x.size());
    double apart = 0;
    for (std::size_t i = 0; i < full.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) apart = std::max(apart, std::abs(full[i][k] - x[i][k]));
    }
    // A Bohr radius of another year, far from the origin.
    constexpr double same_job = 1e-4;
    if (apart > same_job) {
        throw flib::io_error(checkpoint, 0,
                             "has coordinates that are " + flib::decimal(apart, 4) +
                                 " Angstrom from those of " + flib::printable(name) +
                                 ": they are not of one run");
    }
    constexpr double half_of_last = 0.5e-6 + 1e-8;
    if (apart > half_of_last) full.clear();
    return full;
}

no_full_digits add_full_digits(result_file& reference, std::span<result_file> files) {
    no_full_digits none;
    std::vector<result_file*> all{&reference};
    for (result_file& each : files) all.push_back(&each);
    for (result_file* each : all) {
        try {
            none.reason = add_digits(*each);
        } catch (const flib::ending& ending) {
            none = {ending.what(), true};
        }
        if (!none.reason.empty()) break;
    }
    if (none.reason.empty()) return none;
    for (result_file& each : files) each.excited.reset();
    return none;
}

std::vector<double> excitation_gradient(const displaced_set& set, const derivatives& of) {
    std::vector<double> gradient(of.weights.rows);
    for (std::size_t j = 0; j < set.jobs.size(); ++j) {
        const displaced_job& job = set.jobs[j];
        if (job.is == role::undisplaced || job.is == role::repeated) continue;
        if (!job.excited || !job.excited->energy) return {};
        for (std::size_t c = 0; c < gradient.size(); ++c) {
            gradient[c] += of.weights(c, j) * *job.excited->energy;
        }
    }
    return gradient;
}

}  // namespace sgn
