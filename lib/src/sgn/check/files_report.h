// The report on a set that is given by the names of its files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sgn/check/report.h"
#include "sgn/job/job.h"

namespace sgn {

/// Result files (NAME.sgn), or jobs (NAME.fchk with log and dump) whose states are followed.
struct set_files {
    std::string reference;
    std::vector<std::string> files;       ///< the reference among them does not count
    std::optional<std::int32_t> state{};  ///< of the reference, where it is a job
    bool sum_rules = true;                ///< they are judged
    /// Where the log and the dump of a checkpoint are: files_of or files_beside.
    job_files (*find)(const std::string& checkpoint) = files_of;
};

/// What is read of a set of these names: of a job its log and dump too, as `find` tells them, and
/// what may lie beside a result file. Throws as `find` does.
std::vector<std::string> files_read_for(
    std::span<const std::string> names,
    job_files (*find)(const std::string& checkpoint) = files_of);

/// Who is told how far it is, and what should be known beside the report, a line each.
struct report_listener {
    /// `step` of as many as there are files and one more; `what` is done, in words.
    std::function<void(std::size_t step, std::string_view what)> progress{};
    std::function<void(const std::string& line)> note{};
};

struct files_report {
    report is;
    bool clear = true;  ///< states went on without a doubt, with all digits that jobs have
    /// It was noted why the digits of checkpoints that are there do not count.
    bool without_digits = false;
};

/// Whether a name is that of a job's checkpoint, not of a result file.
bool is_job(std::string_view name);

/// Reads the files, judges and differentiates their set as analyse() does, and looks for what lies
/// beside them: moments, surroundings, numbers of atoms. Ends as set_of_jobs(), read_sgn_file() and
/// analyse() do, and by what a listener throws.
files_report report_on(const set_files& wanted, const report_listener& listener = {});

}  // namespace sgn
