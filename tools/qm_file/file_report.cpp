#include "qm_file/file_report.h"

#include <unistd.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "flib/excited/qm_file_nbasis_nbsuse.h"
#include "flib/io/stop_run.h"
#include "flib/qm_file/type_tag.h"
#include "flib/util/units.h"
#include "qm_file/hint.h"

namespace qm_file {
namespace {

using flib::quantity;

/// Why a result file does not give a quantity.
constexpr const char* not_in_results = "not in a result file";

flib::geometry geometry_of(const sgn::sgn_contents& result) {
    flib::geometry geometry;
    geometry.x = result.x;
    for (auto& atom : geometry.x) {
        for (double& coordinate : atom) coordinate /= flib::bohr_radius;
    }
    return geometry;
}

void take_result(flib::file_facts& facts, const sgn::sgn_contents& result,
                 std::span<const quantity> wanted) {
    const sgn::sgn_parameters& parameters = result.parameters;
    facts.missing.clear();
    facts.kind = {std::string(result_tag), "a result file of stigruz", "", -1};
    for (const quantity which : wanted) {
        switch (which) {
            case quantity::kind:
                break;
            case quantity::natom:
                facts.natom = parameters.natom;
                break;
            case quantity::numbers:
                facts.numbers = result.nat;
                break;
            case quantity::geometry:
                facts.geometry = geometry_of(result);
                break;
            case quantity::masses:
                facts.masses = result.mass;
                break;
            case quantity::forces:
                facts.forces = result.frc;
                break;
            case quantity::dipoles:
                facts.dipoles = {result.corrected_tdip};
                break;
            case quantity::excitations:
                facts.excitations = {parameters.mci, parameters.mi + parameters.nfc,
                                     parameters.nfc, parameters.mi,
                                     parameters.ma,  parameters.nfv};
                break;
            case quantity::oniom:
            case quantity::basis:
            case quantity::dump:
            case quantity::moments:
                facts.missing[which] = {not_in_results, false};
                break;
        }
    }
    facts.natom = parameters.natom;
}

}  // namespace

file_report report_of(const std::string& file, std::span<const quantity> wanted) {
    file_report report;
    try {
        report.facts = flib::facts_of(file, wanted);
    } catch (const flib::run_error& error) {
        report.facts.file = file;
        report.facts.missing[quantity::kind] = {error.what(), true};
        report.readable = false;
        return report;
    }
    if (report.facts.kind) return report;
    if (std::string hint = hint_for(file); !hint.empty()) {
        report.facts.missing[quantity::kind] = {std::move(hint), false};
    }
    if (!sgn::is_sgn_file(file)) return report;
    const auto damaged = [&](const std::string& why) {
        report.facts.missing[quantity::kind] = {"a damaged result file of stigruz: " + why, true};
    };
    try {
        report.result = sgn::read_sgn_file(file);
        take_result(report.facts, *report.result, wanted);
    } catch (const flib::io_error& error) {
        damaged(error.without_file());
    } catch (const flib::run_error& error) {
        damaged(error.what());
    }
    return report;
}

void add_basis_of_log(file_report& report, void (*say)(std::string_view text)) {
    flib::file_facts& facts = report.facts;
    if (!facts.kind || facts.kind->tag != flib::tag::gaussian_log) return;
    if (isatty(STDIN_FILENO) == 1) {
        say(flib::printable(facts.file) +
            ": waiting for a line with a label and the number of independent functions, such as "
            "\"NBsUse= 22\" of the log");
    }
    flib::basis_counts basis;
    std::int32_t info = 0;
    try {
        flib::qm_file_nbasis_nbsuse(facts.file, basis.alpha_electrons, basis.beta_electrons,
                                    basis.functions, basis.independent, info);
        facts.basis = basis;
        facts.missing.erase(quantity::basis);
    } catch (const flib::missing_keyword& missing) {
        // The reader wants both lines, in the order in which two job steps print them.
        const bool of_electrons = missing.keyword() == "NAE=";
        facts.missing[quantity::basis] = {
            of_electrons ? "no line with NAE= stands above the last line with RedAO=, as it does "
                           "from the second job step on"
                         : "no line of the log has RedAO= in columns 16 to 21",
            false};
    } catch (const flib::run_error& error) {
        facts.missing[quantity::basis] = {error.what(), true};
    }
}

std::string known_programs() {
    std::vector<std::string_view> programs;
    for (const flib::kind_in_words& kind : flib::kinds_in_words) {
        // The banner of Molpro outputs is never found.
        if (kind.tag != flib::tag::molpro) programs.push_back(kind.program);
    }
    std::ranges::sort(programs);
    programs.erase(std::unique(programs.begin(), programs.end()), programs.end());
    std::string text;
    for (const std::string_view program : programs) {
        if (!text.empty()) text += ", ";
        text += program;
    }
    return text;
}

}  // namespace qm_file
