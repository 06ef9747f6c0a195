// What sgn_check says of a whole set: the bundled one, with faults in it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <filesystem>
#include <functional>
#include <random>

#include "common/json_text.h"
#include "numfreq/sgn_file.h"
#include "sgn_check/check.h"
#include "sgn_check/report.h"
#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using sgn_check::assessment;
using sgn_check::result_file;
using sgn_set::vec3;
using testing::HasSubstr;

/// The result files of the bundled set, made once: the reference, then "01xm", "01xp", ... to
/// "03zp".
struct bundled_set {
    support::scratch_directory scratch;
    result_file reference;
    std::vector<result_file> files;

    bundled_set() {
        fs::copy(EXAMPLES "/water", scratch.path());
        const auto made = [&](const std::string& name, const std::vector<std::string>& mapped) {
            std::vector<std::string> arguments{"h2o_" + name + ".fchk"};
            arguments.insert(arguments.end(), mapped.begin(), mapped.end());
            support::run({"stigruz", arguments, scratch.path()});
            const std::string path = scratch.path() / ("h2o_" + name + ".sgn");
            return result_file{name, numfreq::read_sgn_file(path)};
        };
        reference = made("ref", {});
        for (const char atom : {'1', '2', '3'}) {
            for (const char axis : {'x', 'y', 'z'}) {
                for (const char side : {'m', 'p'}) {
                    files.push_back(made({'0', atom, axis, side}, {"h2o_ref.sgn"}));
                }
            }
        }
    }
};

struct sample {
    result_file reference;
    std::vector<result_file> files;
    sgn_check::thresholds limits{};

    sample() {
        static const bundled_set bundled;
        reference = bundled.reference;
        files = bundled.files;
    }

    result_file& of(std::string_view name) {
        return *std::find_if(files.begin(), files.end(),
                             [&](const result_file& file) { return file.name == name; });
    }
    /// Verdicts point to what they were made from, so that is kept.
    assessment checked() const {
        static std::deque<sample> kept;
        const sample& all = kept.emplace_back(*this);
        return check(all.reference, all.files, all.limits);
    }
};

/// Gives a job the other phase; what its result file says fits together.
void reverse(result_file& file) {
    for (double& component : file.contents.corrected_tdip) component = -component;
    file.contents.parameters.sign = -file.contents.parameters.sign;
    file.contents.parameters.tden_maxval = -file.contents.parameters.tden_maxval;
}

vec3 turned(const vec3& v, double degrees) {
    const double c = std::cos(degrees * 3.14159265358979 / 180);
    const double s = std::sin(degrees * 3.14159265358979 / 180);
    return {c * v[0] - s * v[1], s * v[0] + c * v[1], v[2]};
}

/// Turns the geometry about the z axis; as printed in a result file.
void turn_geometry(result_file& file, double degrees) {
    for (vec3& atom : file.contents.x) {
        atom = turned(atom, degrees);
        for (double& component : atom) component = std::round(component * 1e6) / 1e6;
    }
}

void turn_dipole(result_file& file, double degrees) {
    vec3& dipole = file.contents.corrected_tdip;
    dipole = turned(dipole, degrees);
    for (double& component : dipole) component = std::round(component * 1e4) / 1e4;
}

/// "NAME: doubt doubt; ..." of the files that are not fine.
std::string doubts(const assessment& of) {
    std::string text;
    for (const auto& each : of.verdicts) {
        if (each.fine()) continue;
        text += (text.empty() ? "" : "; ") + each.file->name + ":";
        for (const auto& found : each.findings) text.append(" ").append(name_of(found.kind));
    }
    return text;
}

/// The lines below the table.
std::string last_lines(const assessment& of) {
    const std::string text = table(of, {}, {});
    return text.substr(text.find("Sum rules:"));
}

TEST(SgnCheckSet, IsFineIfAllSignsAre) {
    const assessment of = sample().checked();
    EXPECT_EQ(doubts(of), "");
    EXPECT_TRUE(of.fine() && of.rules.judged && of.rules.satisfied);
    EXPECT_EQ(of.rules.sums, 18U);
    EXPECT_THAT(last_lines(of),
                testing::MatchesRegex("Sum rules: chi-squared [0-9.]+ of 18 sums, largest residue "
                                      "[0-9.]+ times its uncertainty: they hold.\n"
                                      "All 19 files are fine.\n"));
}

