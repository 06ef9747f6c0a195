// One question asked of every program's file in turn. All the files hold the same molecule (water,
// or heavy water where masses are printed); tables that must not be taken hold another one.
#include <gmock/gmock.h>

#include <algorithm>
#include <ostream>
#include <regex>

#include "flib/qm_file/type_tag.h"
#include "qm_file/ask.h"

namespace {

using namespace flib::tag;
using support::data_file;
using testing::StartsWith;

constexpr const char* of_elements = "15.99491464 1.007825037 1.007825037";
constexpr const char* heavy = "17.99916 2.0141 2.0141";
constexpr const char* not_read = "";

struct program {
    const char* file;
    std::string_view tag;
    std::string version_and_class;
    std::string_view gives;  // n: atom count, z: atomic numbers, x: coordinates
    std::string mass;
    std::string bare;  // how the readers take a file with the banner alone, see reactions()
};

std::ostream& operator<<(std::ostream& out, const program& p) {
    return out << p.file;
}

const program programs[] = {
    {"gaussian/water_cis.log", gaussian_log, "G16RevA.03, 2", "nzx", heavy, "-21-1"},
    {"gaussian/water_freq.log", gaussian_log, "G16RevC.01, 2", "nzx", heavy, "-21-1"},
    {"gaussian/water.fchk", gaussian_fchk, "UNKNOWN, -1", "nz", heavy, "+----"},
    {"gaussian/water.mat.txt", gaussian_mat, "2, -1", "", not_read, "-----"},
    {"gaussian/water.cis", gaussian_rwf, "0, 1", "", not_read, "-----"},
    {"chemshell/water.out", chemshell, "v3.7.1, 4", "nzx", heavy, "-00--"},
    // Not recognised: the test for Molpro's banner cannot succeed.
    {"molpro/water.out", molpro, "unset, -1", "", not_read, "-----"},
    {"turbomole/ridft.out", turbomole, "7.3, 1", "nzx", of_elements, "220--"},
    {"turbomole/aoforce.out", turbomole, "5 9 0, 1", "nzx", heavy, "220--"},
    {"turbomole/control", turbomole_ctrl, "0, 1", "n", not_read, "2----"},
    {"evc/water.evc", evc, "1.2, 3", "nzx", heavy, "22---"},
    {"numforce/water.out", numforce, "2.1, 3", "nzx", heavy, "22---"},
    {"pwout/water.out", pwout, "6.7MaX, 3", "n", not_read, "2----"},
    {"vasp/OUTCAR", vasp, "5.4.4.18Apr17-6-g9f103f2a35, 3", "nx", not_read, "2----"},
    {"nwchem/water.out", nwchem, "7.0.2, 0", "nzx", of_elements, "222--"},
    {"cif/water.cif", cif, "0, 0", "n", not_read, "+----"},
    {"wien2k/case.scf", wien2k_1, "0, 0", "", not_read, "-----"},
    {"wien2k/case.spaghetti_ene", wien2k_spe, "0, 0", "", not_read, "-----"},
    {"gamess_us/water.out", gamess_us, "30 SEP 2017 (R2), 0", "nzx", heavy, "22---"},
    {"qchem/water.out", qchem, "5.1, 0", "nzx", heavy, "22---"},
    {"orca/water.hess", orca_hessian, "0, 0", "nzx", heavy, "22---"},
    {"orca/water.out", orca, "5.1.2, 0", "nzx", not_read, "22---"},
    {"terachem/water.out", terachem, "v1.94V-2019.08-dev, 0", "nzx", of_elements, "22---"},
};

/// The answer when there is nothing to read.
std::string nothing(std::string_view who) {
    return ask(who, data_file("wien2k/case.scf"));
}

/// How each reader takes a file: the exit status that ends the run, - when nothing is read, + when
/// something is.
std::string reactions(const std::string& file) {
    std::string all;
    for (const char* who : {"natom", "nat", "coord", "mass", "force_tdip"}) {
        const std::string answer = ask(who, file);
        all += answer.starts_with("exit ") ? answer[5] : answer == nothing(who) ? '-' : '+';
    }
    return all;
}

class Program : public testing::TestWithParam<program> {
  protected:
    const std::string file = data_file(GetParam().file);
};

TEST_P(Program, IsDetected) {
    const std::string tag(GetParam().tag == molpro ? "unset" : GetParam().tag);
    EXPECT_EQ(type_of(file), tag + ", " + GetParam().version_and_class);
}

// A table that ends before the last atom is never taken for a whole one.
TEST_P(Program, GivesTheMoleculeWhole) {
    const auto gives = [&](char what) { return GetParam().gives.find(what) != std::string::npos; };
    const auto expect = [&](std::string_view who, bool given, const std::string& answer,
                            int digits) {
        EXPECT_EQ(ask(who, file, 3, digits), given ? answer : nothing(who));
        if (given) {
            EXPECT_THAT(ask(who, file, 1000), StartsWith("exit 2: "));
        }
    };
    // Only NWChem's tables are reported as read by the readers of numbers and masses.
    const std::string info = GetParam().tag == nwchem ? "0: " : "-1: ";
    EXPECT_EQ(ask("natom", file), gives('n') ? "0: 3" : nothing("natom"));
    expect("nat", gives('z'), info + "8 1 1", 10);
    expect("coord", gives('x'), "0: 0 0 0.222988 0 1.43619 -0.891951 0 -1.43619 -0.891951", 6);
    expect("mass", GetParam().mass != not_read, info + GetParam().mass, 10);
    if (GetParam().tag != gaussian_log) {
        EXPECT_EQ(ask("force_tdip", file), nothing("force_tdip"));
    }
}

TEST_P(Program, TablesMissing) {
    const support::scratch_directory scratch;
    const std::string text = support::contents_of(file);
    // Line by line, until the program can be told; Molpro's file stays whole.
    const std::string tag = std::string(GetParam().tag) + ",";
    std::string banner;
    for (std::size_t end = 0; end <= text.size() && !type_of(banner).starts_with(tag); ++end) {
        end = std::min(text.find('\n', end), text.size());
        banner = scratch.file("banner", text.substr(0, end + 1));
    }
    EXPECT_EQ(reactions(banner), GetParam().bare);
}

INSTANTIATE_TEST_SUITE_P(Every, Program, testing::ValuesIn(programs), [](const auto& row) {
    return std::regex_replace(row.param.file, std::regex("[^a-z_]"), "_", {});
});

// Adding a program means a tag, and a file for it here.
TEST(Programs, HaveARowForEveryTag) {
    const std::string header =
        support::contents_of(data_file("../../lib/src/flib/qm_file/type_tag.h"));
    const std::regex declaration("std::string_view \\w+ = \"([^\"]+)\"");
    int declared = 0;
    for (std::sregex_iterator at(header.begin(), header.end(), declaration), end; at != end; ++at) {
        const std::string tag = (*at)[1];
        const auto names_it = [&](const program& p) { return p.tag == tag; };
        EXPECT_TRUE(std::ranges::any_of(programs, names_it)) << tag;
        ++declared;
    }
    EXPECT_GE(declared, 21);
}

TEST(Programs, CanNotBeToldFromEveryFile) {
    const support::scratch_directory scratch;
    EXPECT_EQ(reactions(scratch.path() / "missing"), "2222-");
    EXPECT_EQ(reactions(scratch.path()), "2222-");
    EXPECT_EQ(reactions(scratch.file("empty", "")), "22222");
    EXPECT_EQ(reactions(scratch.file("unknown", "nothing that is known\n")), "-----");
    EXPECT_EQ(reactions(scratch.file("binary", {"\0\xff\r\x80\0\n\n\x01", 8})), "-----");
}

}  // namespace
