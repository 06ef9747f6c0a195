// qm_file: shows what files of quantum-chemistry programs hold.

#include <unistd.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "common/output_file.h"
#include "common/program.h"
#include "flib/io/stop_run.h"
#include "qm_file/probe.h"
#include "qm_file/show.h"

namespace {

using flib::quantity;
using qm_file::file_report;
using qm_file::request;

namespace exit_status = flib::exit_status;

void complain(std::string_view reason) {
    tools::complain("qm_file", reason);
}

std::vector<quantity> wanted_by(const request& asked) {
    if (asked.only != nullptr) return asked.only->parts;
    if (asked.xyz) return {quantity::numbers, quantity::geometry};
    return {std::begin(flib::all_quantities), std::end(flib::all_quantities)};
}

/// Complains of what the file does not give, if that was asked for by name or is damaged.
void tell_missing(const file_report& report, std::span<const quantity> by_name) {
    const std::string file = flib::printable(report.facts.file);
    if (!report.readable) {
        complain(report.facts.why_not(quantity::kind));
        return;
    }
    // Of an input the layers are read, though no program has written it.
    const auto is_missing = [&](quantity which) { return report.facts.missing.contains(which); };
    if (!report.facts.kind && std::ranges::any_of(by_name, is_missing)) {
        complain(file + ": " + std::string(report.facts.why_not(quantity::kind)) + "; known are " +
                 qm_file::known_programs());
        return;
    }
    for (const auto& [which, why] : report.facts.missing) {
        // Without atoms there is nothing else.
        const bool asked = std::ranges::count(by_name, which) != 0 ||
                           (!by_name.empty() && which == quantity::natom);
        if (!asked && !why.damaged) continue;
        complain(file + ": no " + std::string(flib::name_of(which)) + ": " + why.reason);
    }
}

bool gives(const file_report& report, const std::vector<quantity>& wanted) {
    // Whatever a file holds, its kind says that it was understood.
    const bool everything = wanted.size() == std::size(flib::all_quantities);
    if (everything || wanted.front() == quantity::kind) return report.facts.kind.has_value();
    // Symbols alone make no geometry.
    if (wanted.back() == quantity::geometry) return report.facts.geometry.has_value();
    return std::ranges::any_of(wanted,
                               [&](quantity which) { return report.facts.why_not(which).empty(); });
}

int show_files(const request& asked) {
    const std::vector<quantity> wanted = wanted_by(asked);
    const tools::terminal on = tools::terminal_at(STDOUT_FILENO);
    tools::json_value all = tools::json_value::array();
    bool given = false;
    bool damaged = false;
    bool first = true;
    for (const std::string& file : asked.files) {
        file_report report = qm_file::report_of(file, wanted);
        if (asked.only != nullptr && asked.only->parts.front() == quantity::basis) {
            add_basis_of_log(report, complain);
        }
        if (asked.json) all.push_back(json_of(report));
        if (asked.json == "-") {
            // Nothing else is shown then.
        } else if (asked.xyz) {
            tools::show(xyz(report));
        } else if (asked.only != nullptr) {
            tools::show(rows_of(report, *asked.only, asked.files.size() > 1, on));
        } else {
            if (!first) tools::show("\n");
            tools::show(summary(report, on));
        }
        first = false;
        const bool by_name = asked.xyz || (asked.only != nullptr && asked.json != "-");
        tell_missing(report, by_name ? std::span(wanted) : std::span<const quantity>());
        given = given || gives(report, wanted);
        damaged = damaged || std::ranges::any_of(report.facts.missing, [](const auto& absent) {
                      return absent.second.damaged;
                  });
    }
    if (asked.json) tools::write_result(*asked.json, tools::json_text(all));
    if (damaged) return exit_status::diagnostic;
    return given ? exit_status::complete : exit_status::stopped;
}

/// A probe ends as its routine does.
int show_probe(const request& asked) {
    try {
        tools::show(qm_file::probe(*asked.routine, asked.files.front(), asked.inputs));
    } catch (const flib::stop_run& stop) {
        std::string text;
        for (const std::string& line : stop.lines()) text += line + '\n';
        tools::show(text);
        return stop.status();
    }
    return exit_status::complete;
}

}  // namespace

namespace qm_file {

int run_program(int argc, char** argv) {
    return tools::run_tool("qm_file", argc, argv, [](std::span<const std::string_view> arguments) {
        const request asked = qm_file::request_of(arguments);
        if (asked.shown) {
            tools::show(*asked.shown);
            return exit_status::complete;
        }
        return asked.routine ? show_probe(asked) : show_files(asked);
    });
}

}  // namespace qm_file
