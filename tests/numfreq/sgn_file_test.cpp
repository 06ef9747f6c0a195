// The result file: every field of what is written, and every line of what is read back.
#include "sgn/result/sgn_file.h"

#include <gtest/gtest.h>

#include <sstream>

#include "flib/io/unit.h"
#include "flib/util/units.h"
#include "support/support.h"

namespace {

using sgn::sgn_contents;
using support::scratch_directory;

/// No value but the sign stands twice.
const std::string whole = R"(INFORMATION
 Transden_sign  =                   -1
 natom          =                    2
 nmo            =                   31
 mi             =                    4
 ma             =                   15
 mci            =                    6
 NFC            =                    7
 NFV            =                    5
 tden_maxloc    =                   19                  28
 tden_maxval    =    -1.2345678901E-03
 Center  Atomic  Atomic    Atomic            Coordinates (Angstroms)
 Number  Symbol   NAT       mass           X           Y           Z
      1    Cl     17    34.96885273       -0.529177    1.058354 1234.567891
      2    H       1     1.00782504        3.000000   -4.250000    5.500000
 Ground to excited state transition electric dipole moments (Au)
 Corrected_tdip =     1.5000000000E-01   -2.5000000000E+00   3.5000000000E+101
 Center Atomic Forces (Hartrees/Bohr)
      1    1.1000000000E-01   -1.2000000000E-02    1.3000000000E-03
      2   -2.1000000000E-01    2.2000000000E-02   -2.3000000000E-03
)";

const std::string whole_read =
    "-1 natom2 nmo31 mi4 ma15 mci6 NFC7 NFV5\n"
    "(19 28) -0.0012345678901\n"
    "Cl 17 34.96885273 [-0.529177 1.058354 1234.567891] [0.11 -0.012 0.0013]\n"
    "H  1 1.00782504 [3 -4.25 5.5] [-0.21 0.022 -0.0023]\n"
    "[0.15 -2.5 3.5e+101]\n";

/// Everything that is read: sign and counts, the element, a line per atom, the dipole; or how
/// reading ends.
std::string read_back(const std::string& file) {
    return support::answer_of(file, [&] {
        const sgn_contents read = sgn::read_sgn_file(file);
        const sgn::sgn_parameters& p = read.parameters;
        std::ostringstream all;
        all.precision(12);
        all << p.sign;
        for (const auto& [name, value] : sgn::sgn_counts) all << ' ' << name << p.*value;
        all << "\n(" << p.tden_maxloc[0] << ' ' << p.tden_maxloc[1] << ") " << p.tden_maxval
            << '\n';
        const auto add = [&](const std::array<double, 3>& v, const char* end) {
            all << '[' << v[0] << ' ' << v[1] << ' ' << v[2] << ']' << end;
        };
        for (std::size_t i = 0; i < read.symbol.size(); ++i) {
            all << read.symbol[i].padded() << ' ' << read.nat.at(i) << ' ' << read.mass.at(i)
                << ' ';
            add(read.x.at(i), " ");
            add(read.frc.at(i), "\n");
        }
        add(read.corrected_tdip, "\n");
        return all.str();
    });
}

TEST(ResultFile, IsWrittenFieldByField) {
    constexpr double r = flib::bohr_radius;
    const sgn::sgn_parameters parameters{-1, 2, 31, 4, 15, 6, 7, 5, {19, 28}, -1.2345678901e-3};
    const std::array x{-1.0, 2.0, 1234.567891 / r, 3 / r, -4.25 / r, 5.5 / r};
    const std::array frc{0.11, -0.012, 0.0013, -0.21, 0.022, -0.0023};
    const std::array symbol{sgn::report_symbol("Cl"), sgn::report_symbol("H")};
    const std::array<std::int32_t, 2> nat{17, 1};
    const std::array<double, 2> mass{34.968852729, 1.007825037};
    const scratch_directory scratch;
    const std::string path = (scratch.path() / "f").string();
    flib::open_replace(1, path);
    sgn::write_sgn_parameters(1, parameters);
    sgn::write_sgn_body(
        1, {symbol, nat, mass, {x.data(), 3, 2}, {0.15, -2.5, 3.5e101}, {frc.data(), 3, 2}});
    flib::commit_unit(1);
    EXPECT_EQ(support::contents_of(path), whole);
    EXPECT_EQ(read_back(path + "  "), whole_read);
}

