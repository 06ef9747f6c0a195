#include "sgn_displace/summary.h"
#include "flib/text/shown_text.h"

#include "common/terminal.h"
#include "flib/io/stop_run.h"

namespace sgn_displace {

using namespace sgn::inputs;

namespace {

constexpr std::size_t width = 80;

/// `word` for a shell; bare where it can be.
std::string quoted(const std::string& word) {
    constexpr std::string_view harmless =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_.+/-";
    if (word.find_first_not_of(harmless) == std::string::npos && !word.starts_with('-'))
        return word;
    if (flib::printable(word) != word) {
        // As bash and its like read it.
        std::string escaped = word.starts_with('-') ? "./" : "";
        for (const char c : word) escaped.append(c == '\'' || c == '\\' ? "\\" : "").append(1, c);
        std::string text = "$'";
        // printable() writes the rest as they do.
        return text.append(flib::printable(escaped)).append("'");
    }
    std::string text = word.starts_with('-') ? "'./" : "'";
    for (const char c : word) {
        if (c == '\'') {
            text += "'\\''";
        } else {
            text += c;
        }
    }
    return text + "'";
}

}  // namespace

std::string summary(const options& from, const job_template& job,
                    const std::vector<displaced_job>& jobs, std::span<const named_step> steps) {
    const std::string& reference = jobs.front().name;
    const std::string set = reference.substr(0, reference.rfind('_'));
    const std::size_t per_atom = (from.one_sided ? 3 : 6) * steps.size();
    const std::size_t others = jobs.size() - 1;
    std::string text = reference + ".gjf and " + std::to_string(others) +
                       " others: " + std::to_string(others / per_atom) + " of " +
                       std::to_string(job.atoms.size()) + " atoms moved by " +
                       (from.one_sided ? "+" : "+-") + from.steps.value_or(from.step) +
                       " Angstrom along x, y, z\n";
    for (const std::string& line : job.told) {
        bool first = true;
        for (const std::string& part : flib::wrapped(line, width - 4)) {
            text.append(first ? "  " : "    ").append(part).append("\n");
            first = false;
        }
    }
    text += "\nNext";
    if (from.directory != ".") text += ", after  cd " + quoted(from.directory);
    text += ":\n";
    // Printed as they are, the names hold nothing that a shell takes for something else.
    // NAME_2_01xp.gjf is of another set than NAME_01xp.gjf.
    std::string displaced = set + "_";
    for (std::size_t i = digits_of_numbers(job.atoms.size()); i > 0; --i) {
        displaced += "[0-9]";
    }
    displaced += from.one_sided ? "[xyz]p" : "[xyz][pm]";
    displaced += std::string(steps.front().name.size(), '?');
    const std::string inputs = reference + ".gjf " + displaced + ".gjf";
    text += "  for job in " + inputs + "; do g16 \"$job\"; done\n";
    text += "  dump.sh " + inputs + "\n";
    text += "  sgn_derive " + reference + ".fchk " + displaced + ".fchk\n";
    text += "or, for a result file of every job,  loop.sh " + reference + "\n";
    text +=
        "The first takes hours, for your queue. dump.sh makes text files of the jobs;\n"
        "then come signs, their check, derivatives. The scripts are in\n"
        "share/doc/stigruz/examples/workflow.\n";
    return text;
}

}  // namespace sgn_displace
