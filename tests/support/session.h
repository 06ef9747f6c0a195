// Commands and what they say, as in a terminal.
#pragma once

#include <fnmatch.h>

#include <functional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "support/support.h"

namespace support {

struct session_step {
    std::string command;
    std::string said;  // on either output, and "[status N]" unless that is 0
};

/// The steps of a fixture below tests/data: lines "$ COMMAND", under each of them what it says.
/// Lines that start with "## " are left out.
inline std::vector<session_step> session_of(std::string_view fixture) {
    std::vector<session_step> steps;
    std::istringstream lines(contents_of(data_file(fixture)));
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("## ")) continue;
        if (line.starts_with("$ ")) {
            steps.push_back({line.substr(2), ""});
        } else {
            steps.at(steps.size() - 1).said += line + "\n";
        }
    }
    return steps;
}

/// The fields of a step, "A | B | C"; those that it leaves out are empty.
inline std::vector<std::string> fields_of(const std::string& step, std::size_t count) {
    std::vector<std::string> fields = fields_of(step);
    fields.resize(count);
    return fields;
}

/// What was told; `expected` itself if it was as expected, where "[...]" stands for anything.
inline std::string elided(const std::string& told, const std::string& expected) {
    std::string pattern;
    for (const char c : expected) {
        if (std::string_view("*?[\\").find(c) != std::string_view::npos) pattern += '\\';
        pattern += c;
    }
    for (std::size_t at; (at = pattern.find("\\[...]")) != std::string::npos;) {
        pattern.replace(at, 6, "*");
    }
    return fnmatch(pattern.c_str(), told.c_str(), 0) == 0 ? expected : told;
}

/// What a run says: its output, "errors: " and what it says there, and "[status N]" unless that is
/// 0.
inline std::string said_in(const outcome& run) {
    return run.output + (run.errors.empty() ? "" : "errors: " + run.errors) +
           (run.status == 0 ? "" : "[status " + std::to_string(run.status) + "]\n");
}

/// The same of a command of the shell, with the tools at hand. TERMINAL runs a tool on one of 80
/// columns.
inline std::string said_by(const std::string& line, const std::filesystem::path& directory) {
    const std::string shell = "export LC_ALL=C; PATH=" TOOL_DIRECTORY
                              ":$PATH; TERMINAL() { script -qeE never -c "
                              "\"stty cols 80; NO_COLOR= TERM=dumb $* 2>&3\" /dev/null 3>&2; }; " +
                              line;
    outcome ended = run({"/bin/sh", {"-c", shell}, directory});
    std::erase(ended.output, '\r');
    return said_in(ended);
}

/// Runs the steps of a fixture in a directory, by the shell and with the tools at hand, and
/// compares what they say, as `plain` puts it, with what is written there, "[...]" being anything.
inline void expect_session(
    std::string_view fixture, const std::filesystem::path& directory,
    const std::function<std::string(const std::string&)>& plain = std::identity()) {
    for (const auto& [line, said] : session_of(fixture)) {
        const std::string shell =
            "exec 2>&1; export LC_ALL=C; PATH=" TOOL_DIRECTORY ":$PATH; " + line;
        outcome ended = run({"/bin/sh", {"-c", shell}, directory});
        if (ended.status != 0) ended.output += "[status " + std::to_string(ended.status) + "]\n";
        EXPECT_EQ(elided(plain(ended.output), said), said) << "$ " << line;
    }
}

}  // namespace support