TEST(SgnCheckSet, NamesEveryReversedSign) {
    for (std::size_t i = 0; i < 18; ++i) {
        sample set;
        // So that only the set as a whole can tell.
        set.limits.max_turn = 180;
        set.limits.max_asymmetry = 3;
        reverse(set.files[i]);
        const assessment of = set.checked();
        EXPECT_EQ(doubts(of), set.files[i].name + ": suspect_sign");
        EXPECT_FALSE(of.fine());
        EXPECT_THAT(table(of, {}, {}), HasSubstr("the sum rules hold if this sign is reversed\n"));
        EXPECT_THAT(last_lines(of), HasSubstr("they FAIL.\n"
                                              "They hold if the signs named above are reversed.\n"
                                              "1 of 19 files deserve doubt.\n"));
    }
    sample set;
    set.limits.max_turn = 180;
    set.limits.max_asymmetry = 3;
    reverse(set.of("02yp"));
    reverse(set.of("02ym"));
    const assessment of = set.checked();
    EXPECT_EQ(doubts(of), "02ym: suspect_sign; 02yp: suspect_sign");
    EXPECT_THAT(
        table(of, {}, {}),
        HasSubstr("the sum rules hold if this sign is reversed together with that of 02yp\n"));
    const auto json = nlohmann::json::parse(sgn_check::json(of, {}, set.limits));
    const auto& rules = json["sum_rules"]["dipole"];
    EXPECT_EQ(rules["suspects"].dump(), R"(["02ym","02yp"])");
    EXPECT_FALSE(rules["satisfied"]);
    EXPECT_EQ(rules["sums"], 18);
    EXPECT_EQ(rules["chi2"], of.rules.chi2);
    EXPECT_EQ(rules["largest"], of.rules.largest);
    EXPECT_EQ(rules["largest_residue"], of.rules.largest_residue);
    EXPECT_EQ(rules["alternatives"].size(), of.suspects.flips.size() - 1);
    EXPECT_FALSE(rules["unsound"]);
    for (const auto& [name, table] : {std::pair{"translation", of.rules.translation},
                                      {"translation_uncertainty", of.rules.translation_uncertainty},
                                      {"rotation", of.rules.rotation},
                                      {"rotation_uncertainty", of.rules.rotation_uncertainty}}) {
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t k = 0; k < 3; ++k) EXPECT_EQ(rules[name][row][k], table(row, k));
        }
    }
    std::string csv = sgn_check::csv(of);
    csv.resize(csv.find("\r\n01xm"));
    EXPECT_THAT(csv, testing::EndsWith("," + tools::json_value(of.rules.chi2).dump() + "," +
                                       tools::json_value(of.rules.largest).dump() + ",false,"));
}

TEST(SgnCheckSet, IsNotFineIfTheSumRulesFailForAnotherReason) {
    sample set;
    set.of("01xp").contents.corrected_tdip[2] += 0.0020;
    set.of("02zm").contents.corrected_tdip[1] += 0.0025;
    set.of("03ym").contents.corrected_tdip[0] -= 0.0030;
    const assessment of = set.checked();
    EXPECT_EQ(doubts(of), "");
    EXPECT_FALSE(of.fine());
    EXPECT_THAT(sgn_check::json(of, {}, set.limits), HasSubstr("\"unsound\": true"));
    EXPECT_THAT(last_lines(of),
                HasSubstr("they FAIL.\n"
                          "No few reversed signs would mend them: look for another state, another "
                          "frame, or too large a step.\n"
                          "The set deserves doubt, though no single one of 19 files does.\n"));
    // Of jobs that do not belong to the same coordinates, likewise.
    sample exchanged;
    std::swap(exchanged.of("02zp").contents.corrected_tdip,
              exchanged.of("02zm").contents.corrected_tdip);
    EXPECT_FALSE(exchanged.checked().fine());
    exchanged.limits.sum_rules = false;
    const assessment unjudged = exchanged.checked();
    EXPECT_TRUE(unjudged.fine());
    EXPECT_EQ(last_lines(unjudged), "Sum rules: not judged, not wanted.\nAll 19 files are fine.\n");
    EXPECT_THAT(sgn_check::csv(unjudged), testing::Not(HasSubstr("true")));
}

/// The bundled molecule displaced along nine oblique directions, all atoms at once, of which the
/// last is a turn by `degrees` about the z axis. The dipole follows the true derivatives, for the
/// turn only if it `follows`.
sample oblique_set(double degrees, bool follows) {
    sample set;
    const sgn_set::table slope =
        differentiate(sgn_set::make_set(set.reference, set.files)).dipole;  // au per Bohr
    const std::vector<vec3>& x = set.reference.contents.x;
    const vec3& dipole = set.reference.contents.corrected_tdip;
    constexpr double angstrom = 1 / 0.529177249;
    std::mt19937 random(3);
    std::uniform_real_distribution<double> any(-0.02, 0.02);
    std::vector<result_file> files;
    for (int direction = 0; direction < 9; ++direction) {
        const bool turn = direction == 8;
        const double angle = degrees * 3.14159265358979 / 180;
        std::vector<vec3> shift(x.size());
        vec3 change{};
        for (std::size_t atom = 0; atom < x.size(); ++atom) {
            shift[atom] = turn ? vec3{-angle * x[atom][1], angle * x[atom][0], 0}
                               : vec3{any(random), any(random), any(random)};
            for (std::size_t axis = 0; axis < 3; ++axis) {
                shift[atom][axis] = std::round(shift[atom][axis] * 1e6) / 1e6;
                for (std::size_t k = 0; k < 3; ++k) {
                    change[k] += slope(3 * atom + axis, k) * shift[atom][axis] * angstrom;
                }
            }
        }
        if (turn && !follows) change = {};
        for (const double side : {-1.0, 1.0}) {
            result_file file = set.reference;
            file.name = std::string(1, static_cast<char>('a' + direction)) + (side < 0 ? "-" : "+");
            for (std::size_t atom = 0; atom < x.size(); ++atom) {
                for (std::size_t axis = 0; axis < 3; ++axis) {
                    file.contents.x[atom][axis] += side * shift[atom][axis];
                }
            }
            for (std::size_t k = 0; k < 3; ++k) {
                file.contents.corrected_tdip[k] =
                    std::round((dipole[k] + side * change[k]) * 1e4) / 1e4;
            }
            files.push_back(file);
        }
    }
    set.files = files;
    return set;
}

