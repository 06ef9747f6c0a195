// Sets of result files: what is displaced, and the derivatives.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model.h"
#include "set/decimals.h"
#include "set/derivatives.h"
#include "support/support.h"

namespace {

using namespace sgn_set;
using model::molecule;

/// The files whose names are among `names`, in this order.
std::vector<result_file> chosen(const std::vector<result_file>& from,
                                const std::vector<std::string>& names) {
    std::vector<result_file> files;
    for (const std::string& name : names) {
        for (const result_file& each : from) {
            if (each.name == name) files.push_back(each);
        }
    }
    return files;
}

TEST(Set, FindsDisplacementsInTheGeometries) {
    const auto all = model::displaced(model::bent);
    auto files = chosen(all, {"1x+", "4z-", "1x-", "2y+", "1x+", "4z+", "1x-"});
    files.push_back(model::reference(model::bent));
    files.push_back(model::displaced(model::bent, 0.02).front());
    // One coordinate rounded the other way: still the same place, and an opposite displacement.
    files[2].contents.x[3][2] += 2e-6;
    const displaced_set set = make_set(model::reference(model::bent), files);
    std::vector<std::pair<role, std::size_t>> roles;
    for (const job& each : set.jobs) roles.emplace_back(each.is, each.other);
    EXPECT_THAT(roles, testing::ElementsAreArray(
                           std::vector<std::pair<role, std::size_t>>{{role::reference, 0},
                                                                     {role::paired, 3},
                                                                     {role::paired, 6},
                                                                     {role::paired, 1},
                                                                     {role::one_sided, 0},
                                                                     {role::repeated, 1},
                                                                     {role::paired, 2},
                                                                     {role::repeated, 3},
                                                                     {role::undisplaced, 0},
                                                                     {role::one_sided, 0}}));
    EXPECT_EQ(set.pairs, 2U);
    EXPECT_EQ(set.one_sided, 2U);
    EXPECT_DOUBLE_EQ(set.smallest_step, 0.01);
    EXPECT_DOUBLE_EQ(set.largest_step, 0.02);
    EXPECT_EQ(set.dipole_decimals, 4);
    EXPECT_EQ(set.force_decimals, 9);
    EXPECT_EQ(set.basis_functions, 31);
    EXPECT_TRUE(set.has_forces);
}

TEST(Set, RefusesWhatDoesNotBelongTogether) {
    const auto refusal = [](const std::function<void(result_file&, result_file&)>& change) {
        result_file reference = model::reference(model::bent);
        result_file file = model::displaced(model::bent)[3];
        change(reference, file);
        const auto ended =
            support::ending_of([&] { (void)make_set(reference, std::vector{file}); });
        return ended ? ended->text : "";
    };
    const double nan = std::nan("");
    EXPECT_EQ(refusal([](auto&, auto& file) { file = model::reference(model::dark); }),
              "ref: has 5 atoms instead of 4, so it does not belong to ref");
    EXPECT_EQ(refusal([](auto&, auto& file) { file.contents.symbol[1] = "D"; }),
              "1y-: atom 2 is D 1 1.0078 instead of H 1 1.0078, so it does not belong to ref");
    EXPECT_EQ(refusal([](auto&, auto& file) { file.contents.nat[2] = 7; }),
              "1y-: atom 3 is C 7 12.0000 instead of C 6 12.0000, so it does not belong to ref");
    EXPECT_EQ(refusal([](auto&, auto& file) { file.contents.mass[3] += 2e-6; }),
              "1y-: atom 4 is H 1 1.0078 instead of H 1 1.0078, so it does not belong to ref");
    EXPECT_EQ(refusal([](auto&, auto& file) { file.contents.mass[3] += 5e-7; }), "");
    EXPECT_EQ(refusal([&](auto&, auto& file) { file.contents.corrected_tdip[2] = nan; }),
              "1y-: the dipole holds a value that is not a finite number");
    EXPECT_EQ(refusal([&](auto&, auto& file) { file.contents.frc[3][2] = 1 / 0.0; }),
              "1y-: the forces holds a value that is not a finite number");
    EXPECT_EQ(refusal([&](auto& reference, auto&) { reference.contents.x[3][0] = nan; }),
              "ref: the geometry holds a value that is not a finite number");
    EXPECT_EQ(refusal([&](auto&, auto& file) { file.contents.mass[0] = nan; }),
              "1y-: the masses holds a value that is not a finite number");
    EXPECT_EQ(refusal([](auto& reference, auto& file) { file = reference; }),
              "ref: is not displaced in any of the files, so there is nothing to differentiate");
    EXPECT_EQ(refusal([](auto& reference, auto&) { reference.contents.x.clear(); }),
              "ref: holds no atoms");
}

TEST(Set, SeesDecimalsInValues) {
    const auto seen = [](std::initializer_list<double> values) {
        decimals_seen decimals(4);
        for (const double each : values) decimals.look_at(each);
        return decimals.decimals();
    };
    EXPECT_EQ(seen({}), 4);
    EXPECT_EQ(seen({0.0, -0.5, 0.25}), 4);
    EXPECT_EQ(seen({0.123456}), 6);
    EXPECT_EQ(seen({0.1, 0.2, -0.3, 0.4, 0.5, 0.6, 0.7}), 4);
    EXPECT_EQ(seen({0.1, 0.2, -0.3, 0.4, 0.5, 0.6, 0.7, 0.8}), 1);
    EXPECT_EQ(seen({0.12, 0.2, -0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 1.5e-3}), 4);
    EXPECT_EQ(seen({1234.5678, 8.3903333e-2}), 9);
    EXPECT_EQ(seen({1 / 3.0}), 10);
    EXPECT_DOUBLE_EQ(rounding_error(4), 1e-4 / std::sqrt(12));
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

TEST(Derivatives, AreThoseOfTheModel) {
    for (const molecule& of : {model::bent, model::diatomic, model::line, model::dark}) {
        for (const bool oblique : {false, true}) {
            const auto files = oblique ? model::obliquely_displaced(of) : model::displaced(of);
            const auto set = make_set(model::reference(of), files);
            const auto made = differentiate(set);
            ASSERT_TRUE(made.complete());
            const double sigma =
                *std::max_element(made.dipole_uncertainty.begin(), made.dipole_uncertainty.end());
            EXPECT_LT(largest_difference(made.dipole, exact(of, false)),
                      3 * sigma + made.dipole_step_error);
            // The rounding of coordinates counts for oblique displacements.
            EXPECT_LT(largest_difference(made.forces, exact(of, true)), 2 * made.force_step_error);
            EXPECT_EQ(made.weights.rows, 3 * of.x.size());
            EXPECT_EQ(made.weights.columns, files.size() + 1);
        }
    }
}

TEST(Derivatives, KnowHowUncertainTheyAre) {
    const double h = 0.01 / flib::bohr_radius;
    const auto made =
        differentiate(make_set(model::reference(model::bent), model::displaced(model::bent)));
    EXPECT_THAT(made.dipole_uncertainty, testing::Each(testing::DoubleNear(
                                             1e-4 / std::sqrt(12.0) / std::sqrt(2.0) / h, 1e-9)));
    EXPECT_THAT(made.force_uncertainty, testing::Each(testing::DoubleNear(
                                            1e-9 / std::sqrt(12.0) / std::sqrt(2.0) / h, 1e-14)));
    double largest = 0;
    for (const double value : made.dipole.values) largest = std::max(largest, std::abs(value));
    EXPECT_NEAR(made.dipole_step_error / largest, 3 * h * h, 1e-6);
    // A small step is known less well: its coordinates have six decimals.
    EXPECT_NEAR(relative_step_error(1e-4), 1e-6 / std::sqrt(24.0) / flib::bohr_radius / 1e-4, 1e-6);

    // What a one-sided difference takes of the reference is uncertain too.
    auto files = model::displaced(model::bent);
    files.erase(files.begin() + 3);
    const auto one_sided = differentiate(make_set(model::reference(model::bent), files));
    EXPECT_NEAR(one_sided.dipole_uncertainty[1], 1e-4 / std::sqrt(6.0) / h, 1e-9);
    EXPECT_NEAR(one_sided.dipole_uncertainty[2], 1e-4 / std::sqrt(24.0) / h, 1e-9);
    EXPECT_LT(largest_difference(one_sided.dipole, made.dipole), 0.03);
    EXPECT_NEAR(one_sided.dipole(1, 0),
                (files[2].contents.corrected_tdip[0] -
                 model::reference(model::bent).contents.corrected_tdip[0]) /
                    h,
                1e-9);
}

TEST(Derivatives, NameCoordinatesThatAreMissing) {
    const auto missing = [](const std::vector<result_file>& files) {
        const auto set = make_set(model::reference(model::dark), files);
        const auto made = differentiate(set);
        EXPECT_EQ(made.dipole.rows, 0U);
        return std::to_string(made.open_directions) + ": " + text_of(made.missing, set.atoms);
    };
    auto files = model::displaced(model::dark);
    files.erase(files.begin() + 20, files.begin() + 26);
    files.erase(files.begin() + 8, files.begin() + 12);
    EXPECT_EQ(missing(files), "5: 2 H y, z; 4 H y, z; 5 H x");
    EXPECT_EQ(missing(chosen(files, {"1x+"})),
              "14: 1 C y, z; 2 H x, y, z; 3 H x, y, z; 4 H x, y, z; 5 H x and 2 more");
    // Two atoms that only ever move together.
    files = model::displaced(model::dark);
    files.erase(files.begin() + 6, files.begin() + 8);
    files[0].contents.x[1][0] += 0.01;
    files[1].contents.x[1][0] -= 0.01;
    EXPECT_EQ(missing(files), "1: 1 C x; 2 H x");
}

}  // namespace
