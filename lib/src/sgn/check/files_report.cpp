#include "sgn/check/files_report.h"

#include <algorithm>
#include <utility>

#include "flib/io/stop_run.h"
#include "sgn/job/job_files.h"
#include "sgn/job/same_file.h"
#include "sgn/result/sgn_file.h"
#include "sgn/set/centre.h"
#include "sgn/set/input_numbers.h"
#include "sgn/set/set_moments.h"
#include "sgn/set/surroundings.h"
#include "sgn/states/job_set.h"

namespace sgn {
namespace {

report report_on_results(result_file& reference, const std::vector<result_file>& files,
                         bool sum_rules) {
    reference.input_numbers = input_numbers_beside(reference.name, reference.contents.x.size());
    report result = analyse(reference, files, sum_rules);
    result.surroundings = surroundings_beside(reference.name);
    return result;
}

/// Notes that checkpoints do not count, though they are there.
void note_source(files_report& of, const report_listener& listener) {
    listener.note(of.is.no_full_digits + "; the dipoles are those of the " +
                  std::string(source_of_dipoles(of.is.set)));
    of.without_digits = true;
    of.clear = false;
}

files_report report_on_jobs(const set_files& wanted, const report_listener& listener) {
    const auto tell = [&](std::size_t done, std::size_t) { listener.progress(done, "jobs read:"); };
    job_set jobs =
        set_of_jobs(wanted.reference, wanted.files, wanted.state, {.find = wanted.find}, tell);
    listener.progress(wanted.files.size() + 1, "computing");
    files_report result{report_on_results(jobs.reference, jobs.files, wanted.sum_rules)};
    for (const std::string& line : jobs.mixed) listener.note(line);
    result.clear = jobs.mixed.empty();
    result.is.near = jobs.near;
    result.is.no_full_digits = jobs.no_full_digits;
    if (!jobs.no_full_digits.empty()) note_source(result, listener);
    if (!jobs.no_forces.empty()) listener.note(jobs.no_forces + "; forces are left out");
    return result;
}

/// Notes forces of another state than the dipoles', and ends with a doubt if jobs were run for
/// different ones.
void note_roots(files_report& of, const report_listener& listener) {
    const displaced_set& set = of.is.set;
    const auto& reference = set.jobs.front().excited;
    if (!set.has_forces || !reference || reference->target == 0) return;
    const auto other = std::ranges::find_if(set.jobs, [&](const displaced_job& each) {
        return each.excited && each.excited->target != reference->target;
    });
    if (other != set.jobs.end()) {
        listener.note(flib::printable(other->name) + ": the forces are those of state " +
                      std::to_string(other->excited->target) + ", those of " +
                      flib::printable(set.jobs.front().name) + " of state " +
                      std::to_string(reference->target));
        of.clear = false;
    } else if (reference->target != reference->state) {
        listener.note(flib::printable(set.jobs.front().name) + ": the dipole is that of state " +
                      std::to_string(reference->state) + ", the forces are those of state " +
                      std::to_string(reference->target));
    }
}

files_report report_on_result_files(const set_files& wanted, const report_listener& listener) {
    result_file reference{wanted.reference, read_sgn_file(wanted.reference)};
    std::vector<result_file> files;
    for (const std::string& name : wanted.files) {
        listener.progress(files.size() + 1, "reading");
        // A pattern like *.sgn stands for the reference too.
        if (is_same_file(name, wanted.reference)) continue;
        files.push_back({name, read_sgn_file(name)});
    }
    listener.progress(wanted.files.size() + 1, "computing");
    if (const std::string line = better_reference_text(reference, files); !line.empty()) {
        listener.note(line);
    }
    const no_full_digits none = add_full_digits(reference, files);
    files_report result{report_on_results(reference, files, wanted.sum_rules)};
    result.is.no_full_digits = none.reason;
    if (none.doubtful) note_source(result, listener);
    note_roots(result, listener);
    return result;
}

}  // namespace

bool is_job(std::string_view name) {
    return name.ends_with(".fchk");
}

std::vector<std::string> files_read_for(std::span<const std::string> names,
                                        job_files (*find)(const std::string& checkpoint)) {
    std::vector<std::string> read;
    for (const std::string& name : names) {
        read.push_back(name);
        if (is_job(name)) {
            const job_files beside = find(name);
            read.insert(read.end(), {beside.log, beside.dump});
        } else {
            read.insert(read.end(),
                        {file_beside(name, ".fchk"), file_beside(name, std::string(suffix::log))});
        }
    }
    return read;
}

files_report report_on(const set_files& wanted, const report_listener& listener) {
    report_listener all = listener;
    if (!all.progress) all.progress = [](std::size_t, std::string_view) {};
    if (!all.note) all.note = [](const std::string&) {};
    return is_job(wanted.reference) ? report_on_jobs(wanted, all)
                                    : report_on_result_files(wanted, all);
}

}  // namespace sgn