TEST(SgnCheckSet, ToleratesTurnsUnlessDipolesDoNotFollow) {
    const assessment fine = oblique_set(1.2, true).checked();
    EXPECT_EQ(doubts(fine), "");
    EXPECT_TRUE(fine.fine() && fine.rules.judged);
    EXPECT_NEAR(fine.verdicts.back().rotation, 1.2, 0.01);
    const assessment apart = oblique_set(1.2, false).checked();
    EXPECT_EQ(doubts(apart), "i-: other_frame; i+: other_frame");
    EXPECT_THAT(
        table(apart, {}, {}),
        HasSubstr("molecule turned by 1.20 degrees, its dipole seems not: the sum rules are "
                  "better off if it is turned along\n"));
    // A dipole turned alone is found, but not explained by a frame.
    sample alone;
    turn_dipole(alone.of("01xm"), -0.5);
    turn_dipole(alone.of("01xp"), 0.5);
    const assessment unexplained = alone.checked();
    EXPECT_EQ(doubts(unexplained), "");
    EXPECT_FALSE(unexplained.fine());
}

TEST(SgnCheckSet, CannotChangeASignByTurningALittle) {
    for (const double degrees : {1.2, 4.9, 5.1}) {
        sample set;
        set.limits.pairs = false;
        result_file& file = set.of("02yp");
        file.contents.x = set.reference.contents.x;
        turn_geometry(file, degrees);
        EXPECT_EQ(doubts(set.checked()), degrees < 5 ? "" : "02yp: turned") << degrees;
    }
}

TEST(SgnCheckSet, LeavesOutFilesThatCannotBeCompared) {
    const auto with = [](const std::function<void(result_file&)>& spoil) {
        sample set;
        set.limits.pairs = false;
        const assessment judged = [&] {
            // A second pair for the same coordinate keeps the set complete.
            for (const double side : {-1.0, 1.0}) {
                result_file more = side < 0 ? set.of("01xm") : set.of("01xp");
                more.name = side < 0 ? "m" : "p";
                more.contents.x[0][0] += side * 0.005;
                for (std::size_t k = 0; k < 3; ++k) {
                    double& component = more.contents.corrected_tdip[k];
                    const double there = set.reference.contents.corrected_tdip[k];
                    component = std::round((there + 1.5 * (component - there)) * 1e4) / 1e4;
                }
                set.files.push_back(more);
            }
            spoil(set.files[18]);
            spoil(set.files[19]);
            return set.checked();
        }();
        return doubts(judged) + (judged.rules.judged && judged.rules.satisfied ? " | hold" : " |");
    };
    EXPECT_EQ(with([](result_file&) {}), " | hold");
    EXPECT_EQ(with([](result_file& file) {
                  file.contents.parameters.sign = 0;
                  file.contents.corrected_tdip = {};
              }),
              "m: sign_zero; p: sign_zero | hold");
    EXPECT_EQ(with([](result_file& file) { file.contents.frc[0][0] = NAN; }),
              "m: not_finite; p: not_finite | hold");
    EXPECT_EQ(with([](result_file& file) {
                  file.contents.nat[2] = 2;
                  file.contents.corrected_tdip[2] *= 1.1;
              }),
              "m: other_atoms; p: other_atoms | hold");
    EXPECT_EQ(with([](result_file& file) {
                  file.contents.parameters.nmo = 23;
                  file.contents.corrected_tdip[2] *= 1.1;
              }),
              "m: other_sizes; p: other_sizes | hold");
    EXPECT_EQ(with([](result_file& file) { turn_geometry(file, 90); }),
              "m: turned; p: turned | hold");
    // The sign of a job that was judged at another element may be right all the same.
    EXPECT_EQ(with([](result_file& file) {
                  file.contents.parameters.tden_maxloc[0] = 7;
                  reverse(file);
              }).substr(0, 38),
              "m: other_element dipole_turned suspect");
}

TEST(SgnCheckSet, IsNotJudgedWithoutWhatItTakes) {
    sample set;
    set.files.resize(2);
    EXPECT_FALSE(set.checked().rules.judged);
    set.files.resize(1);
    set.files[0].contents.x = set.reference.contents.x;
    EXPECT_EQ(set.checked().rules.why_not, "no file is displaced");
    set.reference.contents.parameters.sign = 0;
    EXPECT_EQ(set.checked().rules.why_not, "the reference is unfit");
    EXPECT_EQ(doubts(set.checked()), "ref: sign_zero; 01xm: not_displaced");
}

}  // namespace
