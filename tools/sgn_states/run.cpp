#include "sgn_states/run.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <map>
#include <mutex>
#include <set>
#include <thread>
#include <utility>

#include "common/same_file.h"
#include "flib/io/atomic_file.h"
#include "flib/io/stop_run.h"
#include "flib/qm_file/qm_file_type.h"
#include "flib/qm_file/type_tag.h"
#include "flib/util/file.h"
#include "numfreq/job_files.h"
#include "states/state_file.h"

namespace sgn_states {
namespace {

using states::job_files;

/// Whether it is at least a checkpoint. What is none is told when it is read.
bool is_checkpoint(const std::string& name) {
    try {
        return flib::type_tag_of(name) == flib::tag::gaussian_fchk;
    } catch (const flib::run_error&) {
        return false;
    }
}

/// Why a checkpoint cannot be a job beside the others, of which `first` is the one of each name.
/// Jobs of one name share their log and dump, so only one of them is whole.
std::exception_ptr refusal_of(const std::string& checkpoint,
                              std::map<std::string, std::string>& first) {
    try {
        const std::string name = states::files_of(checkpoint).name;
        if (!is_checkpoint(checkpoint)) return {};
        const std::string& known = first.try_emplace(name, checkpoint).first->second;
        if (tools::is_same_file(known, checkpoint)) return {};
        throw flib::io_error(
            checkpoint, 0,
            "has the name of " + flib::printable(known) + ", and so the same log and dump");
    } catch (const flib::run_error&) {
        return std::current_exception();
    }
}

/// The jobs to be done, each once.
std::vector<job_result> jobs_of(const options& how, const job_files& reference) {
    std::map<std::string, std::string> first{{reference.name, reference.checkpoint}};
    std::map<std::string, std::vector<std::string>> listed;  // by name
    std::vector<job_result> jobs;
    for (const std::string& checkpoint : how.jobs) {
        const std::string name = flib::name_main(checkpoint);
        std::vector<std::string>& others = listed[name];
        const auto is_this = [&](const std::string& other) {
            return tools::is_same_file(other, checkpoint);
        };
        if (std::ranges::any_of(others, is_this)) continue;
        others.push_back(checkpoint);
        jobs.push_back(
            {.checkpoint = checkpoint, .name = name, .failure = refusal_of(checkpoint, first)});
    }
    return jobs;
}

std::vector<std::int32_t> wanted_states(const options& how, const states::job& reference) {
    const std::int32_t known = reference.states;
    if (how.states.empty()) return tools::numbers_in({{1, known}}, known);
    if (const std::int32_t state = tools::largest_in(how.states); state > known) {
        throw flib::run_error("--states: there is no state " + std::to_string(state) + ", " +
                              flib::printable(reference.files.checkpoint) + " has " +
                              std::to_string(known));
    }
    return tools::numbers_in(how.states, known);
}

/// The result file of a state must not be that of another job.
void require_free_names(const states::reference_set& reference,
                        const std::vector<job_result>& jobs) {
    std::set<std::string> results;
    const auto add = [&](const std::string& name) {
        results.insert(name + std::string(numfreq::suffix::result));
    };
    add(reference.reference.files.name);
    for (const job_result& each : jobs) add(each.name);
    const auto require = [&](const std::string& name) {
        for (const states::reference_state& state : reference.states) {
            const std::string file = states::state_file_name(name, state.state);
            if (!results.contains(file)) continue;
            throw flib::run_error("--write would write " + flib::printable(file) + " for " +
                                  flib::printable(name) +
                                  ", but that is the result of another job");
        }
    };
    require(reference.reference.files.name);
    for (const job_result& each : jobs) require(each.name);
}

/// Nor must it be anything else that would be missed. What killed runs have left is removed.
void prepare_places(const options& how, const set_result& of) {
    std::vector<tools::planned_output> outputs = outputs_of(how);
    std::set<std::string> names{of.reference.reference.files.name};
    for (const job_result& each : of.jobs) {
        if (!each.failure) names.insert(each.name);
    }
    for (const std::string& name : names) {
        for (const states::reference_state& state : of.reference.states) {
            outputs.push_back({"--write", states::state_file_name(name, state.state),
                               tools::output_kind::result_file});
        }
    }
    tools::require_harmless(outputs, inputs_of(how), how.overwrite);
    std::set<std::string_view> files;
    for (const tools::planned_output& each : outputs) files.insert(each.file);
    flib::remove_left_over(".", [&](std::string_view name) { return files.contains(name); });
}

void follow_into(job_result& result, const states::reference_set& reference, const options& how) {
    const states::job now = states::read_job(result.checkpoint, &reference.reference);
    states::followed_job followed = follow(reference, now, how.limits);
    if (how.write && result.name != reference.reference.files.name) {
        for (const states::followed_state& state : followed.states) {
            write_followed_state(reference, now, state);
            ++result.written_files;
        }
    }
    result.followed = std::move(followed);
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

set_result run(const options& how, const progress& tell) {
    states::job reference = states::read_job(how.reference);
    const std::vector<std::int32_t> wanted = wanted_states(how, reference);
    set_result result{.reference = prepare(std::move(reference), wanted)};
    result.jobs = jobs_of(how, result.reference.reference.files);
    if (how.write) {
        require_free_names(result.reference, result.jobs);
        prepare_places(how, result);
        for (const states::reference_state& state : result.reference.states) {
            write_reference_state(result.reference, state);
        }
    }

    std::atomic<std::size_t> next = 0;
    std::size_t done = 0;
    std::mutex telling;
    const auto work = [&] {
        for (std::size_t i = next++; i < result.jobs.size(); i = next++) {
            if (!result.jobs[i].failure) {
                try {
                    follow_into(result.jobs[i], result.reference, how);
                } catch (...) {
                    result.jobs[i].failure = std::current_exception();
                }
            }
            const std::scoped_lock alone(telling);
            tell(++done, result.jobs.size());
        }
    };
    const auto workers =
        std::min<std::size_t>(static_cast<std::size_t>(how.workers), result.jobs.size());
    std::vector<std::jthread> threads;
    try {
        while (threads.size() + 1 < workers) threads.emplace_back(work);
    } catch (const std::system_error&) {
        // As many as there are will do.
    }
    work();
    threads.clear();
    return result;
}

}  // namespace sgn_states
