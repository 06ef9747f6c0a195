// sgn_derive as its users run it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "flib/excited/qm_file_mo_coeff_nbasis_nbsuse.h"
#include "flib/qm_file/qm_file_mass.h"
#include "flib/qm_file/qm_file_nat.h"
#include "flib/qm_file/qm_file_natom.h"
#include "sets.h"
#include "sgn_derive/checkpoint.h"
#include "sgn_derive/report.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using words = std::vector<std::string>;

class SgnDerive : public testing::Test {
  protected:
    SgnDerive() {
        for (const auto& entry : fs::directory_iterator(sets::water_directory())) {
            if (entry.path().extension() != ".sgn") continue;
            fs::copy(entry.path(), scratch_.path());
            if (entry.path().filename() != "h2o_ref.sgn") files_.push_back(entry.path().filename());
        }
        std::sort(files_.begin(), files_.end());
        fs::copy_file(sets::water_directory() / "h2o_ref.fchk", path("h2o_ref.fchk"));
    }

    support::outcome run(const words& arguments) const {
        return support::run({"sgn_derive", arguments, scratch_.path()});
    }
    /// With the files of the set.
    support::outcome derive(words options) const {
        options.emplace_back("h2o_ref.sgn");
        options.insert(options.end(), files_.begin(), files_.end());
        return run(options);
    }
    std::string path(const std::string& name) const { return scratch_.path() / name; }
    std::string text_of(const std::string& name) const { return support::contents_of(path(name)); }
    void change(const std::string& name, const std::string& from, const std::string& to) const {
        support::write_file(path(name), support::replaced(text_of(name), from, to));
    }

    support::scratch_directory scratch_;
    words files_;
};

TEST_F(SgnDerive, ShowsTheBundledSet) {
    const auto shown = derive({});
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.errors, "");
    EXPECT_EQ(shown.output, support::contents_of(support::data_file("sgn_derive/water.txt")));
}

TEST_F(SgnDerive, ShowsWhatDeservesDoubt) {
    change("h2o_02yp.sgn", "=    -5", "=     5");
    auto shown = derive({});
    EXPECT_EQ(shown.status, 1);
    EXPECT_THAT(shown.output, HasSubstr("h2o_02yp.sgn: the sum rules hold if this sign is"));
    EXPECT_THAT(shown.output, testing::EndsWith("\nOne sign is wrong: h2o_02yp.sgn\n"));

    fs::remove(path("h2o_03xm.sgn"));
    files_.erase(std::find(files_.begin(), files_.end(), "h2o_03xm.sgn"));
    shown = derive({});
    EXPECT_EQ(shown.status, 1);
    EXPECT_THAT(shown.output,
                HasSubstr("8 pairs of displacements by 0.0100 Angstrom, 1 one-sided."));
    EXPECT_THAT(shown.output, HasSubstr("not judged: 1 displacement is one-sided (h2o_03xp.sgn)"));

    change("h2o_01zm.sgn", "=    -5.4170000000E-01", "=     1.4170000000E-01");
    files_.emplace_back("h2o_03xm.sgn");
    fs::copy_file(sets::water_directory() / "h2o_03xm.sgn", path("h2o_03xm.sgn"));
    fs::copy_file(sets::water_directory() / "h2o_02yp.sgn", path("h2o_02yp.sgn"),
                  fs::copy_options::overwrite_existing);
    files_.emplace_back("h2o_ref.sgn");
    shown = derive({});
    EXPECT_EQ(shown.status, 1);
    EXPECT_THAT(shown.output, HasSubstr("9 pairs of displacements by 0.0100 Angstrom.\n"));
    EXPECT_THAT(shown.output,
                HasSubstr("The largest residues of the dipole\n\n   moving along z, component x"));
    EXPECT_THAT(shown.output, testing::EndsWith("The derivatives of the dipole are unsound.\n"));
}

