// What must hold of any molecule: derivatives are those of the model, sums vanish, and wrong signs
// are found.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "flib/io/stop_run.h"
#include "model.h"
#include "sgn/check/check.h"
#include "sgn/set/modes.h"
#include "sgn/set/suspects.h"

namespace {

using namespace sgn;
using model::molecule;

const molecule all_molecules[] = {model::bent, model::diatomic, model::line, model::dark};

struct judged {
    displaced_set set;
    derivatives made;
    sum_rules dipole;
    sum_rules forces;
    suspects found;

    judged(const result_file& reference, const std::vector<result_file>& files)
        : set(make_set(reference, files)),
          made(differentiate(set)),
          dipole(dipole_rules(set, made)),
          forces(force_rules(set, made)),
          found(find_suspects(set, made, dipole)) {}
};

/// "failed: 1x+ 2y-: ref", and more if there are other guesses.
std::string verdict(const result_file& reference, const std::vector<result_file>& files) {
    const judged of(reference, files);
    std::string text = of.dipole.satisfied ? "satisfied" : "failed";
    if (of.found.unsound) text += ", unsound";
    if (of.forces.judged && !of.forces.satisfied) text += ", forces failed";
    for (const auto& flips : of.found.flips) {
        text += ":";
        for (const std::size_t each : flips) text += " " + of.set.jobs[each].name;
    }
    if (of.found.mended.satisfied == of.found.flips.empty()) text += ", not mended";
    return text;
}

/// The derivative of every value of `of`, by tiny displacements of the model itself.
table exact(const molecule& of, bool forces) {
    constexpr double h = 1e-4;  // Bohr
    const auto values = [&](const model::geometry& x) {
        return forces ? model::forces(of, x) : model::geometry{model::dipole(of, x)};
    };
    table result(3 * of.x.size(), 3 * values(of.x).size());
    for (std::size_t c = 0; c < result.rows; ++c) {
        model::geometry plus = of.x;
        model::geometry minus = of.x;
        plus[c / 3][c % 3] += h * flib::bohr_radius;
        minus[c / 3][c % 3] -= h * flib::bohr_radius;
        const auto up = values(plus);
        const auto down = values(minus);
        for (std::size_t i = 0; i < result.columns; ++i) {
            result(c, i) = (up[i / 3][i % 3] - down[i / 3][i % 3]) / (2 * h);
        }
    }
    return result;
}

double largest_difference(const table& a, const table& b) {
    EXPECT_EQ(a.rows, b.rows);
    EXPECT_EQ(a.columns, b.columns);
    double largest = 0;
    for (std::size_t i = 0; i < a.values.size(); ++i) {
        largest = std::max(largest, std::abs(a.values[i] - b.values[i]));
    }
    return largest;
}

TEST(Derivatives, AreThoseOfTheModelAndObeyTheSumRules) {
    double squares = 0;
    double sums = 0;
    for (molecule of : all_molecules) {
        for (const int decimals : {4, 9}) {
            of.dipole_decimals = decimals;
            for (const auto& files : {model::displaced(of), model::obliquely_displaced(of),
                                      model::displaced(of, 0.03)}) {
                const judged set(model::reference(of), files);
                const auto& d = set.made;
                const double sigma =
                    *std::max_element(d.dipole_rounding.begin(), d.dipole_rounding.end());
                EXPECT_LT(largest_difference(d.dipole, exact(of, false)),
                          3 * sigma + d.dipole_step_error);
                // The rounding of coordinates counts for oblique displacements.
                EXPECT_LT(largest_difference(d.forces, exact(of, true)), 2 * d.force_step_error);
                EXPECT_EQ(verdict(model::reference(of), files), "satisfied");
                EXPECT_LT(set.dipole.largest, 5);
                EXPECT_LT(set.forces.largest, 4);
                if (decimals != 4) continue;
                squares += set.dipole.chi2;
                sums += static_cast<double>(set.dipole.sums);
            }
        }
    }
    // The uncertainties are what is really left.
    EXPECT_NEAR(squares / sums, 1, 0.2);
}

TEST(Derivatives, AreExtrapolatedFromSeveralSteps) {
    for (molecule of : all_molecules) {
        of.dipole_decimals = of.force_decimals = 10;
        const auto both = [](std::vector<result_file> files, const std::vector<result_file>& others,
                             std::size_t of_others) {
            files.insert(files.end(), others.begin(),
                         others.begin() + static_cast<std::ptrdiff_t>(of_others));
            return files;
        };
        const auto small = model::displaced(of, 0.01);
        // The other one of each pair first: what belongs together is seen in the places.
        auto large = model::displaced(of, 0.02);
        for (std::size_t i = 0; i < large.size(); i += 2) std::swap(large[i], large[i + 1]);
        const judged one(model::reference(of), small);
        const judged two(model::reference(of), both(large, small, small.size()));
        const judged part(model::reference(of), both(small, large, 6));
        const judged oblique(model::reference(of),
                             both(model::obliquely_displaced(of, 0.01),
                                  model::obliquely_displaced(of, 0.02), small.size()));
        const table dipole = exact(of, false);
        const double central = largest_difference(one.made.dipole, dipole);
        const double left = largest_difference(two.made.dipole, dipole);
        EXPECT_LT(left, central / 30);
        EXPECT_LT(left, 3 * two.made.dipole_step_error);
        EXPECT_LT(largest_difference(two.made.forces, exact(of, true)),
                  3 * two.made.force_step_error);
        EXPECT_LT(largest_difference(oblique.made.dipole, dipole),
                  3 * oblique.made.dipole_step_error);
        const auto extrapolated = [](const judged& set) {
            const table& by = set.made.measured_squares;
            std::ptrdiff_t count = 0;
            for (std::size_t c = 0; c < by.rows && by.columns > 0; ++c) {
                count += std::ranges::max(by.row(c)) > 0.5;
            }
            return count;
        };
        const auto all = static_cast<std::ptrdiff_t>(dipole.rows);
        EXPECT_EQ(extrapolated(one), 0);
        EXPECT_EQ(extrapolated(two), all);
        EXPECT_EQ(extrapolated(oblique), all);
        // Of the first atom the larger steps as well: its derivatives are those of both.
        EXPECT_EQ(extrapolated(part), 3);
        for (std::size_t c = 0; c < dipole.rows; ++c) {
            const judged& like = c < 3 ? two : one;
            for (std::size_t k = 0; k < 3; ++k) {
                EXPECT_NEAR(part.made.dipole(c, k), like.made.dipole(c, k), 1e-9);
            }
        }
    }
}

TEST(Modes, DifferentiateAnyNumbersAsTheyDoTheDipole) {
    const judged of(model::reference(model::bent), model::displaced(model::bent));
    const auto modes = normal_modes(of.set.atoms, force_constants(of.made.forces), of.made.dipole,
                                    of.set.jobs.front().dipole);
    for (const normal_mode& mode : modes) {
        const auto derivative = by_mode(mode, of.made.dipole);
        const double factor = dimensionless_factor(mode);
        EXPECT_EQ(std::isnan(factor), mode.wavenumber < 0);
        for (std::size_t k = 0; k < 3; ++k) {
            EXPECT_NEAR(derivative[k], mode.dipole_derivative[k], 1e-12);
            if (mode.wavenumber < 0) continue;
            EXPECT_NEAR(factor * derivative[k], mode.dipole_derivative_q[k], 1e-12);
        }
    }
    EXPECT_GT(modes.back().wavenumber, 0);
    EXPECT_THROW(by_mode(modes.back(), table(3, 3)), flib::run_error);
}

TEST(Pairs, AreJudgedByTheSquareOfTheStep) {
    for (const double step : {0.01, 0.02}) {
        const result_file reference = model::reference(model::bent);
        auto files = model::displaced(model::bent, step);
        for (const std::size_t i : {0U, 1U}) {
            files[i].contents.corrected_tdip = reference.contents.corrected_tdip;
            files[i].contents.corrected_tdip[0] += 0.005;
        }
        const auto verdicts = sgn::check(reference, files, {}).verdicts;
        EXPECT_EQ(verdicts[1].has(sgn::doubt::asymmetric_pair), step < 0.015) << step;
    }
}

TEST(Set, TakesFullDigitsOfAllFilesOrOfNone) {
    const auto with_digits = [](result_file of) {
        of.full = sgn::full_digits{of.contents.corrected_tdip, {}, of.contents.x};
        of.full->dipole[0] += 1e-8;
        if (of.name != "ref") of.full->x[0][0] += 1e-8;
        return of;
    };
    const result_file reference = with_digits(model::reference(model::bent));
    std::vector<result_file> files;
    for (const result_file& each : model::displaced(model::bent)) {
        files.push_back(with_digits(each));
    }
    const auto told = [&] {
        const sgn::displaced_set set = make_set(reference, files);
        const double more = set.jobs[1].moved.shift[0][0] - 0.01;
        return std::to_string(set.has_moments) + ' ' + std::to_string(set.coordinate_decimals) +
               ' ' + std::to_string(set.jobs[0].dipole[0] != reference.contents.corrected_tdip[0]) +
               (more > 5e-9 && more < 2e-8 ? " full" : " printed");
    };
    EXPECT_EQ(told(), "1 8 1 full");
    files.back().full.reset();
    EXPECT_EQ(told(), "0 6 0 printed");
}

/// "velocity magnetic": of which moments the sums fail.
std::string failing(const result_file& reference, const std::vector<result_file>& files) {
    const displaced_set set = make_set(reference, files);
    const derivatives made = differentiate(set);
    const sum_rules velocity = velocity_rules(set, made);
    const sum_rules magnetic = magnetic_rules(set, made);
    if (!velocity.judged || !magnetic.judged) return velocity.why_not;
    return std::string(velocity.satisfied ? "" : "velocity ") +
           (magnetic.satisfied ? "" : "magnetic");
}

TEST(OtherMoments, ObeySumRulesWhichSeeWrongSigns) {
    int visible = 0;
    for (molecule of : all_molecules) {
        // Magnetic dipoles are about the origin, wherever it is.
        for (vec3& x : of.x) x = sum(x, {3, -12, 1});
        const result_file reference = model::with_moments(of, model::reference(of));
        std::vector<result_file> files;
        for (const double step : {0.01, 0.02}) {
            for (const result_file& each : model::displaced(of, step)) {
                files.push_back(model::with_moments(of, each));
            }
            EXPECT_EQ(failing(reference, files), "") << step;
        }
        const auto reversed = [](result_file file, bool magnetic) {
            other_moments& moments = file.full->moments;
            vec3& moment = magnetic ? moments.magnetic_dipole : moments.velocity_dipole;
            moment = scaled(-1, moment);
            return length(moment) > 1e-4 ? std::optional(file) : std::nullopt;
        };
        for (const result_file& each : files) {
            for (const bool magnetic : {false, true}) {
                const auto wrong = reversed(each, magnetic);
                if (!wrong) continue;
                ++visible;
                auto others = files;
                others[static_cast<std::size_t>(&each - files.data())] = *wrong;
                // Magnetic dipoles are judged with the help of the velocity dipoles.
                EXPECT_THAT(failing(reference, others),
                            testing::StartsWith(magnetic ? "magnetic" : "velocity "))
                    << each.name;
            }
        }
        for (const bool magnetic : {false, true}) {
            const auto wrong = reversed(reference, magnetic);
            EXPECT_NE(failing(wrong.value_or(reference), files).empty(), wrong.has_value());
        }
        auto some = files;
        some.back().full.reset();
        EXPECT_EQ(failing(reference, some), "the files hold no other moments than the dipole");
        files.pop_back();
        EXPECT_THAT(failing(reference, files), testing::StartsWith("1 displacement is one-sided"));
    }
    EXPECT_GT(visible, 200);
}

TEST(Suspects, AreTheSignsThatWereReversed) {
    const auto dark = [](const result_file& of) {
        return length(of.contents.corrected_tdip) < 1e-3;  // some units of the last decimal
    };
    int visible = 0;
    for (const molecule& of : all_molecules) {
        for (const bool oblique : {false, true}) {
            const auto good = oblique ? model::obliquely_displaced(of) : model::displaced(of);
            const result_file reference = model::reference(of);
            result_file other = reference;
            model::reverse(other);
            EXPECT_EQ(verdict(other, good), dark(other) ? "satisfied" : "failed: ref");
            for (std::size_t i = 0; i < good.size(); ++i) {
                auto files = good;
                if (dark(files[i])) continue;
                ++visible;
                model::reverse(files[i]);
                EXPECT_EQ(verdict(reference, files), "failed: " + files[i].name);
                if (i % 2 == 1 || dark(reference)) continue;
                model::reverse(files[i + 1]);
                EXPECT_THAT(verdict(reference, files),
                            testing::EndsWith(": " + files[i].name + " " + files[i + 1].name));
                const std::size_t third = (i + 5) % good.size();
                model::reverse(files[third]);
                EXPECT_THAT(
                    judged(reference, files).found.flips,
                    testing::ElementsAre(testing::UnorderedElementsAre(i + 1, i + 2, third + 1)));
            }
        }
    }
    EXPECT_GT(visible, 130);
}

TEST(Suspects, OfSetsThatAreWrongInOtherWays) {
    const result_file reference = model::reference(model::bent);
    const auto told = [&](const std::function<void(std::vector<result_file>&)>& change) {
        auto files = model::displaced(model::bent);
        change(files);
        return verdict(reference, files);
    };
    const auto dipole = [](result_file& of) -> vec3& { return of.contents.corrected_tdip; };
    EXPECT_EQ(told([&](auto& files) { std::swap(dipole(files[4])[0], dipole(files[4])[1]); }),
              "failed, unsound");
    EXPECT_EQ(told([&](auto& files) {
                  std::swap(dipole(files[2]), dipole(files[12]));
                  dipole(files[2])[0] += 0.3;
              }),
              "failed, unsound");
    EXPECT_EQ(told([&](auto& files) {
                  for (vec3& force : files[9].contents.frc) force = scaled(1.05, force);
              }),
              "satisfied, forces failed");
    EXPECT_EQ(told([&](auto& files) {
                  // Squares that are too large for a number.
                  files[9].contents.frc[1] = {1e300, -1e300, 1e300};
                  dipole(files[2])[1] = 1e300;
              }),
              "failed, unsound, forces failed");
    // All but two: the smaller part is called wrong.
    EXPECT_EQ(told([&](auto& files) {
                  for (std::size_t i : {0, 1, 2, 4, 5, 6, 7, 8, 9, 10, 11})
                      model::reverse(files[i]);
                  for (std::size_t i = 13; i < files.size(); ++i) model::reverse(files[i]);
              }),
              "failed: ref 1y- 3x+");
    // Where an atom is too far away to change the dipole by much, the sums hold and the pair does
    // not.
    molecule far = model::bent;
    far.numbers.push_back(1);
    far.x.push_back({40, 0, 0});
    auto pair = model::displaced(far);
    for (const std::size_t i : {26, 27}) {
        for (double& component : dipole(pair[i])) component = model::rounded(-0.995 * component, 4);
    }
    EXPECT_EQ(verdict(model::reference(far), pair), "satisfied: 5y+ 5y-");
    // In a dark state pairs do not tell which is wrong: guesses that are as good, and four moves.
    const auto dark = [](double strength, std::initializer_list<std::size_t> jobs) {
        molecule of = model::dark;
        of.strength = strength;
        auto files = model::displaced(of);
        for (const std::size_t i : jobs) model::reverse(files[i]);
        return verdict(model::reference(of), files);
    };
    EXPECT_EQ(dark(0.2, {20, 26}), "failed: 4y+: 5y+");
    // The likeliest first, though each of the others is of a single sign.
    EXPECT_EQ(dark(0.05, {10, 11}), "satisfied: 2z+ 2z-: 2z+: 2z-");
    EXPECT_EQ(dark(0.2, {9, 15}), "failed: 2y- 3y-");
    EXPECT_EQ(dark(1, {1, 7, 15, 21}), "failed: 1x- 2x- 3y- 4y-");
    EXPECT_EQ(dark(1, {1, 7, 15, 21, 29}), "failed, unsound");
}

TEST(Suspects, AreNotSeenInCurvedDipoles) {
    auto files = model::displaced(model::bent);
    for (const std::size_t i : {0U, 1U}) files[i].contents.corrected_tdip[0] += 0.0072;
    EXPECT_EQ(verdict(model::reference(model::bent), files), "satisfied");
}

}  // namespace
