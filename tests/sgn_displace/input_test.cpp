#include "sgn_displace/input.h"

#include <gtest/gtest.h>

#include "flib/io/stop_run.h"
#include "flib/util/gjf.h"
#include "support/support.h"

namespace {

using namespace sgn_displace;
using support::replaced;

const std::string water =
    "%Mem=2GB\n"
    "%chk=/scratch/old.chk\n"
    "%NProcShared=4\n"
    "%RWF=one,2GB,two,2GB\n"
    "# CIS(NStates=4,\n"
    "   root=1)/6-31+g(d)  ! the method\n"
    "\n"
    "Water, force and nosymm\n"
    "in the title\n"
    "\n"
    "0 1\n"
    "! atoms\n"
    "O       0.000000    0.000000    0.118000\n"
    "H(Iso=2)  0  .5,-0.76 -4.72D-1\n"
    "1\t0.0 -0.760 -0.472  ! hydrogen\n"
    "\n"
    "O 0\n"
    "6-31G\n"
    "****\n"
    "\n"
    "  \n";

const std::string water_reference =
    "%Mem=2GB\n"
    "%NProcShared=4\n"
    "%chk=w_ref.chk\n"
    "%rwf=w_ref.rwf\n"
    "#p CIS(NStates=4,\n"
    "   root=1)/6-31+g(d) nosymm force  ! the method\n" +
    water.substr(water.find("\n\nWater") + 1);

std::string told(const job_template& job) {
    std::string text;
    for (const std::string& line : job.told) text += line + "\n";
    return text;
}

TEST(Input, OnlyTheDisplacedCoordinateChanges) {
    const job_template job = parse_input("w.gjf", water);
    EXPECT_EQ(job.reference("w_ref"), water_reference);
    EXPECT_EQ(told(job),
              "#p written for #: the log must be a detailed one\n"
              "added to the route: nosymm force\n");
    const struct {
        std::size_t atom, axis;
        decimal step;
        const char* from;
        const char* to;
    } cases[] = {
        {0, 0, {1, 2}, "O       0.000000", "O       0.010000"},
        {0, 1, {-1, 2}, "  0.000000    0.118", " -0.010000    0.118"},
        {0, 2, {5, 9}, "    0.118000", " 0.118000005"},
        {0, 2, {-118, 3}, " 0.118000", " 0.000000"},
        {1, 0, {1, 2}, "  .5,", " 0.51,"},
        {1, 1, {1, 2}, ",-0.76 ", ",-0.75 "},
        {1, 2, {-1, 2}, "-4.72D-1", "  -0.482"},
        {2, 0, {-1, 2}, "1\t0.0 ", "1\t-0.01 "},
        {2, 2, {1, 4}, "-0.760 -0.472  !", "-0.760 -0.4719  !"},
    };
    for (const auto& [atom, axis, step, from, to] : cases) {
        std::string expected = replaced(water_reference, from, to);
        for (const char* const kind : {"chk", "rwf"}) {
            const std::string name = std::string("w_ref.") + kind;
            expected = replaced(expected, name, std::string("w_x.") + kind);
        }
        EXPECT_EQ(job.displaced("w_x", atom, axis, step), expected) << to;
    }
}

TEST(Input, AtomsStandWhereTheLibraryFindsThem) {
    const support::scratch_directory scratch;
    const std::string file = scratch.file("w.gjf", water_reference);
    std::int32_t line = 0;
    flib::get_gjf_charge_linenumber(file, line);
    EXPECT_EQ(line, 11);
    EXPECT_EQ(read_input(file).atoms.size(), 3);
}

const std::string oniom =
    "%oldchk=model.chk\r\n"
    "#n oniom(td(nstates=4,root=2)/6-31+g(d):uff) guess=read units=au geom=connectivity force=x\r\n"
    "\r\n"
    "ONIOM\r\n"
    "\r\n"
    "0/2,0,1,0 1\r\n"
    "Ar -1 4.5 0.8 -3.9 Low\r\n"
    "H-HW-0.4 0 0.0 0.76 -0.472 H\r\n"
    "C-CT--0.25(PDBName=C A,ResNum=3) 0 1 2 3 M H-HC 2 0.7\r\n"
    "8, 0, 0., 0., 0.118, high";

TEST(Input, OfLayersWithCarriageReturns) {
    const job_template job = parse_input("o.gjf", oniom);
    EXPECT_EQ(job.kind, (job_kind{length_unit::bohr, true, false, true, true, 2}));
    std::string layers;
    for (const atom& each : job.atoms) layers += each.layer;
    EXPECT_EQ(layers, "LHMH");
    EXPECT_EQ(
        told(job),
        "#p written for #n: the log must be a detailed one\n"
        "added to the route: nosymm\n"
        "root=2: the forces are those of that state, but stigruz takes the sign and dipole of "
        "the first (sgn_states follows the others)\n"
        "a blank line added after the last atom\n");
    std::string expected = replaced(oniom, "#n", "%chk=o_04zm.chk\r\n%rwf=o_04zm.rwf\r\n#p");
    expected = replaced(expected, "force=x\r\n", "force=x\r\nnosymm\r\n");
    expected = replaced(expected, "0.118", "0.108");
    EXPECT_EQ(job.displaced("o_04zm", 3, 2, {-1, 2}), expected + "\r\n\r\n");
}

TEST(Input, NeedsNoChange) {
    const std::string fine = "#P td/6-31g forces\n nosymm\n\nt\n\n0 1\nH 0 0 0\nH 0 0 10\n\n";
    const job_template job = parse_input("x", fine);
    EXPECT_EQ(job.body, fine);
    EXPECT_EQ(job.link0, "");
    EXPECT_NE(job.displaced("", 1, 2, {1, 16}), "");
    EXPECT_THROW((void)job.displaced("", 1, 2, {1, 17}), flib::run_error);
    EXPECT_EQ(told(job), "");
}

TEST(Input, LevelOfOutput) {
    const std::string rest = " nosymm force\n\nt\n\n0 1\nH 0 0 0\n\n";
    const struct {
        std::string route;
        std::string with_level;
    } cases[] = {
        {"#td", "#p td"},   {"# td", "#p td"},          {"#T td", "#p td"}, {" #\n td", " #p\n td"},
        {"#n/td", "#p/td"}, {"#tda/gen", "#p tda/gen"}, {"#P td", "#P td"}, {"#p\ntd", "#p\ntd"},
    };
    for (const auto& [route, with_level] : cases) {
        EXPECT_EQ(parse_input("x", route + rest).body, with_level + rest) << route;
    }
}

TEST(Input, RouteLinesStayShort) {
    const std::string rest = "\n\nt\n\n0 1\nH 0 0 0\n";
    const std::string fits = "#p td" + std::string(61, 'x');
    const job_template job = parse_input("x", fits.substr(0, 5) + " " + fits.substr(6) + rest);
    EXPECT_EQ(job.body, fits.substr(0, 5) + " " + fits.substr(6) + " nosymm force" + rest + "\n");
    EXPECT_EQ(told(job),
              "added to the route: nosymm force\n"
              "a blank line added after the last atom\n");
    const std::string long_one = fits.substr(0, 5) + " x" + fits.substr(6);
    EXPECT_EQ(parse_input("x", long_one + rest).body, long_one + "\nnosymm force" + rest + "\n");
}

TEST(Input, IsNoLargerThanInputsAre) {
    const support::scratch_directory scratch;
    const std::string file = scratch.file("w.gjf", water);
    const auto refusal = [&](std::uintmax_t size) {
        std::filesystem::resize_file(file, size);
        try {
            (void)read_input(file);
            return std::string();
        } catch (const flib::run_error& error) {
            return std::string(error.what()).substr(file.size());
        }
    };
    EXPECT_EQ(refusal(16 << 20), ": line 22: holds a byte 0, so it is no text");
    EXPECT_EQ(refusal((16 << 20) + 1), ": is too large for an input file (more than 16 MiB)");
}

TEST(Input, FilesThatJobsWouldShare) {
    const std::string rest = "#p td=read nosymm force\n\nt\n\n0 1\nH 0 0 0\n\n";
    const job_template job =
        parse_input("x", "%int=a\n%NoSave\n% Chk = a/b.chk \n%d2e=b\n%skr=c\n%scr=d\n" + rest);
    EXPECT_EQ(job.reference("r"), "%NoSave\n%oldchk=a/b.chk\n%chk=r.chk\n%rwf=r.rwf\n" + rest);
    EXPECT_EQ(told(job),
              "%int left out: the jobs would share the file\n"
              "%d2e left out: the jobs would share the file\n"
              "%skr left out: the jobs would share the file\n"
              "%scr left out: the jobs would share the file\n"
              "%oldchk=a/b.chk added: the route reads from it\n");
    EXPECT_EQ(parse_input("x", "%oldchk=a\n%chk=b\n" + rest).link0, "%oldchk=a\n");
}

/// `text` with a change, "FROM>TO"; "" cuts it off behind FROM.
std::string changed(const std::string& text, const std::string& change) {
    const std::size_t at = change.find('>');
    if (at != std::string::npos) return replaced(text, change.substr(0, at), change.substr(at + 1));
    return text.substr(0, text.find(change) + change.size());
}

TEST(Input, IsRefusedWithLineAndReason) {
    const std::string whole =
        "%mem=1GB\n# td/6-31g\n\ntitle\n\n0 1\nO 0 0.0 0.0 0.1\nH 0.0 0.7 0.4\n\nrest\n";
    const std::string cartesian = ", give Cartesian coordinates";
    const struct {
        std::string change;
        std::string error;
    } cases[] = {
        {"%mem=1GB\n# td>td",
         "1: expected a Link 0 command (%...) or the route (#...), not 'td/6-31g'"},
        {"%mem=1GB\n", "1: the file ends where a route (#...) was expected"},
        {"# td>b3lyp",
         "2: expected a Link 0 command (%...) or the route (#...), not 'b3lyp/6-31g'"},
        {"td>hf",
         "2: the route asks for no excited state whose amplitudes can be used: cis, td or tda"},
        {"td>td opt",
         "2: 'opt' in the route moves the geometry; take its result and leave the "
         "keyword out"},
        {"td>td(", "2: the parentheses of the route do not match"},
        {"td>td=read",
         "2: the route reads from a checkpoint, but neither %chk nor %oldchk names one"},
        {"6-31g", "2: the file ends where the blank line after the route was expected"},
        {"6-31g\n\n", "3: the file ends where the title was expected"},
        {"title>", "4: expected the title, not a second blank line"},
        {"title", "4: the file ends where the blank line after the title was expected"},
        {"title\n\n", "5: the file ends where charge and multiplicity was expected"},
        {"0 1>", "6: expected charge and multiplicity, not a second blank line"},
        {"0 1>0 x", "6: expected charge and multiplicity, not '0 x'"},
        {"0 1>,/,", "6: charges and multiplicities must come in pairs"},
        {"0 1>0 1 0", "6: charges and multiplicities must come in pairs"},
        {"0 1>1 2", "6: multiplicity 2: only amplitudes of closed shells can be used"},
        {"0 1>0 3 1 2", "6: multiplicity 3: only amplitudes of closed shells can be used"},
        {"0 1\n", "6: the file ends where an atom was expected"},
        {"O 0 0.0>\nO 0 0.0", "7: expected an atom, not a blank line"},
        {"O 0 0.0 0.0 0.1>O",
         "7: expected three coordinates; Z-matrices cannot be treated" + cartesian},
        {"H 0.0 0.7 0.4>H 1 0.96",
         "8: expected three coordinates; Z-matrices cannot be treated" + cartesian},
        {"H 0.0 0.7 0.4>H 1 0.96 2 104.5",
         "8: four numbers, of which the first is no code for frozen "
         "atoms (0 or -1); Z-matrices cannot be treated" +
             cartesian},
        {"H 0.0 0.7 0.4>H 0.5 0.0 0.7 0.4",
         "8: four numbers, of which the first is no code for frozen "
         "atoms (0 or -1); Z-matrices cannot be treated" +
             cartesian},
        {"H 0.0 0.7 0.4>H 1 R 2 A",
         "8: expected a coordinate, not 'R'; variables and Z-matrices "
         "cannot be treated" +
             cartesian},
        {"H 0.0 0.7>H 0.0 1.0000000000000000001",
         "8: the coordinate '1.0000000000000000001' has more "
         "than 18 digits"},
        {"H 0.0 0.7 0.4>H 0.0 0.7 0.4 H", "8: 'H' stands behind the coordinates"},
        {"H 0.0 0.7 0.4>,/", "8: expected an atom"},
        {"H 0.0>Tv 0.0", "8: a translation vector: periodic systems cannot be treated"},
        {"H 0.0>Bq 0.0", "8: 'Bq' is a ghost atom: leave it out"},
        {"H 0.0>H-bq 0.0", "8: 'H-bq' is a ghost atom: leave it out"},
        {"H 0.0>X1 0.0", "8: 'X1' is a dummy atom: leave it out"},
        {"H 0.0>XX 0.0", "8: 'XX' is a dummy atom: leave it out"},
        {"H 0.0>Q7 0.0", "8: expected an atom, but 'Q7' names no element"},
        {"H 0.0>0 0.0", "8: '0' is not an atomic number"},
        {"H 0.0>119 0.0", "8: '119' is not an atomic number"},
        {"H 0.0>@atoms.xyz 0.0", "8: expected an atom, but '@atoms.xyz' names no element"},
        {"# td/>#p oniom(td hf:uff)/",
         "7: expected the layer of the atom, H, M or L, behind its coordinates"},
        {"rest> --LINK1--", "10: '--Link1--' begins another job; give an input with one job"},
        {std::string("rest>\0", 6), "10: holds a byte 0, so it is no text"},
    };
    for (const auto& [change, error] : cases) {
        try {
            (void)parse_input("a.gjf", changed(whole, change));
            ADD_FAILURE() << "no error for " << change;
        } catch (const flib::io_error& found) {
            EXPECT_EQ(std::string(found.what()), "a.gjf: line " + error) << change;
        }
    }
    for (const char* const fine :
         {"O 0>Os 0", "O 0>118 0", "O 0>1 0", "O 0>Xe3 0", "O 0>cA 0", "O 0>C1(a b) -1"}) {
        EXPECT_EQ(parse_input("a.gjf", changed(whole, fine)).atoms.size(), 2) << fine;
    }
}

}  // namespace
