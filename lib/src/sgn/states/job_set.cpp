#include "sgn/states/job_set.h"

#include <algorithm>
#include <array>
#include <utility>

#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "sgn/job/same_file.h"
#include "sgn/states/state_file.h"

namespace sgn {
namespace {

std::int32_t wanted_state(const job& reference, std::optional<std::int32_t> state) {
    const std::int32_t wanted = state.value_or(std::max(1, reference.forces_of));
    if (wanted >= 1 && wanted <= reference.states) return wanted;
    throw flib::io_error(reference.files.checkpoint, 0,
                         "has no state " + std::to_string(wanted) + " of " +
                             std::to_string(reference.states) + " in its log");
}

/// Throws the failure of a job as an error that names its file.
[[noreturn]] void fail(const job_result& of) {
    try {
        std::rethrow_exception(of.failure);
    } catch (const flib::io_error&) {
        throw;
    } catch (...) {
        throw flib::run_error(of.reason());
    }
}

std::string overlap_text(const std::vector<double>& overlaps) {
    double largest = 0;
    for (const double overlap : overlaps) largest = std::max(largest, std::abs(overlap));
    return flib::decimal(largest, 2);
}

/// Why the forces of a job are not those of `root`, or nothing.
std::string without_forces(const std::string& checkpoint, const std::string& none,
                           std::int32_t forces_of, std::int32_t root) {
    if (!none.empty()) return none;
    if (forces_of == root || forces_of == 0) return {};
    return flib::printable(checkpoint) + ": the forces are those of state " +
           std::to_string(forces_of) + ", not of " + std::to_string(root);
}

}  // namespace

job_set set_of_jobs(const std::string& reference, std::span<const std::string> checkpoints,
                    std::optional<std::int32_t> state, const follow_options& how,
                    const follow_progress& tell) {
    job first = read_job(how.find(reference));
    const std::vector<vec3> x = take_full_coordinates(first);
    job_set made;
    made.state = wanted_state(first, state);
    const reference_set from = prepare(std::move(first), std::array{made.state});
    made.reference = values_of_reference(from, from.states.front());
    if (made.reference.full) made.reference.full->x = x;
    made.no_forces =
        without_forces(reference, from.reference.no_forces, from.reference.forces_of, made.state);

    std::vector<std::string> others;
    std::ranges::copy_if(checkpoints, std::back_inserter(others),
                         [&](const std::string& name) { return !is_same_file(name, reference); });
    follow_options keeping = how;
    keeping.keep = true;
    keeping.write = false;
    std::vector<job_result> jobs = follow_jobs(from, others, keeping, tell);
    for (job_result& each : jobs) {
        if (!each.followed) fail(each);
        const followed_state& followed = each.followed->states.front();
        const std::string of_state = "state " + std::to_string(made.state);
        if (followed.root == 0) {
            throw flib::io_error(each.checkpoint, 0,
                                 of_state + " is lost: no overlap is above " +
                                     overlap_text(followed.overlaps) + "; ask for more states");
        }
        if (followed.kind == continuation::mixed) {
            made.mixed.push_back(flib::printable(each.checkpoint) + ": " + of_state +
                                 " is mixed: the overlap is " + overlap_text(followed.overlaps));
        }
        if (made.no_forces.empty()) {
            made.no_forces =
                without_forces(each.checkpoint, each.no_forces, each.forces_of, followed.root);
        }
        made.files.push_back(std::move(each.values.front()));
    }
    made.near = near_anywhere(from, jobs, 0);
    made.no_full_digits = why_not_full_digits(from, jobs);
    const auto forget = [&](result_file& of) {
        if (!made.no_full_digits.empty()) of.full.reset();
        if (!made.no_forces.empty()) std::ranges::fill(of.contents.frc, vec3{});
    };
    forget(made.reference);
    std::ranges::for_each(made.files, forget);
    return made;
}

}  // namespace sgn