TEST_F(SgnDerive, WritesJson) {
    const auto shown = derive({"--json=-"});
    EXPECT_EQ(shown.status, 0);
    const auto json = nlohmann::json::parse(shown.output);
    const auto report = sgn_derive::analyse(sets::water().reference, sets::water().files);
    words keys;
    for (const auto& [key, value] : json.items()) keys.push_back(key);
    EXPECT_THAT(keys, testing::UnorderedElementsAre(
                          "reference", "files", "atoms", "step", "decimals", "dipole",
                          "dipole_derivatives", "dipole_uncertainty", "dipole_step_error", "forces",
                          "force_constants", "force_constants_asymmetry", "force_step_error",
                          "stationary", "modes", "sum_rules", "findings", "verdict", "fine"));
    EXPECT_EQ(json["reference"], "h2o_ref.sgn");
    EXPECT_EQ(json["files"].size(), 19U);
    EXPECT_EQ(json["files"][3], (nlohmann::json{{"file", "h2o_01ym.sgn"},
                                                {"role", "paired"},
                                                {"sign", 1},
                                                {"dipole", {-0.5346, 0.0, 0.0}},
                                                {"step", 0.01},
                                                {"other", "h2o_01yp.sgn"},
                                                {"findings", nlohmann::json::array()}}));
    EXPECT_EQ(json["atoms"][1],
              (nlohmann::json{
                  {"symbol", "H"}, {"number", 1}, {"mass", 1.007825}, {"x", {0.0, 0.76, -0.472}}}));
    EXPECT_EQ(json["step"], (nlohmann::json{{"smallest", 0.01}, {"largest", 0.01}}));
    EXPECT_EQ(json["decimals"], (nlohmann::json{{"dipole", 4}, {"forces", 9}}));
    EXPECT_EQ(json["dipole"], (nlohmann::json{-0.5354, 0.0, 0.0}));
    const auto near = [](const nlohmann::json& rows, std::size_t row, std::size_t column,
                         double value) {
        EXPECT_NEAR(rows.at(row).at(column).get<double>(), value, 1e-12);
    };
    const auto& d = report.derivatives;
    for (std::size_t c = 0; c < 9; ++c) {
        for (std::size_t k = 0; k < 3; ++k) {
            near(json["dipole_derivatives"], c, k, d.dipole(c, k));
            near(json["dipole_uncertainty"], c, k, d.dipole_uncertainty[c]);
        }
        for (std::size_t k = 0; k < 9; ++k) {
            near(json["force_constants"], c, k, report.force_constants(c, k));
        }
    }
    near(json["forces"], 0, 2, 0.083903333);
    EXPECT_EQ(json["stationary"], false);
    const auto& mode = json["modes"].at(2);
    EXPECT_NEAR(mode["wavenumber"], report.modes[2].wavenumber, 1e-8);
    EXPECT_NEAR(mode["reduced_mass"], report.modes[2].reduced_mass, 1e-10);
    EXPECT_NEAR(mode["borrowed"], report.modes[2].borrowed, 1e-10);
    EXPECT_NEAR(mode["dipole_derivative"][0], report.modes[2].dipole_derivative[0], 1e-12);
    EXPECT_NEAR(mode["dipole_derivative_q"][0], report.modes[2].dipole_derivative_q[0], 1e-12);
    near(mode["displacement"], 1, 1, report.modes[2].displacement[1][1]);
    const auto& rules = json["sum_rules"]["dipole"];
    EXPECT_EQ(rules["satisfied"], true);
    EXPECT_EQ(rules["sums"], 18);
    EXPECT_NEAR(rules["chi2"], report.dipole_rules.chi2, 1e-9);
    near(rules["translation"], 1, 0, report.dipole_rules.translation(1, 0));
    near(rules["rotation"], 2, 1, report.dipole_rules.rotation(2, 1));
    near(rules["rotation_uncertainty"], 2, 1, report.dipole_rules.rotation_uncertainty(2, 1));
    near(rules["translation_uncertainty"], 0, 0, report.dipole_rules.translation_uncertainty(0, 0));
    EXPECT_EQ(json["sum_rules"]["forces"]["sums"], 54);
    EXPECT_EQ(json["findings"], nlohmann::json::array());

    change("h2o_02yp.sgn", "=    -5", "=     5");
    const auto doubtful = nlohmann::json::parse(derive({"--json", "-"}).output);
    EXPECT_EQ(doubtful["sum_rules"]["dipole"]["suspects"], (nlohmann::json{"h2o_02yp.sgn"}));
    EXPECT_EQ(doubtful["findings"][0]["file"], "h2o_02yp.sgn");
    EXPECT_EQ(doubtful["files"][10]["findings"][0]["doubt"], "suspect_sign");
    EXPECT_EQ(doubtful["fine"], false);
}

