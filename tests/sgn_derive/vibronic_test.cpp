// What vibronic programs get: files of FCclasses and checkpoints, and what the checkpoints beside
// the result files add to them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <sstream>

#include "flib/excited/qm_file_state_moments.h"
#include "flib/util/units.h"
#include "sets.h"
#include "sgn/check/report.h"
#include "sgn/checkpoint/checkpoint.h"
#include "sgn/checkpoint/detail/checkpoint_sections.h"
#include "sgn/checkpoint/fcc_files.h"

namespace {

namespace fs = std::filesystem;
using support::contents_of;
using words = std::vector<std::string>;

/// A state file as a program reads it: items, the blank lines counting.
struct state_file {
    words symbols;
    std::vector<double> x;  // Angstrom
    double energy = 0;
    std::vector<double> gradient;
    std::vector<double> triangle;
};

state_file read_state(const std::string& text) {
    state_file state;
    std::istringstream lines(text);
    std::string line;
    const auto section = [&](const std::string& head) {
        EXPECT_TRUE(std::getline(lines, line) && line == head) << line << " for " << head;
        words items;
        while (std::getline(lines, line) && !line.empty()) {
            const bool comment = head.starts_with("GEOM") && items.size() == 1;
            std::istringstream values(comment ? "comment" : line);
            for (std::string item; values >> item;) items.push_back(item);
        }
        return items;
    };
    const auto numbers = [&](const std::string& head) {
        std::vector<double> values;
        for (const std::string& item : section(head)) values.push_back(std::stod(item));
        return values;
    };
    section("INFO");
    const words geometry = section("GEOM      UNITS=ANGS");
    EXPECT_EQ(geometry.size(), 2 + 4 * std::stoul(geometry.at(0)));
    for (std::size_t i = 2; i + 3 < geometry.size(); i += 4) {
        state.symbols.push_back(geometry[i]);
        for (std::size_t k = 1; k <= 3; ++k) state.x.push_back(std::stod(geometry[i + k]));
    }
    state.energy = numbers("ENER      UNITS=AU").at(0);
    state.gradient = numbers("GRAD      UNITS=AU");
    state.triangle = numbers("HESS      UNITS=AU");
    return state;
}

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

