// sgn_displace as its users run it.
#include <gtest/gtest.h>

#include <sstream>

#include "sgn_displace/displaced_jobs.h"
#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using sgn_displace::parse_step;
using words = std::vector<std::string>;

const std::string water =
    "#p cis(nstates=4,root=1)/6-31+g(d) nosymm force\n\nWater\n\n0 1\n"
    "O  0.000000   0.000000   0.118000\n"
    "H  0.000000   0.760000  -0.472000\n"
    "H  0.000000  -0.760000  -0.472000\n\n";

class SgnDisplace : public testing::Test {
  protected:
    SgnDisplace() { scratch_.file("h2o.gjf", water); }

    support::outcome run(const words& arguments) const {
        return support::run({"sgn_displace", arguments, scratch_.path()});
    }
    /// Status and what is said, on one of the two outputs.
    std::string said(const words& arguments) const {
        const support::outcome ended = run(arguments);
        return std::to_string(ended.status) + ": " + ended.output + ended.errors;
    }
    std::string path(const std::string& name) const { return scratch_.path() / name; }

    support::scratch_directory scratch_;
};

TEST_F(SgnDisplace, WritesASet) {
    EXPECT_EQ(said({"h2o.gjf"}),
              "0: h2o_ref.gjf and 18 others: 3 of 3 atoms moved by +-0.01 Angstrom along x, y, z\n"
              "\n"
              "Next:\n"
              "  for job in h2o_ref.gjf h2o_[0-9]*[xyz][pm].gjf; do g16 \"$job\"; done\n"
              "  dump.sh h2o_ref.gjf h2o_[0-9]*[xyz][pm].gjf\n"
              "  loop.sh h2o_ref\n"
              "The first takes hours, for your queue. The scripts of the last two are in\n"
              "share/doc/stigruz/examples/workflow: text files of the jobs; then signs, their\n"
              "check, derivatives.\n");
    const words names = scratch_.names();
    ASSERT_EQ(names.size(), 20);
    const char* const coordinates[] = {"0.000000",  "0.000000", "0.118000",  "0.000000", "0.760000",
                                       "-0.472000", "0.000000", "-0.760000", "-0.472000"};
    // Every file differs from the reference in names and in one coordinate.
    for (const std::string& name : names) {
        if (name == "h2o.gjf") continue;
        const std::string job = fs::path(name).stem();
        std::istringstream items(water.substr(water.find("O  ")));
        std::string expected;
        for (int k = 0; k < 9; ++k) {
            std::string item;
            if (k % 3 == 0) items >> item;
            items >> item;
            EXPECT_EQ(item, coordinates[k]);
            const std::string here = "h2o_0" + std::to_string(k / 3 + 1) + "xyz"[k % 3];
            const double step = job == here + "p" ? 0.01 : job == here + "m" ? -0.01 : 0;
            expected += std::to_string(std::stod(item) + step) + " ";
        }
        std::istringstream written(support::contents_of(path(name)));
        std::string line, found;
        for (const std::string& first : {"%chk=" + job + ".chk", "%rwf=" + job + ".rwf"}) {
            std::getline(written, line);
            EXPECT_EQ(line, first);
        }
        while (std::getline(written, line) && line != "0 1") {
        }
        for (int k = 0; k < 9; ++k) {
            if (k % 3 == 0) written >> line;
            written >> line;
            found += line + " ";
        }
        EXPECT_EQ(found, expected) << name;
    }
}

TEST_F(SgnDisplace, TakesOptions) {
    std::string list;
    for (const char* const name : {"ref", "01xp", "01xm", "01yp", "01ym", "01zp", "01zm", "03xp",
                                   "03xm", "03yp", "03ym", "03zp", "03zm"}) {
        list.append("h2o_").append(name).append(".gjf\n");
    }
    EXPECT_EQ(said({"--list", "h2o.gjf", "--atoms", "3,1-1"}), "0: " + list);
    EXPECT_EQ(scratch_.names(), words{"h2o.gjf"});

    const support::outcome ended =
        run({"--step=0.005", "--one-sided", "--atoms=2-3,2", "--directory", "my set", "h2o.gjf"});
    EXPECT_EQ(ended.output.substr(0, ended.output.find("  for")),
              "h2o_ref.gjf and 6 others: 2 of 3 atoms moved by +0.005 Angstrom along x, y, z\n"
              "\nNext, after  cd 'my set':\n");
    EXPECT_EQ(std::distance(fs::directory_iterator(path("my set")), {}), 7);
    EXPECT_NE(support::contents_of(path("my set/h2o_02yp.gjf")).find("0.765000"),
              std::string::npos);

    EXPECT_EQ(said({"h2o.gjf", "--directory=my set"}),
              "2: sgn_displace: my set/h2o_ref.gjf: is there already, and so are 6 others of the "
              "files; nothing was written (--force overwrites)\n");
    EXPECT_EQ(run({"h2o.gjf", "--directory=my set", "--force"}).status, 0);
    EXPECT_NE(support::contents_of(path("my set/h2o_02yp.gjf")).find("0.770000"),
              std::string::npos);
    EXPECT_EQ(said({"--version"}).substr(0, 16), "0: sgn_displace ");
}