TEST_F(SgnDerive, WritesCheckpointsThatReadersRead) {
    EXPECT_EQ(derive({"--fchk=own.fchk"}).status, 0);
    EXPECT_EQ(derive({"--fchk=whole.fchk", "--template", "h2o_ref.fchk"}).status, 0);
    const auto report = sgn_derive::analyse(sets::water().reference, sets::water().files);
    for (const std::string name : {"own.fchk", "whole.fchk"}) {
        const std::string file = path(name);
        std::int32_t natom = 0;
        std::int32_t info = 0;
        flib::qm_file_natom(file, natom, info);
        EXPECT_EQ(natom, 3);
        std::vector<std::int32_t> nat(3);
        flib::qm_file_nat(file, 3, nat, info);
        EXPECT_THAT(nat, testing::ElementsAre(8, 1, 1));
        std::vector<double> mass(3);
        flib::qm_file_mass(file, 3, mass, info);
        EXPECT_THAT(mass, testing::ElementsAre(15.9949146, 1.007825, 1.007825));

        const auto read = sgn_derive::read_checkpoint(file);
        EXPECT_NEAR(read.dipole[0], -0.5354, 1e-12);
        EXPECT_NEAR(read.atoms[1].x[1], 0.76, 1e-8);
        for (std::size_t c = 0; c < 9; ++c) {
            for (std::size_t k = 0; k < 3; ++k) {
                EXPECT_NEAR(read.dipole_derivatives(c, k), report.derivatives.dipole(c, k), 1e-8);
            }
            EXPECT_NEAR(read.forces[c], report.set.jobs[0].forces[c / 3][c % 3], 1e-9);
            for (std::size_t k = 0; k < 9; ++k) {
                EXPECT_NEAR(read.force_derivatives(c, k), -report.force_constants(c, k), 1e-8);
            }
        }
        const auto judged = run({"--judge=" + name});
        EXPECT_EQ(judged.status, 0);
        EXPECT_THAT(judged.output, HasSubstr("dipole      18            9.7"));
        EXPECT_THAT(judged.output, testing::EndsWith("The derivatives obey the sum rules.\n"));
    }
    EXPECT_EQ(text_of("own.fchk"),
              support::contents_of(support::data_file("sgn_derive/water.fchk")));

    // All else of the template stays, and what is replaced stands where it stood.
    flib::matrix<double> orbitals(22, 22, "orbitals");
    flib::matrix<double> kept(22, 22, "orbitals");
    std::int32_t info = 0;
    flib::qm_file_mo_coeff_nbasis_nbsuse(path("h2o_ref.fchk"), 22, 22, orbitals.view(), info);
    flib::qm_file_mo_coeff_nbasis_nbsuse(path("whole.fchk"), 22, 22, kept.view(), info);
    EXPECT_THAT(kept.view().all(), testing::ElementsAreArray(orbitals.view().all()));
    const std::string whole = text_of("whole.fchk");
    const auto at = [&](std::string_view text) { return whole.find(text); };
    EXPECT_LT(at("SCF Energy                                 R     -7.601604101723170E+01\n"),
              at("Cartesian Gradient                         R   N=           9\n"));
    EXPECT_LT(at("Cartesian Gradient"), at("Cartesian Force Constants"));
    EXPECT_THAT(whole, HasSubstr("ETran state values                         R   N=         208\n"
                                 " -7.56731884E+01 -5.35400000E-01"));
    // Once more, from what was made: nothing is added twice.
    EXPECT_EQ(derive({"--fchk=again.fchk", "--template=whole.fchk"}).status, 0);
    EXPECT_EQ(text_of("again.fchk"), whole);
}

TEST_F(SgnDerive, JudgesACheckpointWithAWrongSign) {
    change("h2o_03yp.sgn", "=    -5", "=     5");
    EXPECT_EQ(derive({"--fchk=wrong.fchk"}).status, 1);
    const auto judged = run({"--judge=wrong.fchk"});
    EXPECT_EQ(judged.status, 1);
    EXPECT_THAT(judged.output, testing::EndsWith("The derivatives of the dipole are unsound.\n"));
    change("wrong.fchk", "Cartesian Gradient", "Another Gradient  ");
    EXPECT_THAT(run({"--judge=wrong.fchk"}).output,
                HasSubstr("not judged: the checkpoint holds no gradient or no force constants"));
}

