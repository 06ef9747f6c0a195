#include "sgn/check/proof.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "sgn/set/decimals.h"
#include "sgn/set/listed.h"

namespace sgn {
namespace {

/// What a derivative changes by if the signs of jobs are reversed.
double change_by_signs(const displaced_set& set, const derivatives& of,
                       std::span<const std::size_t> jobs, std::size_t coordinate,
                       std::size_t component) {
    double change = 0;
    for (const std::size_t job : jobs) {
        change -= 2 * of.weights(coordinate, job) * set.jobs[job].dipole[component];
    }
    return std::abs(change);
}

/// Rounding, noise and the size of the steps.
double by_printing(const displaced_set& set, const derivatives& of, const sum_rules& dipole,
                   std::size_t coordinate, std::size_t component) {
    const double rounding = of.dipole_rounding[coordinate];
    const double noise = rounding * dipole.noise / rounding_error(set.dipole_decimals);
    return std::hypot(rounding, noise, dipole.step_scale * of.dipole_step(coordinate, component));
}

/// The largest change by reversed signs, if it is anywhere more than derivatives are uncertain by;
/// else 0.
double change_that_matters(const displaced_set& set, const derivatives& of, const sum_rules& dipole,
                           std::span<const std::size_t> jobs) {
    double largest = 0;
    bool matters = false;
    for (std::size_t c = 0; c < of.dipole.rows; ++c) {
        for (std::size_t k = 0; k < 3; ++k) {
            const double change = change_by_signs(set, of, jobs, c, k);
            largest = std::max(largest, change);
            matters = matters || change > by_printing(set, of, dipole, c, k);
        }
    }
    return matters ? largest : 0;
}

/// Two digits, which is what estimates have.
std::string roughly(double value) {
    return flib::decimal(value, std::max(0, 1 - static_cast<int>(std::floor(std::log10(value)))));
}

}  // namespace

proof proof_of(const displaced_set& set, const derivatives& of, const sum_rules& dipole,
               const suspects& found) {
    proof result;
    for (const auto& jobs : found.as_good) {
        if (change_that_matters(set, of, dipole, jobs) > 0) result.as_good.push_back(jobs);
    }
    for (const std::size_t job : found.unseen) {
        const double magnitude = length(set.jobs[job].dipole);
        if (job == 0) {
            // What rounding leaves of a dipole that vanishes has no sign.
            result.reference_unseen = magnitude > 5 * rounding_error(set.dipole_decimals);
            continue;
        }
        const double change = change_that_matters(set, of, dipole, std::span(&job, 1));
        if (!(change > 0)) continue;
        result.unseen.push_back(job);
        result.largest_dipole = std::max(result.largest_dipole, magnitude);
        result.largest_error = std::max(result.largest_error, change);
    }
    return result;
}

dipole_uncertainties uncertainties_of(const displaced_set& set, const derivatives& of,
                                      const sum_rules& dipole, const proof& signs) {
    dipole_uncertainties result{table(of.dipole.rows, 3), table(of.dipole.rows, 3)};
    for (std::size_t c = 0; c < of.dipole.rows; ++c) {
        for (std::size_t k = 0; k < 3; ++k) {
            double square = 0;
            for (const std::size_t job : signs.unseen) {
                square += std::pow(change_by_signs(set, of, std::span(&job, 1), c, k), 2);
            }
            result.signs(c, k) = std::sqrt(square);
            result.total(c, k) = std::hypot(result.signs(c, k), by_printing(set, of, dipole, c, k));
        }
    }
    return result;
}

std::string reservation_of(const proof& signs, const std::vector<std::string>& names) {
    std::string text;
    const auto add = [&](const std::string& sentence) {
        text += (text.empty() ? "" : " ") + sentence;
    };
    if (!signs.unseen.empty()) {
        const bool one = signs.unseen.size() == 1;
        add((one ? flib::printable(names[signs.unseen.front()]) + " has a dipole"
                 : std::to_string(signs.unseen.size()) + " files have dipoles") +
            " too small to tell (" + (one ? "" : "up to ") + roughly(signs.largest_dipole) +
            " au); " + (one ? "its" : "their") + " derivatives may be off by " +
            roughly(signs.largest_error) + " au.");
    }
    if (signs.reference_unseen) {
        add("The dipole of the reference is too small to tell its sign against all the others.");
    }
    if (!signs.as_good.empty()) {
        std::vector<std::string> files;
        for (const std::size_t job : signs.as_good.front()) {
            files.push_back(flib::printable(names[job]));
        }
        constexpr std::size_t shown = 6;
        const std::string which = files.size() > shown ? std::to_string(files.size()) + " files (" +
                                                             files.front() + ", ...)"
                                                       : listed(files);
        add("The reference is dark: the sums hold as well with the signs of " + which +
            " reversed together" +
            (signs.as_good.size() > 1
                 ? ", and in " + std::to_string(signs.as_good.size() - 1) + " other ways"
                 : "") +
            "; sgn_states tells from the jobs.");
    }
    return text;
}

}  // namespace sgn
