#include "support/support.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <stdexcept>

#include "flib/io/stop_run.h"

namespace support {

namespace fs = std::filesystem;

std::string data_file(std::string_view name) {
    return std::string(TEST_DATA "/").append(name);
}

namespace {

std::string unescaped(std::string text) {
    const std::pair<std::string, char> escapes[] = {{"\\n", '\n'}, {"\\r", '\r'}, {"\\t", '\t'}};
    for (const auto& [escape, meant] : escapes) {
        for (std::size_t at; (at = text.find(escape)) != std::string::npos;) {
            text.replace(at, escape.size(), 1, meant);
        }
    }
    for (std::size_t at; (at = text.find("\\{")) != std::string::npos;) {
        const std::size_t once = text.find(' ', at) + 1;
        const std::size_t end = text.find('}', once);
        std::string repeated;
        for (int n = std::stoi(text.substr(at + 2)); n > 0; --n) {
            repeated.append(text, once, end - once);
        }
        text.replace(at, end + 1 - at, repeated);
    }
    return text;
}

}  // namespace

std::vector<std::string> fields_of(std::string_view line) {
    const std::string text = " " + std::string(line) + " |";
    std::vector<std::string> fields;
    std::size_t from = 0;
    for (std::size_t bar; (bar = text.find(" |", from)) != std::string::npos; from = bar + 2) {
        const std::size_t start = std::min(from + 1, bar);  // after the blank, if there is one
        fields.push_back(unescaped(text.substr(start, bar - start)));
    }
    return fields;
}

std::vector<std::vector<std::string>> table_of(std::string_view fixture) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(contents_of(data_file(fixture)));
    for (std::string line; std::getline(lines, line);) {
        // Rows may begin with '#' too: routes do.
        const bool is_row = !rows.empty() && line.find(" |") != std::string::npos;
        if (line.empty() || (line.starts_with('#') && !is_row)) continue;
        rows.push_back(fields_of(line));
        if (rows.back().size() != rows.front().size()) {
            throw std::runtime_error("fields of " + line);
        }
    }
    if (rows.empty()) throw std::runtime_error("no rows in " + std::string(fixture));
    return rows;
}

std::vector<std::string> words_of(std::string_view text) {
    std::istringstream in{std::string(text)};
    std::vector<std::string> words;
    for (std::string word; in >> std::quoted(word);) words.push_back(word);
    return words;
}

std::string contents_of(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("no file " + path.string());
    return {std::istreambuf_iterator<char>(file), {}};
}

void write_file(const fs::path& path, std::string_view contents) {
    std::ofstream file(path, std::ios::binary);
    file << contents;
    if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
}

std::string replaced(std::string text, std::string_view from, std::string_view to) {
    std::size_t at = text.find(from);
    if (at == std::string::npos) throw std::runtime_error("no " + std::string(from));
    for (; at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

std::string edited(const std::string& text, const std::string& from, const std::string& to) {
    if (from.empty()) return text;
    return from == "END" ? text.substr(0, text.find(to)) : replaced(text, from, to);
}

scratch_directory::scratch_directory() {
    std::string pattern = (fs::temp_directory_path() / "stigruz-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no scratch directory");
    path_ = pattern;
}

scratch_directory::~scratch_directory() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::string scratch_directory::file(std::string_view name, std::string_view contents) const {
    const fs::path path = path_ / name;
    write_file(path, contents);
    return path.string();
}

std::vector<std::string> scratch_directory::names() const {
    std::vector<std::string> found;
    for (const auto& entry : fs::directory_iterator(path_)) {
        found.push_back(entry.path().filename().string());
    }
    std::sort(found.begin(), found.end());
    return found;
}

std::optional<ending> ending_of(const std::function<void()>& routine) {
    try {
        routine();
    } catch (const flib::ending& end) {
        std::string text;
        for (const std::string& line : end.lines()) text += (text.empty() ? "" : "\n") + line;
        return ending{end.status(), text, dynamic_cast<const flib::stop_run*>(&end) != nullptr};
    }
    return std::nullopt;
}

std::string answer_of(const std::string& file, const std::function<std::string()>& routine) {
    std::string answer;
    const std::optional<ending> end = ending_of([&] { answer = routine(); });
    if (!end) return answer;
    const std::size_t path = end->text.starts_with(file + ": ") ? file.size() + 2 : 0;
    return "exit " + std::to_string(end->status) + ": " + end->text.substr(path);
}

namespace {

constexpr const char* terminal_maker = "/usr/bin/script";

outcome run_on_terminal(const command& what, const std::string& tool) {
    const scratch_directory streams;
    const std::string errors = streams.file("errors", "");
    std::string line = "stty cols 80; NO_COLOR= TERM=" + what.terminal + " '" + tool + "'";
    for (const std::string& argument : what.arguments) line += " '" + argument + "'";
    line += " 2>" + errors;
    outcome ended = run(
        {terminal_maker, {"-qeE", "never", "-c", line, "/dev/null"}, what.directory, what.input});
    std::erase(ended.output, '\r');
    ended.errors += contents_of(errors);
    return ended;
}

}  // namespace

bool has_terminals() {
    return fs::exists(terminal_maker) &&
           run({terminal_maker, {"-qeE", "never", "-c", "true", "/dev/null"}, "/"}).status == 0;
}

outcome run(const command& what) {
    const std::string tool =
        what.tool.starts_with("/") ? what.tool : std::string(TOOL_DIRECTORY "/") + what.tool;
    if (!what.terminal.empty()) return run_on_terminal(what, tool);
    const scratch_directory streams;
    streams.file("input", what.input);
    // The shell opens the streams, and makes way for the tool.
    const std::string script =
        R"(s=$1; cd "$0" && shift && exec "$@" <"$s/input" >"$s/output" 2>"$s/errors")";
    std::vector<std::string> words{"sh", "-c", script, what.directory, streams.path(), tool};
    words.insert(words.end(), what.arguments.begin(), what.arguments.end());
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        // What the test runner left open would count against limits on open files.
        for (int descriptor = STDERR_FILENO + 1; descriptor < 1024; ++descriptor) close(descriptor);
        execv("/bin/sh", arguments.data());
        _exit(127);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) throw std::runtime_error("cannot run");
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status),
            contents_of(streams.path() / "output"), contents_of(streams.path() / "errors")};
}

}  // namespace support