TEST_F(SgnDerive, WritesModesForViewers) {
    EXPECT_EQ(derive({"--molden=modes.molden"}).status, 0);
    const std::string text = text_of("modes.molden");
    EXPECT_THAT(text, testing::StartsWith(
                          "[Molden Format]\n[Atoms] AU\n"
                          "O       1    8    0.00000000    0.00000000    0.22298767\n"
                          "H       2    1    0.00000000    1.43619175   -0.89195067\n"
                          "H       3    1    0.00000000   -1.43619175   -0.89195067\n"
                          "[FREQ]\n     1125.5515\n     1152.5353\n     3388.2963\n[FR-COORD]\n"
                          "O     0.00000000    0.00000000    0.22298767\n"));
    EXPECT_THAT(text, HasSubstr("vibration     3\n"));
    EXPECT_THAT(text, HasSubstr("    0.55118334   -0.44119309\n"));
}

TEST_F(SgnDerive, RefusesInOneLineAndWritesNothing) {
    support::write_file(path("other.fchk"), text_of("h2o_ref.fchk"));
    change("other.fchk", "           8           1           1",
           "           8           1           2");
    support::write_file(path("moved.fchk"), text_of("h2o_ref.fchk"));
    change("moved.fchk", "-8.91950731E-01  0.00000000E+00 -1.43619185E+00 -8.91950731E-01\nInteger",
           "-8.91950731E-01  0.00000000E+00 -1.43619185E+00 -8.91550731E-01\nInteger");
    support::write_file(path("cut.fchk"), text_of("h2o_ref.fchk").substr(0, 2000));
    support::write_file(path("log.fchk"), "a\nb\nc\n");
    support::write_file(path("count.fchk"), text_of("h2o_ref.fchk"));
    change("count.fchk", "N=           9\n  0.00000000E+00  0.00000000E+00  2.2",
           "N=  2147483647\n  0.00000000E+00  0.00000000E+00  2.2");
    support::write_file(path("nan.sgn"), text_of("h2o_01xp.sgn"));
    change("nan.sgn", "-5.3530000000E-01", "              NAN");
    support::write_file(path("two.sgn"), text_of("h2o_01xp.sgn"));
    change("two.sgn", "2    H       1     1.00782500", "2    D       1     2.01410000");
    support::write_file(path("old.json"), "old");
    fs::create_directory(path("directory"));
    const struct {
        words arguments;
        const char* message;
    } cases[] = {
        {{"h2o_ref.sgn"}, "needs a reference and displaced files .*"},
        {{"--json=-", "--molden=-", "h2o_ref.sgn", "nan.sgn"}, "only one result can go .*"},
        {{"--template=h2o_ref.fchk", "h2o_ref.sgn", "nan.sgn"}, "--template makes no sense .*"},
        {{"--judge=x.fchk", "h2o_ref.sgn"}, "--judge stands alone"},
        {{"--judge=x.fchk", "--json=-"}, "--judge stands alone"},
        {{"none.sgn", "h2o_01xp.sgn"}, "none.sgn: .*"},
        {{"h2o_ref.sgn", "none.sgn"}, "none.sgn: .*"},
        {{"h2o_ref.fchk", "h2o_01xp.sgn"}, "h2o_ref.fchk: is not a result file.*"},
        {{"h2o_ref.sgn", "nan.sgn"}, "nan.sgn: the dipole holds a value that is not .*"},
        {{"h2o_ref.sgn", "two.sgn"}, "two.sgn: atom 2 is D 1 2.0141 instead of H 1 1.0078, .*"},
        {{"h2o_ref.sgn", "h2o_ref.sgn"}, "h2o_ref.sgn: is not displaced in any of the files.*"},
        {{"h2o_ref.sgn", "h2o_01xp.sgn", "h2o_01xm.sgn", "h2o_02zp.sgn"},
         "h2o_ref.sgn: coordinates are missing: no file displaces 1 O y, z; 2 H x, y; 3 H x, y, z "
         ".7 of 9 directions."},
        {{"--fchk=new", "--template=none.fchk"}, "none.fchk: .*"},
        {{"--fchk=new", "--template=other.fchk"},
         "other.fchk: atom 3 is a 2 instead of the 1 of h2o_ref.sgn"},
        {{"--fchk=new", "--template=moved.fchk"},
         "moved.fchk: atom 3 stands 0.0002 Angstrom from that of h2o_ref.sgn"},
        {{"--fchk=new", "--template=cut.fchk"},
         "cut.fchk: line [0-9]*: the file ends within the section .*"},
        {{"--fchk=new", "--template=log.fchk"},
         "log.fchk: line 3: is no formatted checkpoint: expected the label of a section"},
        {{"--fchk=new", "--template=count.fchk"},
         "count.fchk: line [0-9]*: the file ends within .*"},
        {{"--fchk=new", "--template=h2o_ref.sgn"}, "h2o_ref.sgn: line 3: is no formatted .*"},
        {{"--json=old.json", "--fchk=new", "--template=cut.fchk"}, "cut.fchk: .*"},
        {{"--fchk=directory"}, "directory: .*"},
        {{"--molden=none/modes"}, "none/modes: .*"},
        {{"--judge=h2o_ref.fchk"}, "h2o_ref.fchk: holds no 'ETran scalars'"},
        {{"--judge=none.fchk"}, "none.fchk: .*"},
        {{"--judge=directory"}, "directory: .*"},
    };
    const words before = scratch_.names();
    for (const auto& [arguments, message] : cases) {
        const bool whole_set =
            std::all_of(arguments.begin(), arguments.end(),
                        [](const std::string& each) { return each.starts_with("--"); }) &&
            !arguments[0].starts_with("--judge");
        const auto told = whole_set ? derive(arguments) : run(arguments);
        EXPECT_EQ(told.status, 2) << told.output;
        EXPECT_THAT(told.errors,
                    testing::MatchesRegex("sgn_derive: " + std::string(message) + "\n"));
        EXPECT_EQ(told.output, "");
        EXPECT_EQ(scratch_.names(), before);
        EXPECT_EQ(text_of("old.json"), "old") << message;
    }
}

