#include "qm_file/file_report.h"

#include <unistd.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "flib/excited/qm_file_nbasis_nbsuse.h"
#include "flib/io/stop_run.h"
#include "flib/qm_file/type_tag.h"
#include "qm_file/hint.h"

namespace qm_file {

using flib::quantity;

file_report report_of(const std::string& file, std::span<const quantity> wanted) {
    file_report report;
    try {
        sgn::facts_and_result of = sgn::facts_with_result(file, wanted);
        report.facts = std::move(of.facts);
        report.result = std::move(of.result);
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
