// One question asked of every program's file in turn. All the files hold the same molecule (water,
// or heavy water where masses are printed); tables that must not be taken hold another one.
#include <gmock/gmock.h>

#include <ostream>
#include <regex>
#include <set>

#include "flib/qm_file/qm_file_type.h"
#include "flib/qm_file/type_tag.h"
#include "qm_file/ask.h"

namespace {

using namespace flib;
using testing::DoubleNear;
using testing::Pointwise;
using enum reader;
using namespace flib::tag;

struct masses {
    double o = 0;
    double h = 0;
};
constexpr masses of_elements{15.99491464, 1.007825037};
constexpr masses heavy{17.99916, 2.0141};
constexpr masses not_read{};

struct program {
    const char* file;
    std::string_view tag;
    const char* version;
    std::int32_t class_code;
    std::string_view gives;  // n: atom count, z: atomic numbers, x: coordinates
    masses mass;
    std::string_view bare;  // how each reader takes a file with the banner alone
};

std::ostream& operator<<(std::ostream& out, const program& p) {
    return out << p.file;
}

constexpr program programs[] = {
    {"gaussian/water_cis.log", gaussian_log, "G16RevA.03", 2, "nzx", heavy, "q21q"},
    {"gaussian/water_freq.log", gaussian_log, "G16RevC.01", 2, "nzx", heavy, "q21q"},
    {"gaussian/water.fchk", gaussian_fchk, "UNKNOWN", -1, "nz", heavy, "3qqq"},
    {"gaussian/water.mat.txt", gaussian_mat, "2", -1, "", not_read, "qqqq"},
    {"gaussian/water.cis", gaussian_rwf, "0", 1, "", not_read, "qqqq"},
    {"chemshell/water.out", chemshell, "v3.7.1", 4, "nzx", heavy, "q00q"},
    {"molpro/water.out", molpro, "", -1, "", not_read, "qqqq"},
    {"turbomole/ridft.out", turbomole, "7.3", 1, "nzx", of_elements, "220q"},
    {"turbomole/aoforce.out", turbomole, "5 9 0", 1, "nzx", heavy, "220q"},
    {"turbomole/control", turbomole_ctrl, "0", 1, "n", not_read, "2qqq"},
    {"evc/water.evc", evc, "1.2", 3, "nzx", heavy, "22qq"},
    {"numforce/water.out", numforce, "2.1", 3, "nzx", heavy, "22qq"},
    {"pwout/water.out", pwout, "6.7MaX", 3, "n", not_read, "2qqq"},
    {"vasp/OUTCAR", vasp, "5.4.4.18Apr17-6-g9f103f2a35", 3, "nx", not_read, "2qqq"},
    {"nwchem/water.out", nwchem, "7.0.2", 0, "nzx", of_elements, "222q"},
    {"cif/water.cif", cif, "0", 0, "n", not_read, "cqqq"},
    {"wien2k/case.scf", wien2k_1, "0", 0, "", not_read, "qqqq"},
    {"wien2k/case.spaghetti_ene", wien2k_spe, "0", 0, "", not_read, "qqqq"},
    {"gamess_us/water.out", gamess_us, "30 SEP 2017 (R2)", 0, "nzx", heavy, "22qq"},
    {"qchem/water.out", qchem, "5.1", 0, "nzx", heavy, "22qq"},
    {"orca/water.hess", orca_hessian, "0", 0, "nzx", heavy, "22qq"},
    {"orca/water.out", orca, "5.1.2", 0, "nzx", not_read, "22qq"},
    {"terachem/water.out", terachem, "v1.94V-2019.08-dev", 0, "nzx", of_elements, "22qq"},
};

class Program : public testing::TestWithParam<program> {
  protected:
    const std::string file = support::data_file(GetParam().file);
    static bool gives(char what) { return GetParam().gives.find(what) != std::string_view::npos; }
};

TEST_P(Program, IsDetected) {
    line_buffer type{"before"};
    line_buffer version;
    std::int32_t info = untouched;
    qm_file_type(file, type, version, info);
    EXPECT_EQ(type.trimmed(), GetParam().tag == molpro ? "before" : GetParam().tag);
    EXPECT_EQ(version.trimmed(), GetParam().version);
    EXPECT_EQ(info, GetParam().class_code);
}

TEST_P(Program, GivesTheMolecule) {
    const auto expect = [&](reader who, const std::vector<double>& values, std::int32_t info) {
        const answer a = ask(who, file);
        EXPECT_EQ(a.end, std::nullopt);
        EXPECT_EQ(a.info, info);
        EXPECT_EQ(a.unchanged(), values.empty());
        EXPECT_THAT(values.empty() ? values : a.values, Pointwise(DoubleNear(1e-6), values));
    };
    std::vector<double> bohr{0, 0, 0.118, 0, 0.76, -0.472, 0, -0.76, -0.472};
    for (double& value : bohr) value /= 0.529177249;
    const auto [o, h] = GetParam().mass;
    // Only NWChem's tables are reported as read by the readers of numbers and masses.
    const std::int32_t info = GetParam().tag == nwchem ? 0 : -1;
    expect(natom, {gives('n') ? 3.0 : 0.0}, gives('n') ? 0 : -1);
    expect(nat, gives('z') ? std::vector<double>{8, 1, 1} : std::vector<double>{}, info);
    expect(coord, gives('x') ? bohr : std::vector<double>{}, gives('x') ? 0 : -1);
    expect(mass, o != 0 ? std::vector<double>{o, h, h} : std::vector<double>{}, info);
}

// Every program but Gaussian, whose logs have tests of their own.
TEST_P(Program, ForcesAreReadFromGaussianLogsOnly) {
    if (GetParam().tag == gaussian_log) return;
    const answer a = ask(force_tdip, file);
    EXPECT_EQ(a.end, std::nullopt);
    EXPECT_EQ(a.info, -1);
    const std::vector<double> expected{0, 0, 0, 0, 0, 0, 0, 0, 0, untouched, untouched, untouched};
    EXPECT_EQ(a.values, expected);
}

/// The file up to the lines that tell its program.
std::string banner_of(const support::scratch_directory& scratch, const std::string& file) {
    const std::string text = support::contents_of(file);
    for (std::size_t end = text.find('\n'); end != std::string::npos;
         end = text.find('\n', end + 1)) {
        const std::string banner = scratch.file("banner", text.substr(0, end + 1));
        bool told = false;
        support::ending_of([&] { told = type_tag_of(banner) == type_tag_of(file).trimmed(); });
        if (told) return banner;
    }
    return file;
}

// Which readers notice that their table is missing: q returns quietly, 0 to 2 is the exit status;
// c and 3 are counts, of no atoms and of the atom count of a checkpoint, which stands above.
TEST_P(Program, TablesMissing) {
    const support::scratch_directory scratch;
    const std::string banner = banner_of(scratch, file);
    std::string outcomes;
    for (const reader who : {natom, nat, coord, mass}) {
        const answer a = ask(who, banner);
        const bool counted = who == natom && a.info == 0;
        outcomes += a.end              ? std::to_string(a.end->status)
                    : !counted         ? "q"
                    : a.values[0] == 0 ? "c"
                                       : "3";
        EXPECT_TRUE(who == natom || a.unchanged());
        EXPECT_EQ(a.info, counted ? 0 : -1);
    }
    EXPECT_EQ(outcomes, GetParam().bare);
}

// A table that ends before the last atom is never taken for a whole one.
TEST_P(Program, TablesTooShort) {
    const auto ends = [&](reader who, bool table) {
        const answer a = ask(who, file, 1000);
        EXPECT_EQ(a.end.has_value(), table);
        if (a.end) {
            EXPECT_EQ(a.end->status, 2);
        }
        EXPECT_NE(a.info, 0);
    };
    ends(nat, gives('z'));
    ends(coord, gives('x'));
    ends(mass, GetParam().mass.o != 0);
}

TEST_P(Program, NoAtomsToRead) {
    for (const reader who : {nat, coord, mass}) {
        const support::ending expected{0, "  Error!\n  natom =                  -5\n  Stop!", true};
        EXPECT_EQ(ask(who, file, -5).end, expected);
        EXPECT_EQ(ask(who, file, 0).end->text, "  Error!\n  natom =                   0\n  Stop!");
    }
}

std::string name_of(const testing::TestParamInfo<program>& info) {
    return std::regex_replace(info.param.file, std::regex("[^a-z_]"), "_", {});
}

INSTANTIATE_TEST_SUITE_P(Every, Program, testing::ValuesIn(programs), name_of);

// Adding a program means a tag, and a file for it here.
TEST(ProgramTable, HasARowForEveryTag) {
    const std::string header =
        support::contents_of(support::data_file("../../lib/src/flib/qm_file/type_tag.h"));
    const std::regex declaration("std::string_view \\w+ = \"([^\"]+)\"");
    std::set<std::string> declared;
    for (std::sregex_iterator at(header.begin(), header.end(), declaration), end; at != end; ++at) {
        declared.insert((*at)[1]);
    }
    std::set<std::string> covered;
    for (const program& p : programs) covered.emplace(p.tag);
    EXPECT_GE(declared.size(), 21U);
    EXPECT_EQ(declared, covered);
}

}  // namespace
