// A job in a directory, an earlier result, and what a run may make of them.
#pragma once

#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "support/job.h"
#include "support/support.h"

namespace hostile {

/// The files of a job "a", its earlier result and a reference. A run without harm, of a job that a
/// shell command has changed before, tells what later ones are to come to.
class place {
  public:
    explicit place(std::vector<std::string> of_tool = {"a.fchk"}, const std::string& change = ":",
                   std::int32_t virtual_orbitals = 3, std::int32_t atoms = 3)
        : arguments(std::move(of_tool)) {
        // What cannot be allocated is no error of the program's.
        setenv("ASAN_OPTIONS", "allocator_may_return_null=1:max_allocation_size_mb=1024", 0);
        std::mt19937_64 random(17);
        support::write_job(at(""), "a",
                           support::random_job(random, atoms, 1, 2, virtual_orbitals, 1, 2));
        write("a.sgn", earlier_);
        run("\"$0\" a.fchk && mv a.sgn ref.sgn; echo an earlier result >a.sgn; " + change);
        for (const std::string& name : directory_.names()) {
            files_[name] = support::contents_of(at(name));
        }
        undisturbed_ = run();
        restore();
    }

    std::filesystem::path at(std::string_view name) const { return directory_.path() / name; }
    void write(std::string_view name, std::string_view text) const {
        support::write_file(at(name), text);
    }

    /// Puts back the files of the job and its earlier result.
    void restore() const {
        for (const auto& [name, text] : files_) write(name, text);
    }

    /// Runs a shell script, in which $0 is the tool and $1, $2... are the arguments. Returns
    /// "complete" if it ended as the undisturbed run did, or another ending that is promised:
    /// "diagnostic: ...", "message: ...", "signal ..." or "another result". All else is told as it
    /// was.
    std::string run(const std::string& script = R"(exec "$0" "$@")") const {
        std::vector<std::string> words{"-c", script, TOOL_DIRECTORY "/stigruz"};
        words.insert(words.end(), arguments.begin(), arguments.end());
        const auto [status, output, errors] = support::run({"/bin/sh", words, directory_.path()});
        std::string result = support::contents_of(at("a.sgn"));
        for (const std::string& name : directory_.names()) {
            if (name.starts_with(".")) result += "beside " + name;
        }
        const std::string told = "status " + std::to_string(status) + ", output '" + output +
                                 "', errors '" + errors + "', result:\n" + result;
        if (undisturbed_.empty()) return told;  // this is it
        if (told == undisturbed_) return "complete";
        // Before the one line of a diagnostic, a sanitizer may warn.
        const std::size_t last = errors.rfind('\n', errors.size() - 2) + 1;
        const std::string line = errors.substr(last);
        const bool one_line = last == 0 || errors.starts_with("==");
        if (result == earlier_ && status == 2 && output.empty() && one_line &&
            line.starts_with("stigruz: ") && line.ends_with("\n")) {
            return "diagnostic: " + line.substr(9, line.size() - 10);
        }
        if (status < 0 && result == earlier_ && output.empty() && errors.empty()) {
            return "signal " + std::to_string(-status);
        }
        if (status != 0 && status != 1) return told;
        // Beside a message a hint may stand.
        const bool hint = one_line && line.starts_with("stigruz: ") && line.ends_with("\n");
        if (result == earlier_ && output.ends_with("\n") && (errors.empty() || hint)) {
            return "message: " + output;
        }
        if (!errors.empty()) return told;
        const bool whole = status == 0 && output.empty() && result.starts_with("INFORMATION\n");
        return whole ? "another result" : told;
    }

    std::vector<std::string> arguments;

  private:
    const std::string earlier_ = "an earlier result\n";
    support::scratch_directory directory_;
    std::map<std::string, std::string> files_;
    std::string undisturbed_;
};

}  // namespace hostile
