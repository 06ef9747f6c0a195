#include "sgn/set/set_moments.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <system_error>

#include "flib/io/stop_run.h"

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
std::vector<std::int32_t> states_like(const displaced_job& of, const flib::state_moments& moments,
                                      int decimals) {
    constexpr double digits_of_checkpoint = 1e-9;
    const double tolerance = 0.5 * std::pow(10.0, -decimals) + digits_of_checkpoint;
    std::vector<std::int32_t> found;
    for (std::int32_t state = 1; state <= moments.states; ++state) {
        bool rounds = true;
        for (std::size_t k = 0; k < 3; ++k) {
            const double value =
                of.sign * moments.of_states.dipole[3 * (static_cast<std::size_t>(state) - 1) + k];
            rounds = rounds && std::abs(value - of.dipole[k]) <= tolerance;
        }
        if (rounds) found.push_back(state);
    }
    return found;
}

std::optional<flib::state_moments> moments_in(const std::string& checkpoint) {
    try {
        return flib::qm_file_state_moments(checkpoint);
    } catch (const flib::stop_run&) {
        throw flib::io_error(checkpoint, 0, "is no formatted checkpoint");
    }
}

/// The moments of a job. Throws flib::ending where they are not to be had.
job_moments moments_of(const displaced_job& of, int decimals) {
    const std::string checkpoint = file_beside(of.name, ".fchk");
    if (!is_file(checkpoint)) {
        throw flib::io_error(checkpoint, 0, "is not there beside " + flib::printable(of.name));
    }
    if (of.sign == 0) throw flib::io_error(of.name, 0, "has no sign");
    const auto moments = moments_in(checkpoint);
    if (!moments) throw flib::io_error(checkpoint, 0, "holds no excited states");
    const std::vector<std::int32_t> states = states_like(of, *moments, decimals);
    if (states.empty()) {
        throw flib::io_error(checkpoint, 0,
                             "has no state whose dipole rounds to that of " +
                                 flib::printable(of.name) + ": it is of another run");
    }
    if (states.size() > 1) {
        throw flib::io_error(checkpoint, 0,
                             "has " + std::to_string(states.size()) +
                                 " states whose dipoles round to that of " +
                                 flib::printable(of.name));
    }
    return {states.front(), moments->target, state_row(moments->of_states, states.front(), of.sign),
            moments->excitation_energy(states.front())};
}

}  // namespace

flib::moment_rows state_row(const flib::moment_rows& rows, std::int32_t state, double sign) {
    const auto i = static_cast<std::size_t>(state) - 1;
    const auto part = [&](const std::vector<double>& values, std::size_t count) {
        std::vector<double> result(count);
        std::transform(values.begin() + static_cast<std::ptrdiff_t>(count * i),
                       values.begin() + static_cast<std::ptrdiff_t>(count * (i + 1)),
                       result.begin(), [&](double value) { return sign * value; });
        return result;
    };
    return {{rows.energy[i]},
            part(rows.dipole, 3),
            part(rows.velocity_dipole, 3),
            part(rows.magnetic_dipole, 3),
            part(rows.velocity_quadrupole, 6)};
}

std::string file_beside(const std::string& name, const std::string& suffix) {
    const bool of_set = name.ends_with(".sgn") || name.ends_with(".fchk");
    const std::string of_job = of_set ? name.substr(0, name.rfind('.')) : name;
    const std::string of_state = without_state(of_job) + suffix;
    return !is_file(of_job + suffix) && is_file(of_state) ? of_state : of_job + suffix;
}

set_moments read_set_moments(const displaced_set& set) {
    set_moments moments;
    for (const displaced_job& each : set.jobs) {
        try {
            const bool takes_part = each.is != role::undisplaced && each.is != role::repeated;
            moments.jobs.push_back(takes_part ? moments_of(each, set.dipole_decimals)
                                              : job_moments{});
        } catch (const flib::ending& ending) {
            moments.why_not = ending.what();
            // What one job has is of no use alone; the reference's is.
            if (moments.jobs.size() > 1) moments.jobs.resize(1);
            return moments;
        }
    }
    return moments;
}

table derivatives_of(const set_moments& moments, std::vector<double> flib::moment_rows::*moment,
                     std::size_t columns, const derivatives& of) {
    if (!moments.of_all()) return {};
    table values(moments.jobs.size(), columns);
    for (std::size_t j = 0; j < values.rows; ++j) {
        if (moments.jobs[j].state == 0) continue;
        const std::vector<double>& row = moments.jobs[j].row.*moment;
        for (std::size_t k = 0; k < columns; ++k) values(j, k) = row[k];
    }
    constexpr int decimals = 9;  // of the uncertainties, which nobody asks for here
    return differentiate(of, values, decimals).values;
}

std::vector<double> excitation_gradient(const set_moments& moments, const derivatives& of) {
    const auto is_told = [](const job_moments& each) { return each.state == 0 || each.excitation; };
    if (!moments.of_all() || !std::ranges::all_of(moments.jobs, is_told)) return {};
    std::vector<double> gradient(of.weights.rows);
    for (std::size_t c = 0; c < gradient.size(); ++c) {
        for (std::size_t j = 0; j < moments.jobs.size(); ++j) {
            gradient[c] += of.weights(c, j) * moments.jobs[j].excitation.value_or(0);
        }
    }
    return gradient;
}

}  // namespace sgn
