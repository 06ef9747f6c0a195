#include "sgn_derive/options.h"

#include <iterator>
#include <utility>

#include "common/command_line.h"
#include "common/number_ranges.h"
#include "common/outputs.h"
#include "flib/io/stop_run.h"
#include "sgn/check/files_report.h"
#include "sgn/checkpoint/fcc_files.h"

namespace sgn_derive {
namespace {

std::int32_t state_of(const std::string& text) {
    const std::vector<tools::number_range> ranges = tools::parse_ranges("--state", text);
    if (ranges.size() == 1 && ranges.front().first == ranges.front().last) {
        return ranges.front().first;
    }
    throw flib::run_error("--state takes one state, not " + flib::quoted(text));
}

/// The name of a family of files, in an existing directory or not.
void take_family(const std::string& name, std::optional<std::string>& into) {
    if (name.empty() || name.starts_with('-') || name.ends_with('/') || name.ends_with(".sgn")) {
        throw flib::run_error(
            "--fcc needs a name for three files, NAME.fcc, eldip_NAME and magdip_NAME; " +
            flib::quoted(name) + " is none");
    }
    into = name;
}

/// Whatever else is wrong: a result goes to a place of its own. In "--json ref.sgn a.sgn" the name
/// of the file to be written was forgotten.
void check_outputs(const options& of, std::vector<std::string> read) {
    using sgn::output_kind;
    std::vector<tools::planned_output> outputs;
    const auto add = [&](const char* option, const auto& file, output_kind kind) {
        if (file) outputs.push_back({option, *file, kind});
    };
    add("--json", of.json, output_kind::json);
    add("--csv", of.csv, output_kind::table);
    add("--csv-modes", of.csv_modes, output_kind::table);
    add("--fchk", of.fchk, output_kind::checkpoint);
    add("--molden", of.molden, output_kind::modes);
    add("--html", of.html, output_kind::page);
    if (of.fcc) {
        const sgn::fcc_names files = sgn::fcc_names_of(*of.fcc);
        for (const std::string& name : {files.state, files.electric, files.magnetic}) {
            outputs.push_back({"--fcc", name, output_kind::vibronic});
        }
    }
    if (of.fchk_template) read.push_back(*of.fchk_template);
    tools::require_harmless(outputs, read, of.overwrite);
}

}  // namespace

options parse_options(std::span<const std::string_view> arguments) {
    constexpr const char* usage = "[OPTIONS] REFERENCE FILE...";
    options result;
    tools::command_line app(
        {.name = "sgn_derive",
         .usage = std::string(usage) + "\n--judge=FILE.fchk",
         .purpose = "Differentiates the transition dipole and the forces of a set of result files "
                    "of stigruz (NAME.sgn) or of jobs (NAME.fchk, with NAME.log and NAME.cis in "
                    "the working directory, whose states are followed), judges the signs of the "
                    "whole set by its sum rules, and computes "
                    "the harmonic modes and what they do to the dipole.",
         .rest = "FILE may be '-', standard output; nothing else is shown there then.\n"
                 "Status: 0 all fine, 1 something deserves doubt, 2 no result.\n"});
    tools::add_output(app, "--json", result.json, "write all numbers as JSON");
    tools::add_output(app, "--csv", result.csv, "write the derivatives of the dipole as CSV");
    tools::add_output(app, "--csv-modes", result.csv_modes, "write the normal modes as CSV");
    tools::add_output(app, "--fchk", result.fchk,
                      "write a formatted checkpoint for vibronic programs");
    tools::add_value(
        app, "--fcc", "NAME", [&](const std::string& name) { take_family(name, result.fcc); },
        "write NAME.fcc, eldip_NAME and magdip_NAME for FCclasses 3");
    const tools::option with_template =
        tools::add_input(app, "--template", result.fchk_template,
                         "the reference's checkpoint, whose energy and other sections are kept");
    tools::add_output(app, "--molden", result.molden, "write the normal modes for viewers");
    tools::add_output(app, "--html", result.html, "write a page to look at");
    tools::add_value(
        app, "--state", "K", [&](const std::string& text) { result.state = state_of(text); },
        "of jobs, the state of the reference (the one that it was run for)");
    bool no_sum_rules = false;
    tools::add_switch(app, "--no-sum-rules", no_sum_rules,
                      "do not judge the sum rules: outer field, embedding charges, link atoms");
    const auto take_units = [&](const std::string& units) {
        if (units != "au" && units != "angstrom") {
            throw flib::run_error("--units takes au or angstrom, not " + flib::quoted(units));
        }
        result.shown_derivatives.by_angstrom = units == "angstrom";
    };
    tools::add_value(app, "--units", "UNIT", take_units,
                     "show derivatives of the dipole by au (Bohr, the default) or angstrom");
    tools::add_switch(app, "--moments", result.shown_derivatives.moments,
                      "show those of velocity and magnetic dipole and velocity quadrupole, too");
    tools::add_input(app, "--judge", result.judge,
                     "judge the derivatives in a checkpoint by the sum rules, instead of a set");
    tools::add_switch(app, "--force", result.overwrite,
                      "overwrite files that these tools did not write");

    tools::parsed_line line = tools::parse_line(app, arguments);
    result.shown = std::move(line.shown);
    if (result.shown) return result;
    if (with_template.given() && !result.fchk && !result.fcc) {
        throw flib::run_error("--template makes no sense without --fchk or --fcc");
    }
    result.sum_rules = !no_sum_rules;
    if (result.judge) {
        if (!line.names.empty() || no_sum_rules || result.csv || result.csv_modes || result.json ||
            result.fchk || result.fcc || result.molden || result.html) {
            throw flib::run_error("--judge stands alone");
        }
        return result;
    }
    check_outputs(result, sgn::files_read_for(line.names));
    if (line.names.size() < 2) {
        throw flib::run_error("needs a reference and displaced files (usage: sgn_derive " +
                              std::string(usage) + ")");
    }
    result.reference = std::move(line.names.front());
    if (result.state && !sgn::is_job(result.reference)) {
        throw flib::run_error("--state is for jobs: NAME.fchk, not result files");
    }
    result.files.assign(std::make_move_iterator(std::next(line.names.begin())),
                        std::make_move_iterator(line.names.end()));
    return result;
}

}  // namespace sgn_derive
