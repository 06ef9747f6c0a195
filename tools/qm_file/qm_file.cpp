// qm_file: shows what the readers see in files of quantum-chemistry programs.

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "common/json.h"
#include "common/version.h"
#include "common/write_out.h"
#include "flib/io/number.h"
#include "flib/io/stop_run.h"
#include "qm_file/file_facts.h"
#include "qm_file/probe.h"
#include "qm_file/show.h"

namespace {

using qm_file::file_facts;
using qm_file::quantity;
using status_code = int;

constexpr std::string_view usage_text =
    R"(usage: qm_file [--json | --xyz] FILE...
       qm_file [--json] QUANTITY FILE...
       qm_file probe ROUTINE FILE [N...]
       qm_file --help | --version

Shows what each file of a quantum-chemistry program holds: the program and its version, the number
of atoms, ONIOM layers, geometry, masses, forces and transition dipoles.

QUANTITY is one of
)";

constexpr std::string_view help_rest = R"(
  --json     the same for programs: one array with an object per file, all numbers in full
  --xyz      the geometry in XYZ format (Angstrom)
  --help     this text
  --version  the version

Alone, coord is in Bohr, force in Hartree/Bohr (then one transition dipole per state, atomic units),
mass in u. nbasis of a Gaussian log reads a label and the number of independent functions from
standard input. A file whose name is that of a quantity is given as ./NAME.

probe shows the raw outputs of one routine, for bug reports and exact comparisons:
)";

constexpr std::string_view status_text = R"(
Exit status: 0 if every file could be read, 1 or 2 if a reader ended with that status (2: a file can
not be opened, or an entry of it cannot be read); of several files, the largest.
)";

/// A command line that makes no sense.
struct usage_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

void say(std::string_view text) {
    if (!tools::write_out(STDOUT_FILENO, text)) throw flib::run_error("standard output: no room");
}

void complain(std::string_view text) {
    static_cast<void>(
        tools::write_out(STDERR_FILENO, std::string("qm_file: ").append(text).append("\n")));
}

std::string help() {
    std::string text(usage_text);
    for (const auto& [which, name, words] : qm_file::quantity_names) {
        std::string line("  ");
        line.append(name).resize(13, ' ');
        text.append(line).append(words).append("\n");
    }
    text.append(help_rest).append(qm_file::probe_usage()).append(status_text);
    return text;
}

std::optional<quantity> quantity_of(std::string_view name) {
    for (const auto& known : qm_file::quantity_names) {
        if (known.name == name) return known.which;
    }
    return std::nullopt;
}

enum class form { text, json, xyz };

/// Reports what the reader of a quantity said when it ended, as the library's own ending.
status_code tell_ending(const qm_file::ending& how) {
    if (how.diagnostic) {
        complain(in_one_line(how));
    } else {
        std::string text;
        for (const std::string& line : how.lines) text += line + '\n';
        say(text);
    }
    return how.status;
}

/// Complains of what could not be read, as opposed to what is not there.
status_code tell_diagnostics(const file_facts& facts) {
    status_code status = flib::exit_status::complete;
    for (const auto& [which, how] : facts.endings) {
        if (!how.diagnostic) continue;
        complain(in_one_line(how));
        status = std::max(status, how.status);
    }
    return status;
}

/// One quantity of one file, in rows.
status_code show_quantity(const file_facts& facts, quantity which) {
    for (const quantity needed : {quantity::type, quantity::natom, which}) {
        const auto found = facts.endings.find(needed);
        if (found != facts.endings.end()) return tell_ending(found->second);
    }
    const std::string rows = rows_of(facts, which);
    if (rows.empty()) complain(flib::printable(facts.file) + ": not there");
    say(rows);
    return flib::exit_status::complete;
}

status_code show_file(const file_facts& facts, form shown, std::optional<quantity> only) {
    if (shown == form::text && only) return show_quantity(facts, *only);
    if (shown == form::xyz) {
        const std::string geometry = xyz(facts);
        if (geometry.empty()) complain(flib::printable(facts.file) + ": no geometry");
        say(geometry);
    } else if (shown == form::text) {
        say(summary(facts));
    }
    return tell_diagnostics(facts);
}

status_code show_files(const std::vector<std::string_view>& files, form shown,
                       std::optional<quantity> only) {
    std::vector<quantity> wanted;
    for (const auto& known : qm_file::quantity_names) {
        const bool of_xyz = known.which == quantity::nat || known.which == quantity::coord;
        if (only ? *only == known.which : shown != form::xyz || of_xyz) {
            wanted.push_back(known.which);
        }
    }
    status_code status = flib::exit_status::complete;
    tools::json_writer json;
    if (shown == form::json) json.begin_array();
    bool first = true;
    for (const std::string_view file : files) {
        const file_facts facts = qm_file::facts_of(file, wanted, only.has_value());
        if (shown == form::json) add_json(json, facts);
        if (shown == form::text && !only && !first) say("\n");
        first = false;
        status = std::max(status, show_file(facts, shown, only));
    }
    if (shown == form::json) {
        json.end_array();
        say(json.text());
    }
    return status;
}

status_code show_probe(const std::vector<std::string_view>& arguments) {
    if (arguments.size() < 3) throw usage_error("probe needs a routine and a file");
    std::vector<std::int32_t> inputs;
    for (std::size_t i = 3; i < arguments.size(); ++i) {
        std::int32_t& input = inputs.emplace_back();
        if (flib::parse_integer(arguments[i], input) != flib::number_error::none) {
            throw usage_error("'" + flib::printable(arguments[i]) + "' is not an integer");
        }
    }
    try {
        say(qm_file::probe(arguments[1], arguments[2], inputs));
    } catch (const std::invalid_argument& error) {
        throw usage_error(error.what());
    }
    return flib::exit_status::complete;
}

status_code run(std::vector<std::string_view> arguments) {
    form shown = form::text;
    while (!arguments.empty() && arguments.front().starts_with("--")) {
        const std::string_view option = arguments.front();
        arguments.erase(arguments.begin());
        if (option == "--") break;
        if (option == "--help") {
            say(help());
            return flib::exit_status::complete;
        }
        if (option == "--version") {
            say(std::string("qm_file ").append(tools::version()).append("\n"));
            return flib::exit_status::complete;
        }
        if (option == "--json") {
            shown = form::json;
        } else if (option == "--xyz") {
            shown = form::xyz;
        } else {
            throw usage_error("there is no option " + flib::printable(option));
        }
    }
    if (!arguments.empty() && arguments.front() == "probe") return show_probe(arguments);
    std::optional<quantity> only;
    if (!arguments.empty()) only = quantity_of(arguments.front());
    if (only) arguments.erase(arguments.begin());
    if (only && shown == form::xyz) throw usage_error("--xyz shows whole geometries only");
    if (arguments.empty()) throw usage_error("no file is given");
    return show_files(arguments, shown, only);
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return run({argv + (argc > 0 ? 1 : 0), argv + argc});
    } catch (const usage_error& error) {
        complain(std::string(error.what()) + " (see qm_file --help)");
    } catch (const flib::stop_run& stop) {
        return tell_ending({stop.status(), stop.lines(), false});
    } catch (const flib::run_error& error) {
        complain(error.what());
    } catch (const std::bad_alloc&) {
        complain("not enough memory");
    }
    return flib::exit_status::diagnostic;
}