TEST_F(SgnDerive, RefusesDamagedCheckpointsToBeJudged) {
    ASSERT_EQ(derive({"--fchk=good.fchk"}).status, 0);
    const std::string good = text_of("good.fchk");
    const auto refusal = [&](const char* from, const char* to) {
        support::write_file(path("bad.fchk"), support::replaced(good, from, to));
        const auto told = run({"--judge=bad.fchk"});
        EXPECT_EQ(told.status, 2);
        EXPECT_EQ(told.output, "");
        return told.errors.substr(std::string("sgn_derive: bad.fchk: ").size());
    };
    EXPECT_EQ(refusal("I                3\n", "I                0\n"), "line 3: holds no atoms\n");
    EXPECT_EQ(refusal("I                3\n", "R     3.000000000000000E+00\n"),
              "line 3: 'Number of atoms' is no integer\n");
    EXPECT_EQ(refusal("I                3\n", "I                4\n"),
              "line 5: 'Atomic numbers' has 3 values instead of 4\n");
    EXPECT_EQ(refusal("ates              R", "ates              I"),
              "line 9: 'Current cartesian coordinates' is no array of reals\n");
    EXPECT_EQ(refusal("  1.43619175E+00\n", "             NaN\n"),
              "line 10: 'Current cartesian coordinates' has no number as its value 5\n");
    const std::string scalars =
        "           1          16           1          10           1          12\n";
    const auto with = [&](const char* line) { return refusal(scalars.c_str(), line); };
    EXPECT_EQ(with("           1          16           1          10           2          12\n"),
              "line 27: 'ETran scalars' names no target state\n");
    EXPECT_EQ(with("           1          16           1          10           1           0\n"),
              "line 27: 'ETran scalars' tells of no derivatives\n");
    EXPECT_EQ(with("           1          15           1          10           1          12\n"),
              "line 27: 'ETran scalars' does not tell of 16 values a state and 12 derivatives of "
              "each\n");
    EXPECT_EQ(with("           2          16           1          10           2          12\n"),
              "line 32: 'ETran state values' has 208 values instead of 224\n");
    EXPECT_THAT(refusal("N=         208", "N=         308"),
                HasSubstr("file ends within the section"));
    for (std::size_t i = 0; i < good.size(); i += 97) {
        support::write_file(path("bad.fchk"), good.substr(0, i));
        EXPECT_EQ(run({"--judge=bad.fchk"}).status, 2) << i;
    }
}

}  // namespace
