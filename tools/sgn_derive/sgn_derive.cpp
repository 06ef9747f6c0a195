// sgn_derive REFERENCE.sgn FILE.sgn...: from a set of result files to derivatives.

#include <unistd.h>

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "common/output_file.h"
#include "common/program.h"
#include "common/progress.h"
#include "common/version.h"
#include "flib/io/stop_run.h"
#include "sgn/check/files_report.h"
#include "sgn/check/judge.h"
#include "sgn/check/report.h"
#include "sgn/checkpoint/checkpoint.h"
#include "sgn/checkpoint/fcc_files.h"
#include "sgn/page/html.h"
#include "sgn/set/set_moments.h"
#include "sgn_derive/csv.h"
#include "sgn_derive/json.h"
#include "sgn_derive/molden.h"
#include "sgn_derive/options.h"
#include "sgn_derive/text.h"

namespace {

constexpr std::string_view tool = "sgn_derive";

int status_of(bool fine) {
    return fine ? tools::exit_status::fine : tools::exit_status::doubtful;
}

/// The report, and what is complained of beside it.
sgn::files_report report_on(const sgn_derive::options& options) {
    tools::progress progress(STDERR_FILENO, options.files.size() + 1);
    const sgn::report_listener listener{
        .progress = [&](std::size_t step, std::string_view what) { progress.at(step, what); },
        .note = [](const std::string& line) { tools::complain(tool, line); }};
    return sgn::report_on({options.reference, options.files, options.state, options.sum_rules},
                          listener);
}

/// The energy of the reference, which no result file tells.
double energy_of(const sgn_derive::options& options, const sgn::report& report) {
    if (options.fchk_template) {
        return sgn::energy_of_checkpoint(*options.fchk_template, report.set);
    }
    const std::string beside = sgn::file_beside(options.reference, ".fchk");
    if (std::error_code ignored; !std::filesystem::exists(beside, ignored)) {
        throw flib::run_error(
            "--fcc takes the energy from the reference's checkpoint: there is no " +
            flib::printable(beside) + ", name another with --template");
    }
    return sgn::energy_of_checkpoint(beside, report.set);
}

/// The files of a state for FCclasses, and what is said of one that cannot be made.
std::string add_fcc_files(const sgn_derive::options& options, const sgn::files_report& from,
                          std::vector<std::pair<std::string, std::string>>& results) {
    const sgn::report& report = from.is;
    for (sgn::fcc_file& each : sgn::fcc_files_of(*options.fcc, report.set, report.derivatives,
                                                 energy_of(options, report))) {
        results.emplace_back(std::move(each.name), std::move(each.text));
    }
    if (report.set.has_moments) return {};
    return flib::printable(sgn::fcc_names_of(*options.fcc).magnetic) +
           " is not written: it takes magnetic dipoles from the checkpoints of all jobs" +
           (from.without_digits ? "" : ", and " + report.no_full_digits);
}

int run(std::span<const std::string_view> arguments) {
    const sgn_derive::options options = sgn_derive::parse_options(arguments);
    if (options.shown) {
        tools::show(*options.shown);
        return tools::exit_status::fine;
    }
    const tools::terminal terminal = tools::terminal_at(STDOUT_FILENO);
    if (options.judge) {
        const sgn::judgement judged = sgn::judge(*options.judge);
        tools::show(sgn_derive::text_of(judged, *options.judge, terminal));
        return status_of(judged.fine());
    }
    const sgn::files_report found = report_on(options);
    const sgn::report& report = found.is;

    // All results are made before the first is written.
    std::vector<std::pair<std::string, std::string>> results;
    if (options.json) results.emplace_back(*options.json, sgn_derive::json_of(report));
    if (options.csv) results.emplace_back(*options.csv, sgn_derive::derivatives_csv(report));
    if (options.csv_modes) results.emplace_back(*options.csv_modes, sgn_derive::modes_csv(report));
    if (options.fchk) {
        results.emplace_back(*options.fchk, options.fchk_template
                                                ? checkpoint_of(report.set, report.derivatives,
                                                                *options.fchk_template)
                                                : checkpoint_of(report.set, report.derivatives));
    }
    const std::string not_written =
        options.fcc ? add_fcc_files(options, found, results) : std::string();
    if (options.molden) results.emplace_back(*options.molden, sgn_derive::molden_of(report));
    if (options.html) {
        results.emplace_back(
            *options.html,
            sgn::page::html_of(report, std::string(tool) + " " + std::string(tools::version())));
    }
    bool streamed = false;
    for (const auto& [name, contents] : results) {
        tools::write_result(name, contents);
        streamed = streamed || name == "-";
    }
    if (!not_written.empty()) tools::complain(tool, not_written);
    if (!streamed) tools::show(sgn_derive::text_of(report, terminal, options.shown_derivatives));
    return status_of(report.fine() && found.clear);
}

}  // namespace

namespace sgn_derive {

int run_program(int argc, char** argv) {
    return tools::run_tool(tool, argc, argv, run);
}

}  // namespace sgn_derive
