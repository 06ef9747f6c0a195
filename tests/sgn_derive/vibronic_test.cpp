// What vibronic programs get: files of FCclasses and checkpoints, and what the checkpoints beside
// the result files add to them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <sstream>

#include "flib/excited/qm_file_state_moments.h"
#include "flib/util/units.h"
#include "sgn/checkpoint/checkpoint.h"
#include "support/session.h"
#include "support/sets.h"

namespace {

namespace fs = std::filesystem;
using support::contents_of;
using words = std::vector<std::string>;

std::vector<double> numbers_of(const std::string& text) {
    std::istringstream items(text);
    return {std::istream_iterator<double>(items), {}};
}

class Vibronic : public testing::Test {
  protected:
    Vibronic() {
        fs::copy(sets::water_directory(), scratch_.path(), fs::copy_options::recursive);
        for (const auto& file : sets::water().files) files_.push_back(file.name);
    }

    support::outcome derive(words options, const std::string& reference = "h2o_ref.sgn") const {
        options.push_back(reference);
        options.insert(options.end(), files_.begin(), files_.end());
        return support::run({"sgn_derive", options, scratch_.path()});
    }
    std::string path(const std::string& name) const { return scratch_.path() / name; }
    std::string text_of(const std::string& name) const { return contents_of(path(name)); }
    static std::string fixture(const std::string& name) {
        return contents_of(support::data_file("sgn_derive/" + name));
    }

