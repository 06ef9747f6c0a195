// sgn_check REFERENCE.sgn FILE.sgn...: which signs of a set of result files deserve doubt.

#include <unistd.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/output_file.h"
#include "common/program.h"
#include "flib/io/stop_run.h"
#include "sgn/check/check.h"
#include "sgn/job/same_file.h"
#include "sgn/result/sgn_file.h"
#include "sgn/set/centre.h"
#include "sgn/set/input_numbers.h"
#include "sgn/set/surroundings.h"
#include "sgn_check/options.h"
#include "sgn_check/report.h"

namespace {

constexpr std::string_view tool = "sgn_check";

/// Reads `name` to the end of `read`, or complains.
void read_file(const std::string& name, std::vector<sgn::result_file>& read,
               std::vector<sgn_check::unreadable_file>& unreadable) {
    try {
        read.push_back({name, sgn::read_sgn_file(name)});
    } catch (const flib::run_error& error) {
        tools::complain(tool, error.what());
        unreadable.push_back({name, error.what()});
    }
}

int run(std::span<const std::string_view> arguments) {
    const sgn_check::options options = sgn_check::parse_options(arguments);
    if (options.shown) {
        tools::show(*options.shown);
        return tools::exit_status::fine;
    }
    std::vector<sgn::result_file> reference;
    std::vector<sgn::result_file> files;
    std::vector<sgn_check::unreadable_file> unreadable;
    read_file(options.reference, reference, unreadable);
    bool others = false;
    for (const std::string& name : options.files) {
        // A pattern like *.sgn stands for the reference too.
        if (sgn::is_same_file(name, options.reference)) continue;
        others = true;
        read_file(name, files, unreadable);
    }
    if (!others) throw flib::io_error(options.reference, 0, "there is no other file to check");

    if (!reference.empty()) {
        sgn::result_file& its = reference.front();
        its.input_numbers = sgn::input_numbers_beside(its.name, its.contents.x.size());
    }
    sgn::assessment assessment;
    if (!reference.empty() && options.limits.pairs) {
        const std::string better = sgn::better_reference_text(reference.front(), files);
        if (!better.empty()) tools::complain(tool, better);
    }
    if (!reference.empty()) assessment = sgn::check(reference.front(), files, options.limits);
    assessment.surroundings = sgn::surroundings_beside(options.reference);
    if (options.csv) {
        tools::show(sgn_check::csv(assessment));
    } else if (!reference.empty() && options.json != "-") {
        tools::show(sgn_check::table(assessment, unreadable, tools::terminal_at(STDOUT_FILENO)));
    }
    if (options.json) {
        tools::write_result(*options.json, sgn_check::json(assessment, unreadable, options.limits));
    }
    if (!unreadable.empty()) return tools::exit_status::failed;
    return assessment.fine() ? tools::exit_status::fine : tools::exit_status::doubtful;
}

}  // namespace

namespace sgn_check {

int run_program(int argc, char** argv) {
    return tools::run_tool(tool, argc, argv, run);
}

}  // namespace sgn_check
