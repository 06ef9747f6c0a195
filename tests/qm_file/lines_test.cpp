// What every line of the programs' files means to every reader: each is taken out, moved by a blank
// and printed twice in turn. The listing below tests/data shows it beside the lines.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <map>

#include "flib/excited/qm_file_ci_xpy.h"
#include "flib/excited/qm_file_mo_coeff_nbasis_nbsuse.h"
#include "flib/excited/qm_file_nbasis_nbsuse.h"
#include "flib/excited/qm_file_nci.h"
#include "qm_file/ask.h"

namespace {

/// What the readers of excited states answer.
std::string ask_excited(char which, const std::string& file) {
    return support::answer_of(file, [&] {
        std::array<std::int32_t, 7> n{};
        std::vector<double> values(60, -77);
        const flib::matrix_view<double> mo(values.data(), 3, 4);
        if (which == 'c') flib::qm_file_nci(file, n[0], n[1], n[2], n[3], n[4], n[5], n[6]);
        if (which == 'b') flib::qm_file_nbasis_nbsuse(file, n[0], n[1], n[2], n[3], n[4]);
        if (which == 'o') flib::qm_file_mo_coeff_nbasis_nbsuse(file, 4, 3, mo, n[0]);
        if (which == 'a') flib::qm_file_ci_xpy(file, 2, 4, 3, values, n[0]);
        if (which == 'e') flib::qm_file_ci_energy(file, 3, values, n[0]);
        std::ostringstream answer;
        for (const std::int32_t count : n) answer << count << ' ';
        for (const double value : values) answer << value << ' ';
        return answer.str();
    });
}

/// The questions, a letter each: type, count of atoms (n), their numbers (z), coordinates (x),
/// masses, forces and dipoles, ONIOM named (i), its layers; configuration space (c), basis (b),
/// orbitals, amplitudes, energies.
constexpr std::string_view questions = "tnzxmfilcboae";

std::vector<std::string> answers_of(const std::string& file) {
    std::vector<std::string> answers{type_of(file)};
    for (const char* who : {"natom", "nat", "coord", "mass", "force_tdip", "ifoniom", "layers"}) {
        answers.push_back(ask(who, file));
    }
    for (const char which : questions.substr(answers.size())) {
        answers.push_back(ask_excited(which, file));
    }
    return answers;
}

/// How the answers about a changed file differ: . not at all, the exit status of one that ends the
/// run, x another answer.
std::string differences(const std::vector<std::string>& before, const std::string& file) {
    std::string all;
    const std::vector<std::string> after = answers_of(file);
    for (std::size_t i = 0; i < questions.size(); ++i) {
        all += after[i] == before[i] ? '.' : after[i].starts_with("exit ") ? after[i][5] : 'x';
    }
    return all;
}

/// The same file with other digits and other elements.
std::string of_another_molecule(std::string text) {
    for (char& c : text) {
        if (c >= '0' && c <= '9') c = c == '9' ? '1' : static_cast<char>(c + 1);
    }
    for (const char* const oxygen : {" O ", " o ", "\nO "}) {
        for (std::size_t at; (at = text.find(oxygen)) != std::string::npos;) text[at + 1] = 'P';
    }
    return text;
}

std::string listing_of(const std::string& name) {
    const support::scratch_directory scratch;
    const std::string text = support::contents_of(support::data_file(name));
    const std::vector<std::string> before = answers_of(scratch.file("f", text));
    const std::string other = of_another_molecule(text);
    std::string listing =
        differences(before, scratch.file("f", text + other)) + " another molecule behind it\n" +
        differences(before, scratch.file("f", other + text)) + " another molecule before it\n";
    for (std::size_t at = 0, end = 0; at < text.size(); at = end) {
        end = std::min(text.find('\n', at), text.size() - 1) + 1;
        const std::string line = text.substr(at, end - at);
        std::string row;
        for (const std::string& instead : {std::string(), " " + line, line + line}) {
            const std::string changed = text.substr(0, at) + instead + text.substr(end);
            row += differences(before, scratch.file("f", changed)) + ' ';
        }
        if (row.find_first_not_of(". ") != std::string::npos) listing += row + line;
    }
    return listing;
}

TEST(Readers, TakeEveryLineForWhatItIs) {
    // The basis of a log is asked for on standard input, which has nothing to say.
    const int standard_input = dup(STDIN_FILENO);
    const int nothing = open("/dev/null", O_RDONLY);
    dup2(nothing, STDIN_FILENO);
    // A section for each file; one without rows is filled in from the message of the failure.
    std::istringstream expected(support::contents_of(support::data_file("qm_file_lines.txt")));
    std::map<std::string, std::string> sections;
    std::string name;
    for (std::string line; std::getline(expected, line);) {
        if (line.starts_with("== ")) {
            name = line.substr(3);
            sections[name];
        } else if (!name.empty()) {
            sections[name] += line + '\n';
        }
    }
    for (const auto& [file, rows] : sections) EXPECT_EQ(listing_of(file), rows) << file;
    dup2(standard_input, STDIN_FILENO);
}

}  // namespace
