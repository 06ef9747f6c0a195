// sgn_derive REFERENCE.sgn FILE.sgn...: from a set of result files to derivatives.

#include <unistd.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/output_file.h"
#include "common/program.h"
#include "common/progress.h"
#include "common/reference.h"
#include "sgn/check/judge.h"
#include "sgn/check/report.h"
#include "sgn/checkpoint/checkpoint.h"
#include "sgn/job/same_file.h"
#include "sgn/result/sgn_file.h"
#include "sgn_derive/html.h"
#include "sgn_derive/json.h"
#include "sgn_derive/molden.h"
#include "sgn_derive/options.h"
#include "sgn_derive/text.h"

namespace {

constexpr std::string_view tool = "sgn_derive";

int status_of(bool fine) {
    return fine ? tools::exit_status::fine : tools::exit_status::doubtful;
}

sgn::report report_on(const sgn_derive::options& options) {
    tools::progress progress(STDERR_FILENO, options.files.size() + 1);
    const sgn::result_file reference{options.reference, sgn::read_sgn_file(options.reference)};
    std::vector<sgn::result_file> files;
    for (const std::string& name : options.files) {
        progress.at(files.size() + 1, "reading");
        // A pattern like *.sgn stands for the reference too.
        if (sgn::is_same_file(name, options.reference)) continue;
        files.push_back({name, sgn::read_sgn_file(name)});
    }
    progress.at(options.files.size() + 1, "computing");
    tools::tell_better_reference(tool, reference, files);
    return sgn::analyse(reference, files);
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
    const sgn::report report = report_on(options);

    // All results are made before the first is written.
    std::vector<std::pair<std::string, std::string>> results;
    if (options.json) results.emplace_back(*options.json, sgn_derive::json_of(report));
    if (options.fchk) {
        results.emplace_back(*options.fchk, options.fchk_template
                                                ? checkpoint_of(report.set, report.derivatives,
                                                                *options.fchk_template)
                                                : checkpoint_of(report.set, report.derivatives));
    }
    if (options.molden) results.emplace_back(*options.molden, sgn_derive::molden_of(report));
    if (options.html) results.emplace_back(*options.html, sgn_derive::html_of(report));
    bool streamed = false;
    for (const auto& [name, contents] : results) {
        tools::write_result(name, contents);
        streamed = streamed || name == "-";
    }
    if (!streamed) tools::show(sgn_derive::text_of(report, terminal));
    return status_of(report.fine());
}

}  // namespace

int main(int argc, char** argv) {
    return tools::run_tool(tool, argc, argv, run);
}
