// sgn_displace JOB.gjf: the inputs of a whole set from one Gaussian input.

#include "common/program.h"
#include "flib/io/stop_run.h"
#include "sgn/inputs/displaced_jobs.h"
#include "sgn/inputs/file_set.h"
#include "sgn_displace/options.h"
#include "sgn_displace/summary.h"

namespace {

using namespace sgn::inputs;
using namespace sgn_displace;

int run(std::span<const std::string_view> arguments) {
    const options given = parse_options(arguments);
    if (given.shown) {
        tools::show(*given.shown);
        return tools::exit_status::fine;
    }
    const std::string set = name_of_set(given.input);
    const job_template job = read_input(given.input, given.directory);
    const std::vector<named_step> steps = given.steps ? parse_steps(*given.steps, job.kind.unit)
                                                      : parse_step(given.step, job.kind.unit);
    const std::size_t natom = job.atoms.size();
    const std::vector<displaced_job> jobs =
        jobs_of_set(set, given.atoms ? parse_atom_list(*given.atoms, natom) : usual_atoms(job),
                    natom, given.one_sided, steps);
    if (jobs.size() > most_jobs) {
        throw flib::run_error(std::to_string(jobs.size()) +
                              " files: choose the atoms to be displaced with --atoms");
    }
    const bool asked_for = given.atoms || given.overwrite || given.only_list;
    if (jobs.size() > usual_jobs && !asked_for) {
        throw flib::run_error(std::to_string(jobs.size()) +
                              " files: choose the atoms to be displaced with --atoms, or have all "
                              "written with --force");
    }
    std::vector<std::string> files;
    files.reserve(jobs.size());
    for (const displaced_job& each : jobs) files.push_back(each.name + ".gjf");
    if (given.only_list) {
        std::string names;
        for (const std::string& file : files) names.append(file).append("\n");
        tools::show(names);
        return tools::exit_status::fine;
    }
    write_file_set(
        given.directory, files, [&](std::size_t i) { return input_of(job, jobs[i], steps); },
        given.overwrite);
    try {
        tools::show(summary(given, job, jobs, steps));
    } catch (const flib::run_error& error) {
        throw flib::run_error(std::string("all files were written, but ") + error.what());
    }
    return tools::exit_status::fine;
}

}  // namespace

namespace sgn_displace {

int run_program(int argc, char** argv) {
    return tools::run_tool("sgn_displace", argc, argv, run);
}

}  // namespace sgn_displace
