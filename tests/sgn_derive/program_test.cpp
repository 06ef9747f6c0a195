// sgn_derive as its users run it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "common/csv.h"
#include "common/version.h"
#include "sgn/checkpoint/checkpoint.h"
#include "sgn/checkpoint/detail/checkpoint_sections.h"
#include "sgn/page/html.h"
#include "sgn_derive/json.h"
#include "sgn_derive/molden.h"
#include "support/session.h"
#include "support/sets.h"

namespace {

namespace fs = std::filesystem;
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

TEST(SgnDeriveSession, SaysAndWritesThis) {
    const support::scratch_directory scratch;
    const fs::path files = scratch.path() / "files";
    fs::copy(sets::water_directory(), scratch.path() / "jobs");
    fs::create_directory(files);
    for (const auto& entry : fs::directory_iterator(scratch.path() / "jobs")) {
        if (entry.path().extension() == ".sgn") fs::copy(entry.path(), files);
    }
    fs::copy(scratch.path() / "jobs/h2o_ref.fchk", files);
    fs::copy(support::data_file("oniom"), scratch.path() / "oniom");
    fs::copy(support::data_file("sgn_derive"), scratch.path() / "expected");
    support::expect_session("sgn_derive/session.txt", scratch.path());
}

/// Fields acting on all files alike make the sums fail, but are no doubt where these are not
/// wanted.
TEST(NoSumRules, LeaveTheRestJudged) {
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

TEST_F(SgnDerive, JudgesTheStateThatACheckpointNames) {
    // The second of two states is judged as it is alone.
    const std::string good = fixture("water.fchk");
    support::write_file(path("x.fchk"), good);
    const std::string before = support::said_in(run({"--judge=x.fchk"}));
    const std::string scalars = "           1          16           1          10           ";
    const std::string name = "ETran state values";
    auto values = sgn::read_sections(path("x.fchk")).reals(name, 208);
    values.insert(values.begin(), 16, 9.9);
    std::string second = good.substr(0, good.find(name));
    second = support::replaced(second, scalars + "1", "           2" + scalars.substr(12) + "2");
    second += sgn::text_of(sgn::real_section(name, values));
    support::write_file(path("x.fchk"), second);
    EXPECT_EQ(support::said_in(run({"--judge=x.fchk"})), before);
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
    const std::string old = "{\n  \"written_by\": \"sgn_derive\"}\n";
    support::write_file(path("old.json"), old);
    support::write_file(path("notes"), "mine\n");
    fs::create_symlink("h2o_ref.fchk", path("link"));
    fs::create_hard_link(path("h2o_02ym.sgn"), path("hard"));
    fs::create_symlink("absent", path("to-nothing"));
    fs::create_directory(path("directory"));
    for (const auto& [step, expected] : support::session_of("sgn_derive/refusals.txt")) {
        const auto row = support::fields_of(step, 4);
        std::string bad;
        if (row[1] == "CUT")
            bad = text_of(row[0]).substr(0, std::stoul(row[2]));
        else if (!row[0].empty())
            bad = support::edited(text_of(row[0]), row[1], row[2]);
        support::write_file(path("bad"), bad);
        words arguments = support::words_of(row[3]);
        if (const auto set = std::ranges::find(arguments, "SET"); set != arguments.end()) {
            *set = "h2o_ref.sgn";
            arguments.insert(set + 1, files_.begin(), files_.end());
        }
        const words before = scratch_.names();
        EXPECT_EQ(support::said_in(run(arguments)), expected) << "$ " << step;
        EXPECT_EQ(scratch_.names(), before) << "$ " << step;
        EXPECT_EQ(text_of("old.json") + text_of("notes"), old + "mine\n") << "$ " << step;
    }
}

}  // namespace