    const state_file state = read_state(text_of("fcc/water.fcc"));
    const sgn::checkpoint same = sgn::read_checkpoint(path("s.fchk"));
    const auto moments = flib::qm_file_state_moments(path("s.fchk"));
    ASSERT_TRUE(moments && moments->derivatives);
    EXPECT_EQ(state.symbols, (words{"O", "H", "H"}));
    EXPECT_NEAR(state.energy, *moments->total_energy, 1e-12);
    EXPECT_EQ(moments->of_states.energy, std::vector{-75.6731884});
    for (std::size_t c = 0; c < 9; ++c) {
        EXPECT_NEAR(state.x.at(c), same.atoms[c / 3].x[c % 3], 1e-8);
        EXPECT_NEAR(state.gradient.at(c), -same.forces[c], 1e-16);
        EXPECT_NEAR(state.gradient.at(c), moments->derivatives->energy[c], 1e-16);
        for (std::size_t d = 0; d <= c; ++d) {
            EXPECT_NEAR(state.triangle.at(c * (c + 1) / 2 + d), -same.force_derivatives(c, d),
                        1e-16);
        }
    }
    EXPECT_EQ(state.triangle.size(), 45U);
    std::vector<double> dipole = numbers_of(text_of("fcc/eldip_water"));
    ASSERT_EQ(dipole.size(), 6U + 27U);
    for (std::size_t k = 0; k < 3; ++k) {
        EXPECT_EQ(dipole[k], same.dipole[k]);
        EXPECT_EQ(dipole[3 + k], same.dipole[k]);
    }
    dipole.erase(dipole.begin(), dipole.begin() + 6);
    for (std::size_t i = 0; i < dipole.size(); ++i) {
        EXPECT_NEAR(dipole[i], same.dipole_derivatives.values[i], 1e-9);
        EXPECT_EQ(same.dipole_derivatives.values[i], moments->derivatives->dipole[i]);
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
    EXPECT_THAT(
        derive({}).output,
        testing::HasSubstr("\nThe dipoles are those of the checkpoints, with 9 decimals. The "
                           "dipole is that of\nstate 1, 9.3295 eV above the ground state; "
                           "the gradient of this energy has\ncomponents of up to 0.1067 "
                           "Hartree/Bohr.\n"));
}

/// They are those of the checkpoints unless they are in a Bohr of another length.
TEST_F(Vibronic, CoordinatesHaveTheDigitsOfTheCheckpoints) {
    const auto decimals = [&] {
        return nlohmann::json::parse(derive({"--json=-"}).output).at("decimals").dump();
    };
    EXPECT_EQ(decimals(), R"({"coordinates":8,"dipole":9,"forces":9})");
    const std::string changed = path("h2o_03zm.fchk");
    support::write_file(
        changed, support::replaced(contents_of(changed), "  2.22987683E-01", "  2.22997683E-01"));
    EXPECT_EQ(decimals(), R"({"coordinates":6,"dipole":9,"forces":9})");
}

/// One of the checkpoints is changed or missing: what is told of the dipoles, and of the magnetic
/// one.
TEST_F(Vibronic, CheckpointsOfOtherRunsDoNotCount) {
    fs::copy_file(path("h2o_ref.fchk"), path("kept.fchk"));
    for (const auto& row : support::table_of("sgn_derive/moments.txt")) {
        const std::string name = row[0];
        const std::string text = text_of(name);
        if (row[1] == "GONE") {
            fs::remove(path(name));
        } else if (!row[1].empty()) {
            support::write_file(path(name), support::replaced(text, row[1], row[2]));
        }
        const auto shown = derive({"--fcc=water", "--template=kept.fchk"});
        std::string source = shown.output.substr(shown.output.find("The dipoles"));
        source.resize(source.find("\n\n"));
        std::ranges::replace(source, '\n', ' ');
        EXPECT_EQ(source, row[3]) << row[0] << ": " << row[2];
        EXPECT_EQ(std::to_string(shown.status), row[4]) << row[2];
        std::string errors = shown.errors;
        for (std::size_t at = 0; (at = errors.find('\n', at)) != errors.npos; at += 3) {
            errors.replace(at, 1, " // ");
        }
        EXPECT_EQ(errors, row[5]) << row[2];
        const bool full = source.find("checkpoints, ") != source.npos;
        EXPECT_EQ(fs::exists(path("magdip_water")), full) << row[2];
        fs::remove(path("magdip_water"));
        support::write_file(path(name), text);
    }
}

TEST_F(Vibronic, ForcesOfAnotherStateAreTold) {
    for (const auto& entry : fs::directory_iterator(scratch_.path())) {
        if (entry.path().extension() != ".fchk") continue;
        support::write_file(
            entry.path(),
            support::replaced(contents_of(entry.path()), "          10           1           0",
                              "          10           2           0"));
    }
    const auto told = derive({});
    EXPECT_EQ(std::to_string(told.status) + told.errors,
              "0sgn_derive: h2o_ref.sgn: the dipole is that of state 1, the forces are those of "
              "state 2\n");
}

TEST_F(Vibronic, ResultFilesOfStatesHaveTheCheckpointOfTheirJob) {
    std::string name;
    for (std::string* each : {&name, &files_[0]}) {
        if (each == &name) name = "h2o_ref.sgn";
        const std::string of_state = each->substr(0, each->size() - 4) + "_s12.sgn";
        fs::rename(path(*each), path(of_state));
        *each = of_state;
    }
    const auto told = derive({"--fcc=water"}, name);
    EXPECT_EQ(std::to_string(told.status) + told.errors, "0");
    EXPECT_TRUE(fs::exists(path("magdip_water")));
    // One of that very name comes first.
    support::write_file(path("h2o_ref_s12.fchk"), "none");
    EXPECT_EQ(derive({"--fcc=water"}, name).errors,
              "sgn_derive: h2o_ref_s12.fchk: is no formatted checkpoint; the dipoles are those of "
              "the result files\nsgn_derive: h2o_ref_s12.fchk: line 1: is no formatted checkpoint: "
              "it ends in its titles\n");
}

TEST_F(Vibronic, TemplateMayBeOfALargerSystem) {
    // Two atoms stand between the three.
    sgn::sections from = sgn::read_sections(path("h2o_ref.fchk"));
    auto x = from.reals("Current cartesian coordinates", 9);
    x.insert(x.begin() + 3, {0, 8, 8});
    x.insert(x.begin(), {9, 0, 0});
    const auto write = [&](const std::string& name, const std::vector<std::int32_t>& numbers) {
        std::string text = from.titles[0] + '\n' + from.titles[1] + '\n';
        for (sgn::section& each : from.all) {
            for (const sgn::section& by : {sgn::integer_section("Number of atoms", 5),
                                           sgn::integer_section("Atomic numbers", numbers),
                                           sgn::real_section("Current cartesian coordinates", x)}) {
                if (each.label == by.label) each = by;
            }
            text += sgn::text_of(each);
        }
        support::write_file(path(name), text);
    };
    write("larger.fchk", {18, 8, 10, 1, 1});
    // The dipoles are those of the result files.
    fs::remove(path("h2o_03zm.fchk"));
    const auto told = derive({"--fchk=s.fchk", "--fcc=s", "--template=larger.fchk"});
    EXPECT_EQ(
        std::to_string(told.status) + told.errors,
        "0sgn_derive: magdip_s is not written: it takes magnetic dipoles from the checkpoints "
        "of all jobs, and h2o_03zm.fchk: is not there beside h2o_03zm.sgn\n");
    // Of the larger one only electrons and energies are kept.
    const std::string alone =
        support::replaced(fixture("water.fchk"), "  0.00000000E+00 -5.35400000E-01",
                          " -7.56731884E+01 -5.35400000E-01");
    EXPECT_EQ(text_of("s.fchk"),
              "sgn_derive: water CIS reference\nForce     RCIS-FC                       6-31+G(d)\n"
              "Number of atoms                            I                3\n"
              "Atomic numbers                             I   N=           3\n"
              "           8           1           1\n"
              "Nuclear charges                            R   N=           3\n"
              "  8.00000000E+00  1.00000000E+00  1.00000000E+00\n"
              "Charge                                     I                0\n"
              "Multiplicity                               I                1\n"
              "Number of electrons                        I               10\n"
              "Number of alpha electrons                  I                5\n"
              "Number of beta electrons                   I                5\n"
              "Number of basis functions                  I               22\n"
              "Number of independent functions            I               22\n"
              "SCF Energy                                 R     -7.601604101723170E+01\n"
              "Total Energy                               R     -7.567318842789800E+01\n" +
                  alone.substr(alone.find("Current cartesian")));
    EXPECT_NEAR(read_state(text_of("s.fcc")).energy, -75.673188427898, 1e-12);
    write("bad.fchk", {18, 8, 1, 10, 1});
    EXPECT_EQ(
        derive({"--fcc=s", "--template=bad.fchk"}).errors,
        "sgn_derive: bad.fchk: atom 2 of h2o_ref.sgn is none of its 5 atoms, in their order\n");
}

}  // namespace
