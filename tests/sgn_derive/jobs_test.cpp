// Derivatives straight from jobs, with the digits of their checkpoints.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using support::contents_of;
using support::write_file;
using testing::HasSubstr;
using words = std::vector<std::string>;

/// Central differences of the dipole of state 1, computed apart from the unrounded dipoles of the
/// jobs: rows 1x 1y 1z 2x ...
constexpr double derivatives[9][3] = {{0, 0, 0.480120638},
                                      {0, 0, 0},
                                      {0.333241595, 0, 0},
                                      {0, 0.186387675, -0.240092600},
                                      {0.227243256, 0, 0},
                                      {-0.166787976, 0, 0},
                                      {0, -0.186387675, -0.240092600},
                                      {-0.227243256, 0, 0},
                                      {-0.166787976, 0, 0}};

class DeriveJobs : public testing::Test {
  protected:
    DeriveJobs() {
        fs::copy(EXAMPLES "/water", scratch_.path());
        for (const auto& entry : fs::directory_iterator(scratch_.path())) {
            const std::string name = entry.path().filename();
            if (name.starts_with("h2o_0") && name.ends_with(".fchk")) jobs_.push_back(name);
        }
    }

    support::outcome derive(words options) const {
        options.emplace_back("h2o_ref.fchk");
        options.insert(options.end(), jobs_.begin(), jobs_.end());
        return support::run({"sgn_derive", options, scratch_.path()});
    }

    const support::scratch_directory scratch_;
    words jobs_;
};

TEST_F(DeriveJobs, HasTheDigitsOfTheCheckpoints) {
    const auto told = derive({"--json=d.json"});
    EXPECT_EQ(std::to_string(told.status) + told.errors, "0");
    EXPECT_THAT(told.output, HasSubstr("dipoles to 9 decimals and the size of the steps"));
    EXPECT_THAT(told.output, HasSubstr(" 0.227243 "));
    EXPECT_THAT(told.output, testing::EndsWith("All 19 files are fine: no sign is wrong.\n"));
    const auto json = nlohmann::json::parse(contents_of(scratch_.path() / "d.json"));
    // The phase of the reference is as it came.
    const double phase = json["dipole_derivatives"][0][2] > 0 ? 1 : -1;
    for (std::size_t c = 0; c < 9; ++c) {
        for (std::size_t k = 0; k < 3; ++k) {
            EXPECT_NEAR(phase * double(json["dipole_derivatives"][c][k]), derivatives[c][k], 2e-7)
                << c << ' ' << k;
        }
    }
    // Moving the molecule changes no velocity dipole; derivatives of nine digits show it.
    const auto& velocity = json["velocity_dipole_derivatives"]["values"];
    for (std::size_t axis = 0; axis < 3; ++axis) {
        for (std::size_t k = 0; k < 3; ++k) {
            const double sum = double(velocity[axis][k]) + double(velocity[3 + axis][k]) +
                               double(velocity[6 + axis][k]);
            EXPECT_NEAR(sum, 0, 1e-3) << axis << ' ' << k;
        }
    }
    EXPECT_EQ(json["magnetic_dipole_derivatives"]["values"].size(), 9U);
    EXPECT_EQ(json["velocity_quadrupole_derivatives"]["values"][0].size(), 6U);
}

TEST_F(DeriveJobs, FollowsTheStateAskedFor) {
    const auto second = derive({"--state=2", "--json=d.json"});
    EXPECT_EQ(second.status, 0);
    EXPECT_EQ(second.errors,
              "sgn_derive: h2o_ref.fchk: the forces are those of state 1, not of 2; forces are "
              "left out\n");
    const auto json = nlohmann::json::parse(contents_of(scratch_.path() / "d.json"));
    EXPECT_NEAR(std::abs(double(json["dipole_derivatives"][1][0])), 1.703340047, 1e-6);
    EXPECT_TRUE(json["modes"].empty());
    EXPECT_EQ(derive({"--state=5"}).errors,
              "sgn_derive: h2o_ref.fchk: has no state 5 of 4 in its log\n");
    EXPECT_EQ(derive({"--state=1-2"}).errors, "sgn_derive: --state takes one state, not '1-2'\n");
}

TEST_F(DeriveJobs, SaysWhatIsWrongWithAJob) {
    // Another dipole than the log's: all dipoles are those of the logs. Behind the energy, the
    // first of the numbers is the dipole's x.
    const std::string path = scratch_.path() / "h2o_01xm.fchk";
    std::string contents = contents_of(path);
    const std::size_t heading = contents.find("ETran state values");
    ASSERT_NE(heading, contents.npos);
    contents.replace(contents.find('\n', heading) + 1 + 16, 16, "  1.00000000E+00");
    write_file(path, contents);
    const auto printed = derive({});
    EXPECT_EQ(printed.status, 1);
    EXPECT_EQ(
        printed.errors,
        "sgn_derive: h2o_01xm.fchk: has a transition dipole of state 1 that does not round to "
        "that of h2o_01xm.log: they are not of one run; the dipoles are those of the logs\n");
    EXPECT_THAT(printed.output, HasSubstr("dipoles to 4 decimals"));
    fs::remove(scratch_.path() / "h2o_01xm.cis");
    const auto missing = derive({});
    EXPECT_EQ(std::to_string(missing.status) + missing.output, "2");
    EXPECT_EQ(missing.errors,
              "sgn_derive: h2o_01xm.cis: cannot be opened: No such file or directory\n");
}

}  // namespace