TEST(ResultFile, IsNotWrittenOfArraysOfOtherAtoms) {
    const std::array<double, 6> six{};
    const std::array symbol{sgn::report_symbol("Cl"), sgn::report_symbol("H")};
    const std::array<std::int32_t, 2> nat{17, 1};
    const std::span<const double> mass = std::span(six).first(2);
    const flib::matrix_view<const double> xyz(six.data(), 3, 2);
    const sgn::sgn_body whole_body{symbol, nat, mass, xyz, {}, xyz};
    const std::pair<const char*, void (*)(sgn::sgn_body&)> cases[] = {
        {"1 symbols instead of 2", [](auto& of) { of.symbol = of.symbol.first(1); }},
        {"1 masses instead of 2", [](auto& of) { of.mass = of.mass.first(1); }},
        {"3 coordinates instead of 6",
         [](auto& of) {
             of.x = {of.x.data(), 3, 1};
         }},
        {"3 forces instead of 6",
         [](auto& of) {
             of.frc = {of.frc.data(), 3, 1};
         }},
        {"2 components instead of 3",
         [](auto& of) {
             of.frc = {of.frc.data(), 2, 3};
         }},
    };
    const scratch_directory scratch;
    flib::open_replace(1, (scratch.path() / "f").string());
    for (const auto& [counts, change] : cases) {
        sgn::sgn_body changed = whole_body;
        change(changed);
        const std::string answer = support::answer_of("", [&] {
            sgn::write_sgn_body(1, changed);
            return std::string("written");
        });
        EXPECT_EQ(answer, "exit 2: the result cannot be written: there are " + std::string(counts));
    }
    flib::commit_unit(1);
    EXPECT_EQ(support::contents_of(scratch.path() / "f"), "");
}

/// The lines of a text that are not those of another one; all of them if it only has fewer.
std::string lines_beside(const std::string& other, const std::string& text) {
    if (text == other) return "    nothing\n";
    std::istringstream lines(text);
    std::string different;
    std::string all;
    for (std::string line; std::getline(lines, line); all += "    " + line + '\n') {
        const bool known = ("\n" + other).find("\n" + line + "\n") != std::string::npos;
        if (!known) different += "    " + line + '\n';
    }
    return different.empty() ? all : different;
}

// Each line is taken out, printed twice, cut by a character, and moved by a blank in turn.
TEST(ResultFile, IsReadOnlyIfEveryLineIsInItsPlace) {
    const scratch_directory scratch;
    const auto reading = [&](const std::string& text) {
        return lines_beside(whole_read, read_back(scratch.file("f", text)));
    };
    std::string listing;
    int number = 0;
    for (std::size_t at = 0, end = 0; at < whole.size(); at = end) {
        end = whole.find('\n', at) + 1;
        const std::string line = whole.substr(at, end - at);
        const std::string shorter = line.substr(0, line.size() - 2) + '\n';
        listing += "line " + std::to_string(++number) + '\n';
        for (const std::string& instead : {std::string(), line + line, shorter, " " + line}) {
            listing += reading(whole.substr(0, at) + instead + whole.substr(end));
        }
    }
    listing += "blank lines at the end\n" + reading(whole + "  \n\n") + "another name\n" +
               reading(support::replaced(whole, "Corrected_tdip", "Corrected_tdiq")) +
               "another sign\n";
    for (const char* const sign : {"  2\n natom", " -2\n natom", "  0\n natom", "  1\n natom"}) {
        listing += reading(support::replaced(whole, " -1\n natom", sign));
    }
    EXPECT_EQ(listing, support::contents_of(support::data_file("result_file_lines.txt")));
}

}  // namespace