TEST_F(SgnDisplace, HighLayerUnlessOthersAreAskedFor) {
    scratch_.file("o.com",
                  "#p oniom(cis/3-21g:uff)\n\nt\n\n0 1\nO 0. 0. 0. L\nH 0. 0. 0. H\n"
                  "N 0. 0. 0. M\nC 0. 0. 0. H\n\n");
    const std::string all = run({"--list", "--one-sided", "o.com"}).output;
    EXPECT_EQ(
        all, "o_ref.gjf\no_02xp.gjf\no_02yp.gjf\no_02zp.gjf\no_04xp.gjf\no_04yp.gjf\no_04zp.gjf\n");
    EXPECT_EQ(run({"--list", "--one-sided", "o.com", "--atoms=1"}).output,
              "o_ref.gjf\no_01xp.gjf\no_01yp.gjf\no_01zp.gjf\n");
    scratch_.file("low", "#p oniom(cis/3-21g:uff)\n\nt\n\n0 1\nO 0. 0. 0. L\n\n");
    EXPECT_EQ(said({"low"}), "2: sgn_displace: no atom is in the high layer\n");
}

TEST_F(SgnDisplace, AsManyDigitsAsThereAreAtoms) {
    std::string text = water.substr(0, water.find("O  "));
    for (int i = 1; i <= 100; ++i) text += "He 0.0 0.0 " + std::to_string(i) + "\n";
    scratch_.file("ring.gjf", text + "\n");
    EXPECT_EQ(run({"--list", "ring.gjf", "--atoms=7", "--one-sided"}).output,
              "ring_ref.gjf\nring_007xp.gjf\nring_007yp.gjf\nring_007zp.gjf\n");
    // Not more than anybody means to run.
    for (int i = 101; i <= 16'667; ++i) text += "He 0 0 0\n";
    scratch_.file("wall.gjf", text + "\n");
    EXPECT_EQ(said({"--list", "wall.gjf"}),
              "2: sgn_displace: 100003 files: choose the atoms to be displaced with --atoms\n");
    EXPECT_EQ(run({"--list", "wall.gjf", "--atoms=1-16666"}).status, 0);
}

TEST_F(SgnDisplace, SaysWhatIsWrong) {
    scratch_.file("two words.gjf", water);
    scratch_.file("empty.gjf", "");
    fs::create_directory(path("room"));
    const std::string unfit =
        " cannot be that of a set: give the input one of letters, digits, '_', '.', '+' and '-'";
    const struct {
        words arguments;
        std::string error;
    } cases[] = {
        {{}, "needs one input file (usage: sgn_displace [OPTIONS] JOB.gjf)"},
        {{"h2o.gjf", "h2o.gjf"}, "needs one input file (usage: sgn_displace [OPTIONS] JOB.gjf)"},
        {{"--stpe=1", "h2o.gjf"}, "no option '--stpe=1' (see --help)"},
        {{"none.gjf"}, "none.gjf: cannot be opened: No such file or directory"},
        {{"room"}, "room: is a directory"},
        {{"/dev/zero"}, "/dev/zero: is not a regular file"},
        {{"empty.gjf"}, "empty.gjf: the file ends where a route (#...) was expected"},
        {{"two words.gjf"}, "the name 'two words'" + unfit},
        {{".gjf"}, "the name ''" + unfit},
        {{".hidden.gjf"}, "the name '.hidden'" + unfit},
        {{"--", "-x.gjf"}, "the name '-x'" + unfit},
        {{"h2o.gjf", "--atoms=4"}, "--atoms: there is no atom 4, the input has 3"},
        {{"h2o.gjf", "--atoms=0"}, "--atoms: expected numbers like 1-3,7, not '0'"},
        {{"h2o.gjf", "--atoms=1,"}, "--atoms: expected numbers like 1-3,7, not '1,'"},
        {{"h2o.gjf", "--atoms=3-1"}, "--atoms: '3-1' ends before it begins"},
        {{"h2o.gjf", "--atoms=1--2"}, "--atoms: expected numbers like 1-3,7, not '1--2'"},
        {{"h2o.gjf", "--step=0"}, "--step takes a length in Angstrom, 0.0001 to 1, not '0'"},
        {{"h2o.gjf", "--step=1.01"}, "--step takes a length in Angstrom, 0.0001 to 1, not '1.01'"},
        {{"h2o.gjf", "--step=-0.01"},
         "--step takes a length in Angstrom, 0.0001 to 1, not '-0.01'"},
        {{"h2o.gjf", "--step=big"}, "--step takes a length in Angstrom, 0.0001 to 1, not 'big'"},
        {{"h2o.gjf", "--step=0.00009"},
         "--step takes a length in Angstrom, 0.0001 to 1, not '0.00009'"},
        {{"h2o.gjf", "--directory=h2o.gjf"}, "h2o.gjf: is not a directory"},
        {{"h2o.gjf", "--directory=a/b"}, "a/b: cannot be made: No such file or directory"},
    };
    const words before = scratch_.names();
    for (const auto& [arguments, error] : cases) {
        EXPECT_EQ(said(arguments), "2: sgn_displace: " + error + "\n");
    }
    EXPECT_EQ(scratch_.names(), before);
}

TEST(Step, IsExactInEitherUnit) {
    using sgn_displace::length_unit;
    EXPECT_EQ(text_of(parse_step("0.0001", length_unit::angstrom)), "0.0001");
    EXPECT_EQ(text_of(parse_step("1", length_unit::angstrom)), "1");
    EXPECT_EQ(text_of(parse_step("0.010", length_unit::angstrom)), "0.010");
    EXPECT_EQ(text_of(parse_step("0.01", length_unit::bohr)), "0.0188972599");
}

TEST(NameOfSet, IsFitForAFileAndForAShell) {
    using sgn_displace::name_of_set;
    EXPECT_EQ(name_of_set("d-ir/A_1.opt+0-z.gjf"), "A_1.opt+0-z");
    EXPECT_EQ(name_of_set("job"), "job");
    for (const char* const unfit : {"-x.gjf", "..x.gjf", ".gjf", "a$b.gjf", "a/.b.gjf"}) {
        EXPECT_TRUE(support::ending_of([&] { name_of_set(unfit); })) << unfit;
    }
}

}  // namespace
