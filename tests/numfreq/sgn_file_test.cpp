// The result file: every field of what is written, and every line of what is read back.
#include "numfreq/sgn_file.h"

#include <gtest/gtest.h>

#include <sstream>

#include "flib/io/unit.h"
#include "flib/util/units.h"
#include "support/support.h"

namespace {

using numfreq::sgn_contents;
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

TEST(ResultFile, IsWrittenFieldByField) {
    constexpr double r = flib::bohr_radius;
    const numfreq::sgn_parameters parameters{-1, 2, 31, 4, 15, 6, 7, 5, {19, 28}, -1.2345678901e-3};
    flib::matrix<double> x(3, 2, "x");
    std::ranges::copy(std::array{-1.0, 2.0, 1234.567891 / r, 3 / r, -4.25 / r, 5.5 / r},
                      x.view().all().begin());
    flib::matrix<double> frc(3, 2, "forces");
    std::ranges::copy(std::array{0.11, -0.012, 0.0013, -0.21, 0.022, -0.0023},
                      frc.view().all().begin());
    const std::array symbol{numfreq::report_symbol("Cl"), numfreq::report_symbol("H")};
    const std::array<std::int32_t, 2> nat{17, 1};
    const std::array<double, 2> mass{34.968852729, 1.007825037};
    const scratch_directory scratch;
    const std::string path = (scratch.path() / "f").string();
    flib::open_replace(1, path);
    numfreq::write_sgn_parameters(1, parameters);
    numfreq::write_sgn_body(1, {symbol, nat, mass, x.view(), {0.15, -2.5, 3.5e101}, frc.view()});
    flib::commit_unit(1);
    EXPECT_EQ(support::contents_of(path), whole);

    const sgn_contents read = numfreq::read_sgn_file(path + "  ");
    const auto& [sign, natom, nmo, mi, ma, mci, nfc, nfv, maxloc, maxval] = read.parameters;
    EXPECT_EQ((std::array{sign, natom, nmo, mi, ma, mci, nfc, nfv, maxloc[0], maxloc[1]}),
              (std::array{-1, 2, 31, 4, 15, 6, 7, 5, 19, 28}));
    EXPECT_EQ(maxval, -1.2345678901e-3);
    EXPECT_EQ(std::string(read.symbol[0].padded()) + std::string(read.symbol[1].padded()), "ClH ");
    EXPECT_EQ(read.nat, (std::vector{17, 1}));
    EXPECT_EQ(read.mass, (std::vector{34.96885273, 1.00782504}));
    using vectors = std::vector<std::array<double, 3>>;
    EXPECT_EQ(read.x, (vectors{{-0.529177, 1.058354, 1234.567891}, {3, -4.25, 5.5}}));
    EXPECT_EQ(read.corrected_tdip, (std::array{0.15, -2.5, 3.5e101}));
    EXPECT_EQ(read.frc, (vectors{{0.11, -0.012, 0.0013}, {-0.21, 0.022, -0.0023}}));
}

/// Everything that is read, in one text; or how reading ends.
std::string read_back(const std::string& text) {
    const scratch_directory scratch;
    const std::string path = scratch.file("f", text);
    return support::answer_of(path, [&] {
        const sgn_contents read = numfreq::read_sgn_file(path);
        const numfreq::sgn_parameters& p = read.parameters;
        std::ostringstream all;
        for (const std::int32_t n :
             {p.sign, p.natom, p.nmo, p.mi, p.ma, p.mci, p.nfc, p.nfv, p.tden_maxloc[0],
              p.tden_maxloc[1], static_cast<std::int32_t>(read.symbol.size())}) {
            all << n << ' ';
        }
        for (const auto* vectors : {&read.x, &read.frc}) {
            for (const auto& [a, b, c] : *vectors) all << a << ' ' << b << ' ' << c << ' ';
        }
        for (const double component : read.corrected_tdip) all << component << ' ';
        all << p.tden_maxval;
        return all.str();
    });
}

// Each line is taken out, printed twice, cut by a character, and moved by a blank in turn.
TEST(ResultFile, IsReadOnlyIfEveryLineIsInItsPlace) {
    const std::string before = read_back(whole);
    std::string listing;
    int number = 0;
    for (std::size_t at = 0, end = 0; at < whole.size(); at = end) {
        end = whole.find('\n', at) + 1;
        const std::string line = whole.substr(at, end - at);
        const std::string shorter = line.substr(0, line.size() - 2) + '\n';
        listing += "line " + std::to_string(++number) + '\n';
        for (const std::string& instead : {std::string(), line + line, shorter, " " + line}) {
            const std::string now = read_back(whole.substr(0, at) + instead + whole.substr(end));
            listing += "    " + (now == before ? "nothing" : now) + '\n';
        }
    }
    listing += "blank lines at the end\n    " + read_back(whole + "  \n\n") + '\n';
    listing += "another name\n    " +
               read_back(support::replaced(whole, "Corrected_tdip", "Corrected_tdiq")) + '\n';
    listing += "another sign\n";
    for (const char* const sign : {"  2", " -2", "  0", "  1"}) {
        listing +=
            "    " +
            read_back(support::replaced(whole, " -1\n natom", std::string(sign) + "\n natom")) +
            '\n';
    }
    EXPECT_EQ(listing, support::contents_of(support::data_file("result_file_lines.txt")));
}

}  // namespace