    support::scratch_directory scratch_;
    words files_;
};

TEST_F(Vibronic, FilesOfAStateAreThoseOfTheCheckpoint) {
    fs::create_directory(path("fcc"));
    const auto told = derive({"--fcc=fcc/water", "--fchk=s.fchk", "--template=h2o_ref.fchk"});
    EXPECT_EQ(std::to_string(told.status) + told.errors, "0");
    EXPECT_EQ(text_of("fcc/water.fcc"), fixture("water.fcc"));
    EXPECT_EQ(text_of("fcc/eldip_water"), fixture("eldip_water"));

    const sgn::checkpoint same = sgn::read_checkpoint(path("s.fchk"));
    const auto moments = flib::qm_file_state_moments(path("s.fchk"));
    ASSERT_TRUE(moments && moments->derivatives);
    EXPECT_EQ(moments->total_energy, -75.67318842789800);
    EXPECT_EQ(moments->of_states.energy, std::vector{-75.6731884});
    for (std::size_t c = 0; c < 9; ++c) {
        EXPECT_EQ(moments->derivatives->energy[c], -same.forces[c]) << c;
    }
}

/// The numbers of --fcc, --fchk and --json are the same, whoever reads them.
TEST_F(Vibronic, AllMomentsAreThoseOfTheCheckpoint) {
    EXPECT_EQ(
        derive({"--fcc=w", "--fchk=s.fchk", "--template=h2o_ref.fchk", "--json=d.json"}).status, 0);
    const auto json = nlohmann::json::parse(text_of("d.json"));
    const auto written = flib::qm_file_state_moments(path("s.fchk"));
    const auto reference = flib::qm_file_state_moments(path("h2o_ref.fchk"));
    ASSERT_TRUE(written && written->derivatives && reference);
    EXPECT_EQ(written->states, 1);
    using rows = flib::moment_rows;
    const struct {
        std::vector<double> rows::*moment;
        const char* key;
        const char* by_mode;
        std::string file;
    } cases[] = {
        {&rows::dipole, "/dipole_derivatives", "dipole_derivative", "eldip_w"},
        {&rows::velocity_dipole, "/velocity_dipole_derivatives/values",
         "velocity_dipole_derivative", ""},
        {&rows::magnetic_dipole, "/magnetic_dipole_derivatives/values",
         "magnetic_dipole_derivative", "magdip_w"},
        {&rows::velocity_quadrupole, "/velocity_quadrupole_derivatives/values",
         "velocity_quadrupole_derivative", ""},
    };
    for (const auto& [moment, key, by_mode, file] : cases) {
        const std::vector<double>& of_reference = written->of_states.*moment;
        const std::vector<double>& derivatives = *written->derivatives.*moment;
        const std::size_t components = of_reference.size();
        ASSERT_EQ(derivatives.size(), 9 * components) << key;
        const auto& values = json.at(nlohmann::json::json_pointer(key));
        std::vector<double> shown;
        for (const auto& row : values) shown.insert(shown.end(), row.begin(), row.end());
        ASSERT_EQ(shown.size(), derivatives.size()) << key;
        for (std::size_t k = 0; k < components; ++k) {
            EXPECT_NEAR(of_reference[k], (reference->of_states.*moment)[k], 1e-12) << key << k;
        }
        for (std::size_t i = 0; i < shown.size(); ++i) {
            EXPECT_NEAR(derivatives[i], shown[i], 1e-8) << key << i;
        }
        EXPECT_EQ(json["modes"][2][by_mode].size(), components);
        EXPECT_EQ(json["modes"][2][std::string(by_mode) + "_q"].size(), components);
        if (file.empty()) continue;
        const std::vector<double> numbers = numbers_of(text_of(file));
        ASSERT_EQ(numbers.size(), 6U + 27U);
        for (std::size_t i = 0; i < 27; ++i) EXPECT_NEAR(numbers[6 + i], derivatives[i], 1e-8);
    }
    // By the third mode, as its displacements have it.
    const auto& by_mode = json["modes"][2]["magnetic_dipole_derivative"];
    double expected = 0;
    for (std::size_t c = 0; c < 9; ++c) {
        expected += double(json["magnetic_dipole_derivatives"]["values"][c][1]) *
                    double(json["modes"][2]["displacement"][c / 3][c % 3]) /
                    std::sqrt(double(json["modes"][2]["reduced_mass"]) * 1822.888486);
    }
    EXPECT_NEAR(by_mode[1], expected, 1e-12);
    const double ratio = double(json["modes"][2]["dipole_derivative_q"][0]) /
                         double(json["modes"][2]["dipole_derivative"][0]);
    EXPECT_NEAR(json["modes"][2]["magnetic_dipole_derivative_q"][1], ratio * expected, 1e-12);
    EXPECT_GT(std::abs(expected), 1e-4);
}

/// Magnetic dipoles of the example, of the files as they are.
TEST_F(Vibronic, MagneticDipoleTurnsRoundWithTheSign) {
    EXPECT_EQ(derive({"--fcc=water"}).status, 0);
    const std::vector<double> written = numbers_of(text_of("magdip_water"));
    ASSERT_EQ(written.size(), 6U + 27U);
    const auto raw = [&](const std::string& job) {
        const double sign = sgn::read_sgn_file(path(job + ".sgn")).parameters.sign;
        auto values = flib::qm_file_state_moments(path(job + ".fchk"))->of_states.magnetic_dipole;
        values.resize(3);
        for (double& value : values) value *= sign;
        return values;
    };
    const std::vector<double> reference = raw("h2o_ref");
    for (std::size_t k = 0; k < 6; ++k) EXPECT_NEAR(written[k], reference[k % 3], 1e-9);
    for (std::size_t c = 0; c < 9; ++c) {
        const std::string job =
            std::string("h2o_0") + char('1' + static_cast<int>(c / 3)) + sgn::axis_names[c % 3];
        const auto plus = raw(job + 'p');
        const auto minus = raw(job + 'm');
        for (std::size_t k = 0; k < 3; ++k) {
            const double expected = (plus[k] - minus[k]) / 0.02 * flib::bohr_radius;
            EXPECT_NEAR(written[6 + 3 * c + k], expected, 2e-7) << job;
        }
    }
}

TEST_F(Vibronic, ExcitationIsToldWithItsGradient) {
    const auto told = nlohmann::json::parse(derive({"--json=-"}).output).at("excitation");
    EXPECT_EQ(told.at("state"), 1);
    EXPECT_EQ(told.at("state_of_forces"), 1);
    const auto energy = [&](const std::string& job) {
        return *flib::qm_file_state_moments(path(job))->excitation_energy(1);
    };
    EXPECT_EQ(told.at("energy"), energy("h2o_ref.fchk"));
    const double expected =
        (energy("h2o_02yp.fchk") - energy("h2o_02ym.fchk")) / 0.02 * flib::bohr_radius;
    EXPECT_NEAR(told.at("gradient").at(1).at(1), expected, 5e-8);
}

/// One of the checkpoints is changed or missing: what is told of the dipoles, and of the magnetic
/// one.
TEST_F(Vibronic, CheckpointsOfOtherRunsDoNotCount) {
    fs::copy_file(path("h2o_ref.fchk"), path("kept.fchk"));
    for (const auto& [step, expected] : support::session_of("sgn_derive/moments.txt")) {
        const auto row = support::fields_of(step, 3);
        const std::string text = text_of(row[0]);
        if (row[1] == "GONE") {
            fs::remove(path(row[0]));
        } else {
            support::write_file(path(row[0]), support::edited(text, row[1], row[2]));
        }
        auto shown = derive({"--fcc=water", "--template=kept.fchk"});
        shown.output.erase(0, shown.output.find("The dipoles"));
        shown.output.resize(shown.output.find("\n\n") + 1);
        EXPECT_EQ(support::said_in(shown), expected) << "$ " << step;
        const bool full = shown.output.find("checkpoints, ") != std::string::npos;
        EXPECT_EQ(fs::exists(path("magdip_water")), full) << "$ " << step;
        fs::remove(path("magdip_water"));
        support::write_file(path(row[0]), text);
    }
}

}  // namespace
