#include "sgn/states/follow_jobs.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <map>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>
#include <utility>

#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "flib/qm_file/qm_file_type.h"
#include "flib/qm_file/type_tag.h"
#include "flib/util/file.h"
#include "sgn/job/job_files.h"
#include "sgn/job/same_file.h"
#include "sgn/states/state_file.h"

namespace sgn {
namespace {

/// Whether it is at least a checkpoint. What is none is told when it is read.
bool is_checkpoint(const std::string& name) {
    try {
        return flib::type_tag_of(name) == flib::tag::gaussian_fchk;
    } catch (const flib::run_error&) {
        return false;
    }
}

/// What no two jobs may share: log and dump, of which one job at most is whole, or the names of
/// their result files.
const std::string& key_of(const job_files& files, const follow_options& how) {
    return how.write ? files.name : files.log;
}

/// Why a checkpoint cannot be a job beside the others, of which `first` is the one of each key.
std::exception_ptr refusal_of(const std::string& checkpoint, const follow_options& how,
                              std::map<std::string, std::string>& first) {
    try {
        const job_files files = how.find(checkpoint);
        if (!is_checkpoint(checkpoint)) return {};
        const std::string& known = first.try_emplace(key_of(files, how), checkpoint).first->second;
        if (is_same_file(known, checkpoint)) return {};
        throw flib::io_error(
            checkpoint, 0,
            "has the name of " + flib::printable(known) + ", and so the same log and dump");
    } catch (const flib::run_error&) {
        return std::current_exception();
    }
}

/// The jobs to be done, each once.
std::vector<job_result> jobs_of(std::span<const std::string> checkpoints,
                                const job_files& reference, const follow_options& how) {
    std::map<std::string, std::string> first{{key_of(reference, how), reference.checkpoint}};
    std::map<std::string, std::vector<std::string>> listed;  // by name
    std::vector<job_result> jobs;
    for (const std::string& checkpoint : checkpoints) {
        const std::string name = flib::name_main(checkpoint);
        std::vector<std::string>& others = listed[name];
        const auto is_this = [&](const std::string& other) {
            return is_same_file(other, checkpoint);
        };
        if (std::ranges::any_of(others, is_this)) continue;
        others.push_back(checkpoint);
        jobs.push_back({.checkpoint = checkpoint,
                        .name = name,
                        .failure = refusal_of(checkpoint, how, first)});
    }
    return jobs;
}

/// The result file of a state must not be that of another job.
void require_free_names(const reference_set& reference, const std::vector<job_result>& jobs) {
    std::set<std::string> results;
    const auto add = [&](const std::string& name) {
        results.insert(name + std::string(suffix::result));
    };
    add(reference.reference.files.name);
    for (const job_result& each : jobs) add(each.name);
    const auto require = [&](const std::string& name) {
        for (const reference_state& state : reference.states) {
            const std::string file = state_file_name(name, state.state);
            if (!results.contains(file)) continue;
            throw flib::run_error("--write would write " + flib::printable(file) + " for " +
                                  flib::printable(name) +
                                  ", but that is the result of another job");
        }
    };
    require(reference.reference.files.name);
    for (const job_result& each : jobs) require(each.name);
}

void require_forces(const job& of) {
    if (!of.no_forces.empty()) throw flib::io_error(of.files.log, 0, of.no_forces);
}

void follow_into(job_result& result, const reference_set& reference, const follow_options& how) {
    job now = read_job(how.find(result.checkpoint), &reference.reference);
    const std::vector<vec3> x = take_full_coordinates(now);
    followed_job followed = follow(reference, now, how.limits);
    if (how.write) require_forces(now);
    if (how.keep || how.write) {
        for (const followed_state& state : followed.states) {
            result_file& made =
                result.values.emplace_back(values_of_followed(reference, now, state));
            if (made.full) made.full->x = x;
        }
    }
    result.no_full_digits = now.no_moments;
    result.no_forces = now.no_forces;
    result.forces_of = now.forces_of;
    result.followed = std::move(followed);
}

void write_states(job_result& result, const reference_set& reference, bool full_digits) {
    for (std::size_t i = 0; i < result.values.size(); ++i) {
        write_state_file(state_file_name(result.name, reference.states[i].state), result.values[i],
                         full_digits);
        ++result.written_files;
    }
}

/// What `work` throws is the failure of a job that did not fail before.
template <class Work>
void attempt(job_result& of, Work work) {
    if (of.failure) return;
    try {
        work(of);
    } catch (...) {
        of.failure = std::current_exception();
        of.followed.reset();
    }
}

}  // namespace

std::string job_result::reason() const {
    if (!failure) return {};
    try {
        std::rethrow_exception(failure);
    } catch (const flib::io_error& error) {
        return error.what();
    } catch (const flib::ending& error) {
        return flib::printable(checkpoint) + ": " + error.what();
    } catch (...) {
        return flib::printable(checkpoint) + ": not enough memory";
    }
}

std::vector<job_result> follow_jobs(const reference_set& reference,
                                    std::span<const std::string> checkpoints,
                                    const follow_options& how, const follow_progress& tell) {
    std::vector<job_result> jobs = jobs_of(checkpoints, reference.reference.files, how);
    if (how.write) {
        require_free_names(reference, jobs);
        require_forces(reference.reference);
    }

    std::atomic<std::size_t> next = 0;
    std::size_t done = 0;
    std::mutex telling;
    const auto work = [&] {
        for (std::size_t i = next++; i < jobs.size(); i = next++) {
            attempt(jobs[i], [&](job_result& each) { follow_into(each, reference, how); });
            const std::scoped_lock alone(telling);
            ++done;
            if (tell) tell(done, jobs.size());
        }
    };
    const auto workers = std::min<std::size_t>(static_cast<std::size_t>(how.workers), jobs.size());
    std::vector<std::jthread> threads;
    try {
        while (threads.size() + 1 < workers) threads.emplace_back(work);
    } catch (const std::system_error&) {
        // As many as there are will do.
    }
    work();
    threads.clear();
    if (!how.write) return jobs;
    const bool full_digits = why_not_full_digits(reference, jobs).empty();
    for (const reference_state& state : reference.states) {
        write_state_file(state_file_name(reference.reference.files.name, state.state),
                         values_of_reference(reference, state), full_digits);
    }
    for (job_result& each : jobs) {
        if (each.name == reference.reference.files.name) continue;
        attempt(each, [&](job_result& of) { write_states(of, reference, full_digits); });
    }
    return jobs;
}

std::optional<state_with_others> near_anywhere(const reference_set& reference,
                                               std::span<const job_result> jobs,
                                               std::size_t place) {
    const reference_state& state = reference.states[place];
    state_with_others found{.state = state.state, .distance = near_energies};
    const auto look = [&](const std::string& name, const std::optional<near_state>& nearest) {
        ++found.jobs;
        if (!nearest || !nearest->is_near()) return;
        ++found.near;
        if (nearest->distance >= found.distance) return;
        found.distance = nearest->distance;
        found.job = name;
    };
    look(reference.reference.files.name, state.nearest);
    for (const job_result& each : jobs) {
        if (each.followed) look(each.name, each.followed->states[place].nearest);
    }
    if (found.near == 0) return {};
    return found;
}

std::string text_of(const state_with_others& of) {
    using flib::decimal;
    return "State " + std::to_string(of.state) + ": another state is " +
           decimal(of.distance * flib::hartree_energy, 4) + " eV away in " +
           flib::printable(of.job) + ", less than " +
           decimal(near_energies * flib::hartree_energy, 1) + " eV in " + std::to_string(of.near) +
           " of " + std::to_string(of.jobs) + (of.jobs == 1 ? " job" : " jobs") +
           "; if the two mix, derivatives are not sound.";
}

std::string why_not_full_digits(const reference_set& reference, std::span<const job_result> jobs) {
    if (!reference.reference.no_moments.empty()) return reference.reference.no_moments;
    const auto first = std::ranges::find_if(
        jobs, [](const job_result& each) { return !each.no_full_digits.empty(); });
    return first == jobs.end() ? std::string() : first->no_full_digits;
}

}  // namespace sgn
