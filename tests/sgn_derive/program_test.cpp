// sgn_derive as its users run it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "common/csv.h"
#include "common/version.h"
#include "sets.h"
#include "sgn/checkpoint/checkpoint.h"
#include "sgn/checkpoint/detail/checkpoint_sections.h"
#include "sgn/page/html.h"
#include "sgn_derive/json.h"
#include "sgn_derive/molden.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using words = std::vector<std::string>;

std::string fixture(const std::string& name) {
    return support::contents_of(support::data_file("sgn_derive/" + name));
}

class SgnDerive : public testing::Test {
  protected:
    SgnDerive() {
        for (const auto& entry : fs::directory_iterator(sets::water_directory())) {
            if (entry.path().extension() == ".sgn") fs::copy(entry.path(), scratch_.path());
        }
        for (const auto& file : sets::water().files) files_.push_back(file.name);
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
    /// Status, and what is shown.
    std::string judged(const std::string& name) const {
        const auto told = run({"--judge=" + name});
        return std::to_string(told.status) + told.errors + told.output;
    }

    support::scratch_directory scratch_;
    words files_;
};

TEST_F(SgnDerive, WritesAllThatIsAskedFor) {
    fs::remove(path("h2o_ref.fchk"));
    const auto report = sgn::analyse(sets::water().reference, sets::water().files);
    const std::map<std::string, std::string> expected{
        {"--json", sgn_derive::json_of(report)},
        {"--fchk", fixture("water.fchk")},
        {"--molden", sgn_derive::molden_of(report)},
        {"--html", sgn::page::html_of(report, "sgn_derive " + std::string(tools::version()))}};
    words options;
    for (const auto& [option, contents] : expected) {
        options.push_back(option + "=result" + option);
        const auto streamed = derive({option, "-"});
        EXPECT_EQ(streamed.status, 0);
        EXPECT_EQ(streamed.output, contents) << option;
    }
    files_.emplace_back("./h2o_ref.sgn");  // as a pattern gives it
    const auto shown = derive(options);
    EXPECT_EQ(std::to_string(shown.status) + shown.errors, "0");
    EXPECT_EQ(shown.output, fixture("water.txt"));
    for (const auto& [option, contents] : expected) EXPECT_EQ(text_of("result" + option), contents);
    files_.erase(files_.begin());
    EXPECT_EQ(derive({}).status, 1);
    EXPECT_THAT(run({"--version"}).output, testing::StartsWith("sgn_derive "));
}

/// The lines of a text.
words lines_of(const std::string& text) {
    words lines;
    std::istringstream from(text);
    for (std::string line; std::getline(from, line);) lines.push_back(line);
    return lines;
}

TEST_F(SgnDerive, WritesTablesForSpreadsheets) {
    fs::remove(path("h2o_ref.fchk"));
    EXPECT_EQ(derive({"--csv=d.csv", "--csv-modes=m.csv"}).status, 0);
    const auto report = sgn::analyse(sets::water().reference, sets::water().files);
    const words derivatives = lines_of(text_of("d.csv"));
    ASSERT_EQ(derivatives.size(), 10U);
    EXPECT_EQ(derivatives[0], "atom,input,symbol,axis,dx,dy,dz,uncertainty\r");
    const auto& d = report.derivatives;
    EXPECT_EQ(derivatives[6],
              "2,2,H,z," + tools::csv_real(d.dipole(5, 0)) + ",0,0," +
                  tools::csv_real(std::ranges::max(report.uncertainties.total.row(5))) + "\r");
    const words modes = lines_of(text_of("m.csv"));
    ASSERT_EQ(modes.size(), 4U);
    EXPECT_EQ(modes[0],
              "mode,wavenumber,reduced_mass,dx_mass_weighted,dy_mass_weighted,"
              "dz_mass_weighted,dx_dimensionless,dy_dimensionless,dz_dimensionless,"
              "borrowed\r");
    std::string third = "3";
    const sgn::normal_mode& mode = report.modes[2];
    for (const double value :
         {mode.wavenumber, mode.reduced_mass, mode.dipole_derivative[0], mode.dipole_derivative[1],
          mode.dipole_derivative[2], mode.dipole_derivative_q[0], mode.dipole_derivative_q[1],
          mode.dipole_derivative_q[2], mode.borrowed}) {
        third += "," + tools::csv_real(value);
    }
    EXPECT_EQ(modes[3], third + "\r");
}

TEST_F(SgnDerive, SaysNothingBesideWhatItStreams) {
    const std::string alone = derive({"--json=-"}).output;
    EXPECT_EQ(derive({"--json=-", "--csv=d.csv", "--molden=d.molden"}).output, alone);
    // The reference among the files, as *.sgn has it.
    EXPECT_EQ(derive({"--json=-", "h2o_ref.sgn"}).output, alone);
}

TEST_F(SgnDerive, ShowsDerivativesByAngstrom) {
    const std::string shown = derive({"--units=angstrom"}).output;
    EXPECT_THAT(shown, HasSubstr("(e Bohr, by Angstrom)"));
    EXPECT_THAT(shown, HasSubstr("\n    2 H  x     0.0000     0.3500    -0.4500  0.0021\n"));
    EXPECT_THAT(shown, HasSubstr("\n   dipole     -0.5354     0.0000     0.0000\n"));
    EXPECT_EQ(derive({"--units=au"}).output, derive({}).output);
}

TEST_F(SgnDerive, LeavesTheSumRulesAlone) {
    const auto told = derive({"--no-sum-rules"});
    EXPECT_EQ(told.status, 0);
    EXPECT_THAT(told.output, HasSubstr("dipole   not judged: sum rules are not wanted\n"
                                       "   forces   not judged: sum rules are not wanted\n"));
    EXPECT_THAT(told.output,
                testing::EndsWith("All 19 files are fine by themselves; the signs were "
                                  "not judged by the sum rules.\n"));
    // As a field acts on all of them alike: the sums fail, but nothing by itself.
    auto files = sets::water().files;
    for (auto* each : {&files[8], &files[9]}) {
        const double step = each == &files[8] ? -1 : 1;
        for (auto& force : each->contents.frc) force[1] += 0.002 * step;
        each->contents.corrected_tdip[0] += 0.01 * step;
    }
    const auto reference = sets::water().reference;
    EXPECT_FALSE(sgn::analyse(reference, files).dipole_rules.satisfied);
    const auto alone = sgn::analyse(reference, files, false);
    EXPECT_FALSE(alone.dipole_rules.judged || alone.force_rules.judged);
    std::string doubts;
    for (const auto& each : alone.findings) doubts += std::string(name_of(each.kind)) + ' ';
    EXPECT_EQ(doubts, "asymmetric_forces ");
}

TEST_F(SgnDerive, SaysWhichFileIsTheReference) {
    words all = files_;
    all.emplace_back("h2o_ref.sgn");
    const auto told = run(all);
    EXPECT_EQ(std::to_string(told.status) + told.errors,
              "1sgn_derive: h2o_01xm.sgn does not look like the reference: h2o_ref.sgn does, the "
              "other files lie in pairs around it. The reference comes first.\n");
}

TEST_F(SgnDerive, FillsTheTemplateOfACheckpoint) {
    EXPECT_EQ(derive({"--fchk=whole.fchk", "--template", "h2o_ref.fchk"}).status, 0);
    EXPECT_EQ(text_of("whole.fchk"), fixture("whole.fchk"));
    // From what was made nothing is added twice; what is not read stays as it is.
    const std::string more = fixture("whole.fchk") + fixture("more_sections.txt");
    support::write_file(path("more.fchk"), more);
    EXPECT_EQ(derive({"--fchk=again.fchk", "--template=more.fchk"}).status, 0);
    EXPECT_EQ(text_of("again.fchk"), more);
}

TEST_F(SgnDerive, JudgesCheckpoints) {
    for (const char* name : {"water.fchk", "whole.fchk"}) {
        support::write_file(path("x.fchk"), fixture(name));
        EXPECT_EQ(judged("x.fchk"), fixture("judged.txt")) << name;
    }
    // The second of two states.
    const std::string good = fixture("water.fchk");
    const std::string scalars = "           1          16           1          10           ";
    const std::string name = "ETran state values";
    auto values = sgn::read_sections(path("x.fchk")).reals(name, 208);
    values.insert(values.begin(), 16, 9.9);
    std::string second = good.substr(0, good.find(name));
    second = support::replaced(second, scalars + "1", "           2" + scalars.substr(12) + "2");
    second += sgn::text_of(sgn::real_section(name, values));
    support::write_file(path("x.fchk"), second);
    EXPECT_EQ(judged("x.fchk"), fixture("judged.txt"));
    // A wrong sign; no gradient; a force constant that is off.
    std::string wrong;
    for (const auto& [from, to] : {std::pair{"4.81551297E-01", "-4.8155130E-01"},
                                   {"Cartesian Gradient", "Another Gradient  "},
                                   {"45\n -7.5", "45\n -9.5"}}) {
        support::write_file(path("x.fchk"), support::replaced(good, from, to));
        wrong += judged("x.fchk");
    }
    EXPECT_EQ(wrong, fixture("judged_wrong.txt"));
    // Of the very last number a part is a number, too.
    constexpr std::size_t last_number = 16;
    for (std::size_t i = 0; i + last_number < good.size(); i += 97) {
        support::write_file(path("x.fchk"), good.substr(0, i));
        EXPECT_TRUE(support::ending_of([&] { sgn::read_checkpoint(path("x.fchk")); })) << i;
    }
}

TEST_F(SgnDerive, RefusesInOneLineAndWritesNothing) {
    support::write_file(path("good.fchk"), fixture("water.fchk"));
    support::write_file(path("log.fchk"), "a\nb\nc\n");
    support::write_file(path("two"), "a\n");
    const std::string old = "{\n  \"written_by\": \"sgn_derive\"}\n";
    support::write_file(path("old.json"), old);
    support::write_file(path("notes"), "mine\n");
    fs::create_symlink("h2o_ref.fchk", path("link"));
    fs::create_hard_link(path("h2o_02ym.sgn"), path("hard"));
    fs::create_symlink("absent", path("to-nothing"));
    fs::create_directory(path("directory"));
    for (const auto& row : support::table_of("sgn_derive/refusals.txt")) {
        if (row[0] == "file") continue;
        // A file is changed at one place and called "bad".
        support::write_file(path("bad"), row[0] == "-" ? ""
                                         : row[2] == "CUT"
                                             ? text_of(row[0]).substr(0, std::stoul(row[1]))
                                             : support::replaced(text_of(row[0]), row[1], row[2]));
        words arguments;
        std::istringstream line(row[3]);
        for (std::string word; line >> word;) {
            if (word != "SET") {
                arguments.push_back(word);
                continue;
            }
            arguments.emplace_back("h2o_ref.sgn");
            arguments.insert(arguments.end(), files_.begin(), files_.end());
        }
        const words before = scratch_.names();
        const auto told = run(arguments);
        EXPECT_EQ(told.status, 2) << row[3];
        EXPECT_EQ(told.errors, "sgn_derive: " + row[4] + "\n");
        EXPECT_EQ(told.output, "") << row[3];
        EXPECT_EQ(scratch_.names(), before) << row[3];
        EXPECT_EQ(text_of("old.json"), old) << row[3];
        EXPECT_EQ(text_of("notes"), "mine\n") << row[3];
    }
}

}  // namespace
