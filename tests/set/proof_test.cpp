// Noise, the size of steps and signs that nobody can see: what derivatives are uncertain by, and
// how far a verdict reaches.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "model.h"
#include "sgn/check/report.h"

namespace {

using namespace sgn;
using model::molecule;
using testing::HasSubstr;

constexpr unsigned seed = 11;
std::mt19937 random(seed);

/// Of noise with a standard deviation of 1; the same with every library.
double noise() {
    double sum = 0;
    for (int i = 0; i < 12; ++i) sum += static_cast<double>(random()) / 4294967296.0;
    return sum - 6;
}

struct noisy_set {
    result_file reference;
    std::vector<result_file> files;

    noisy_set(const molecule& of, double by)
        : reference(model::reference(of)), files(model::displaced(of)) {
        const auto add = [&](result_file& file) {
            for (double& each : file.contents.corrected_tdip) each += by * noise();
        };
        add(reference);
        for (result_file& each : files) add(each);
    }
};

TEST(Noise, IsToldFromWrongSigns) {
    for (molecule of : {model::bent, model::line}) {
        of.dipole_decimals = 9;
        for (const double by : {1e-6, 1e-5}) {
            const noisy_set set(of, by);
            const report all = analyse(set.reference, set.files);
            EXPECT_TRUE(all.dipole_rules.satisfied && all.suspects.flips.empty()) << by;
            EXPECT_TRUE(all.signs.complete());
            // The size of the steps hides the smaller one.
            if (by > 5e-6) {
                EXPECT_GT(all.dipole_rules.noise, by / 2);
                EXPECT_LT(all.dipole_rules.noise, by * 2);
            }
            for (std::size_t i = 0; i < set.files.size(); ++i) {
                auto files = set.files;
                model::reverse(files[i]);
                EXPECT_EQ(verdict_of(analyse(set.reference, files)),
                          "One sign is wrong: " + files[i].name);
            }
        }
        // More than four decimals would hide is no noise.
        const noisy_set wrong(of, 2e-4);
        EXPECT_FALSE(analyse(wrong.reference, wrong.files).dipole_rules.satisfied);
    }
}

/// Per cent of derivatives that are off by less than so many of their uncertainties.
double within(double uncertainties, const table& made, const table& uncertainty,
              const table& exact) {
    int inside = 0;
    for (std::size_t i = 0; i < made.values.size(); ++i) {
        inside +=
            std::abs(made.values[i] - exact.values[i]) <= uncertainties * uncertainty.values[i];
    }
    return 100.0 * inside / static_cast<double>(made.values.size());
}

double within(double uncertainties, const report& of, const report& exact) {
    return within(uncertainties, of.derivatives.dipole, of.uncertainties.total,
                  exact.derivatives.dipole);
}

/// Of all models, against pairs so near that nothing but the limit is left.
TEST(Uncertainties, AreWhatDerivativesAreOffBy) {
    random.seed(seed);
    const struct {
        const char* name;
        int decimals;
        double noise;
        bool one_sided;
        double least, most;  // per cent within one of them
    } cases[] = {{"rounding", 4, 0, false, 60, 80},
                 {"step", 9, 0, false, 60, 100},
                 {"noise", 9, 1e-5, false, 60, 85},
                 {"one-sided", 9, 0, true, 60, 100}};
    for (const auto& [name, decimals, by, one_sided, least, most] : cases) {
        double one = 0;
        double three = 0;
        double largest = 0;
        const std::vector<molecule> all{model::bent, model::line, model::diatomic};
        for (molecule of : all) {
            molecule sharp = of;
            sharp.dipole_decimals = 10;
            of.dipole_decimals = decimals;
            noisy_set set(of, by);
            if (one_sided) {
                for (std::size_t i = set.files.size(); i > 0; i -= 2) {
                    set.files.erase(set.files.begin() + static_cast<std::ptrdiff_t>(i) - 1);
                }
            }
            const report made = analyse(set.reference, set.files);
            auto near = model::displaced(sharp, 0.01);
            const auto far = model::displaced(sharp, 0.02);
            near.insert(near.end(), far.begin(), far.end());
            const report exact = analyse(model::reference(sharp), near);
            const auto count = static_cast<double>(all.size());
            one += within(1, made, exact) / count;
            three += within(3, made, exact) / count;
            for (std::size_t i = 0; i < made.derivatives.dipole.values.size(); ++i) {
                largest = std::max(largest, std::abs(made.derivatives.dipole.values[i] -
                                                     exact.derivatives.dipole.values[i]) /
                                                made.uncertainties.total.values[i]);
            }
        }
        EXPECT_GE(one, least) << name;
        EXPECT_LE(one, most) << name;
        EXPECT_GE(three, 98) << name;
        EXPECT_GT(largest, 0.03) << name << ": they are far too large";
    }
}

TEST(Proof, EndsWhereDipolesAreTooSmall) {
    molecule dim = model::dark;
    dim.strength = 0.01;
    const report small = analyse(model::reference(dim), model::displaced(dim));
    ASSERT_TRUE(small.fine()) << verdict_of(small);
    EXPECT_THAT(verdict_of(small),
                HasSubstr("no sign is wrong that could be seen. 6 files have dipoles too small to "
                          "tell (up to 0.00010 au); their derivatives may be off by 0.0053 au."));
    // Reversed, each of them is believed; and the others are named.
    for (std::size_t i = 1; i < small.set.jobs.size(); ++i) {
        auto files = model::displaced(dim);
        model::reverse(files[i - 1]);
        if (length(files[i - 1].contents.corrected_tdip) == 0) continue;
        const report wrong = analyse(model::reference(dim), files);
        const bool unseen = std::ranges::count(small.suspects.unseen, i) > 0;
        EXPECT_EQ(wrong.suspects.flips.empty() && !wrong.suspects.unsound, unseen)
            << files[i - 1].name;
        if (!unseen) continue;
        // The uncertainty has it in it.
        for (std::size_t k = 0; k < wrong.derivatives.dipole.values.size(); ++k) {
            EXPECT_LE(
                std::abs(wrong.derivatives.dipole.values[k] - small.derivatives.dipole.values[k]),
                1.001 * small.uncertainties.total.values[k]);
        }
    }
    // On the sign of a reference against all the others no derivative depends.
    molecule line = model::line;
    line.strength = 6e-4;
    EXPECT_EQ(verdict_of(analyse(model::reference(line), model::displaced(line))),
              "All 19 files are fine: no sign is wrong that could be seen. The dipole of the "
              "reference is too small to tell its sign against all the others.");
    EXPECT_EQ(verdict_of(analyse(model::reference(model::bent), model::displaced(model::bent))),
              "All 25 files are fine: no sign is wrong.");
    // What symmetry rounds alike is no wrong sign.
    dim.strength = 0.02;
    EXPECT_TRUE(analyse(model::reference(dim), model::displaced(dim)).fine());
}

/// A flat molecule in a dark state: no sum knows the signs of what moves out of its plane.
TEST(Proof, NamesSignsThatFitAsWell) {
    molecule flat = model::dark;
    for (vec3& x : flat.x) x[2] = 0;
    for (int d : {4, 9}) {
        flat.dipole_decimals = d;
        auto files = model::displaced(flat);
        const report all = analyse(model::reference(flat), files);
        EXPECT_TRUE(all.fine()) << verdict_of(all);
        EXPECT_FALSE(all.signs.as_good.empty());
        EXPECT_THAT(verdict_of(all), HasSubstr("could be seen. The reference is dark: the sums "
                                               "hold as well with the signs of "));
    }
}

/// Forces are noisy too, and told from wrong ones.
TEST(Noise, IsToldFromWrongForces) {
    for (const double by : {1e-6, 1e-3}) {
        molecule smooth = model::bent;
        smooth.force_decimals = 10;
        auto files = model::displaced(smooth);
        const auto far = model::displaced(smooth, 0.02);
        files.insert(files.end(), far.begin(), far.end());
        for (result_file& each : files) {
            for (vec3& force : each.contents.frc) {
                for (double& component : force) component += by * noise();
            }
        }
        const report all = analyse(model::reference(smooth), files);
        EXPECT_EQ(all.force_rules.satisfied, by < 1e-5) << by;
        EXPECT_EQ(all.force_rules.noise > 0, by < 1e-5) << by;
        EXPECT_EQ(all.fine(), by < 1e-5) << verdict_of(all);
    }
}

/// What a single file with more digits says of the others: nothing.
TEST(Decimals, AreThoseOfMostFiles) {
    auto files = model::displaced(model::bent);
    files[3].contents.corrected_tdip[0] += 1.234e-6;
    const report all = analyse(model::reference(model::bent), files);
    EXPECT_EQ(all.set.dipole_decimals, 4);
    EXPECT_TRUE(all.fine());
}

/// A set of one step or two with all moments; those of jobs that converged less are off, the
/// magnetic dipole also by what that of the velocity dipole is at the place of the molecule.
report with_noisy_moments(const molecule& of, double by, bool two_steps = true) {
    auto files = model::displaced(of, 0.01);
    const auto far = model::displaced(of, 0.02);
    if (two_steps) files.insert(files.end(), far.begin(), far.end());
    const auto add = [&](const result_file& to) {
        result_file made = model::with_moments(of, to);
        const auto off = [&](vec3& moment) {
            vec3 by_this{};
            for (double& each : by_this) each = by * noise();
            moment = sum(moment, by_this);
            return by_this;
        };
        other_moments& moments = made.full->moments;
        off(made.full->dipole);
        const vec3 v = off(moments.velocity_dipole);
        off(moments.magnetic_dipole);
        vec3 x{};
        for (const vec3& each : of.x) x = sum(x, scaled(1 / flib::bohr_radius, each));
        x = scaled(1.0 / static_cast<double>(of.x.size()), x);
        const vec3 moved{x[1] * v[2] - x[2] * v[1], x[2] * v[0] - x[0] * v[2],
                         x[0] * v[1] - x[1] * v[0]};
        moments.magnetic_dipole = sum(moments.magnetic_dipole, moved);
        for (vec3* each :
             {&made.full->dipole, &moments.velocity_dipole, &moments.magnetic_dipole}) {
            for (double& value : *each) value = model::rounded(value, 9);
        }
        return made;
    };
    for (result_file& each : files) each = add(each);
    return analyse(add(model::reference(of)), files);
}

/// Of the values of a moment: it goes through the weights as rounding does.
double noise_of_values(const derivatives& of, const moment_derivatives& moment, std::size_t c) {
    double square = 0;
    for (const double weight : of.weights.row(c)) square += weight * weight;
    return moment.noise[c] / std::sqrt(square);
}

/// Larger errors of the steps, which the judgement of the moments grants, would explain it all.
TEST(Uncertainties, OfTheOtherMomentsHaveNoiseBesideErrorsOfTheSteps) {
    random.seed(seed);
    for (const molecule& of : {model::bent, model::line, model::diatomic}) {
        const report made = with_noisy_moments(of, 3e-6, false);
        const derivatives& d = made.derivatives;
        EXPECT_GT(noise_of_values(d, d.velocity_dipole, 0), 1e-6);
        EXPECT_LT(noise_of_values(d, d.velocity_dipole, 0), 9e-6);
        EXPECT_GT(noise_of_values(d, d.magnetic_dipole, 0), 2e-6);
        EXPECT_LT(noise_of_values(d, d.magnetic_dipole, 0), 2e-5);
    }
}

TEST(Uncertainties, OfTheOtherMomentsHaveTheNoiseOfTheirSums) {
    random.seed(seed);
    for (const double away : {0.0, 8.0}) {  // Angstrom from the origin
        double velocity = 0;
        double magnetic = 0;
        std::vector<molecule> all;
        for (int i = 0; i < 8; ++i) {
            all.insert(all.end(), {model::bent, model::line, model::diatomic});
        }
        for (molecule of : all) {
            for (vec3& each : of.x) each[0] += away;
            const report exact = with_noisy_moments(of, 0);
            const report made = with_noisy_moments(of, 1e-5);
            const derivatives& d = made.derivatives;
            EXPECT_TRUE(made.velocity_rules.satisfied && made.magnetic_rules.satisfied);
            const auto share = 1 / static_cast<double>(all.size());
            velocity += share * within(1, d.velocity_dipole.values, d.velocity_dipole.uncertainty,
                                       exact.derivatives.velocity_dipole.values);
            magnetic += share * within(1, d.magnetic_dipole.values, d.magnetic_dipole.uncertainty,
                                       exact.derivatives.magnetic_dipole.values);
            for (std::size_t c = 0; c < d.weights.rows; ++c) {
                const double v = noise_of_values(d, d.velocity_dipole, c);
                const double m = noise_of_values(d, d.magnetic_dipole, c);
                EXPECT_GT(v, 0.4e-5);
                EXPECT_LT(v, 2.5e-5);
                const double lever = away / flib::bohr_radius;
                EXPECT_GT(m, 0.3e-5 * std::hypot(1, lever));
                EXPECT_LT(m, 4e-5 * std::hypot(1, lever));
                EXPECT_NEAR(noise_of_values(d, d.velocity_quadrupole, c), std::sqrt(2) * m, 1e-12);
                EXPECT_EQ(exact.derivatives.magnetic_dipole.noise[c], 0);
                const moment_derivatives& all_parts = d.velocity_dipole;
                EXPECT_NEAR(all_parts.uncertainty(c, 1),
                            std::hypot(all_parts.rounding[c], all_parts.noise[c],
                                       all_parts.step_scale * all_parts.step(c, 1)),
                            1e-12);
            }
        }
        EXPECT_GT(velocity, 55) << away;
        EXPECT_LT(velocity, 85) << away;
        EXPECT_GT(magnetic, 55) << away;
        EXPECT_LT(magnetic, 90) << away;
    }
}

}  // namespace
