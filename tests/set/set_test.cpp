// Sets of result files: what is displaced, and all that is computed of them, against
// tests/data/set/*.json.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "common/json_text.h"
#include "common/set_json.h"
#include "flib/io/stop_run.h"
#include "model.h"
#include "sgn/check/frame.h"
#include "sgn/checkpoint/checkpoint.h"
#include "sgn/set/decimals.h"
#include "sgn/set/derivatives.h"
#include "sgn/set/modes.h"
#include "sgn/set/suspects.h"
#include "support/json_difference.h"
#include "support/support.h"

namespace {

using namespace sgn;
using tools::json_of;
using tools::json_text;
using tools::json_value;

json_value told(const displaced_set& set) {
    json_value result{{"basis_functions", set.basis_functions},
                      {"counts", std::array{set.pairs, set.one_sided}},
                      {"steps", std::array{set.smallest_step, set.largest_step}},
                      {"decimals", std::array{set.dipole_decimals, set.force_decimals}},
                      {"has_forces", set.has_forces}};
    for (const atom& each : set.atoms) {
        result["atoms"].push_back(json_value::array({each.symbol, each.number, each.mass, each.x}));
    }
    for (const displaced_job& each : set.jobs) {
        const auto at = json_value::array({each.name, name_of(each.is), set.jobs[each.other].name,
                                           each.sign, each.moved.distance});
        result["jobs"].push_back({{"is", at},
                                  {"shift", each.moved.shift},
                                  {"dipole", each.dipole},
                                  {"forces", each.forces}});
    }
    return result;
}

/// All that is computed of a set.
json_value outcome(const displaced_set& set) {
    const derivatives made = differentiate(set);
    if (!made.complete()) {
        return {{"missing", text_of(made.missing, set.atoms)}, {"open", made.open_directions}};
    }
    const sum_rules dipole = dipole_rules(set, made);
    const suspects found = find_suspects(set, made, dipole);
    json_value result{{"dipole", json_of(made.dipole)},
                      {"dipole_rounding", made.dipole_rounding},
                      {"dipole_step_error", made.dipole_step_error},
                      {"dipole_rules", json_of(dipole)},
                      {"force_rules", json_of(force_rules(set, made))},
                      {"unsound", found.unsound},
                      {"mended", json_of(found.mended)}};
    const auto names_of = [&](const std::vector<std::size_t>& jobs) {
        json_value names = json_value::array();
        for (const std::size_t each : jobs) names.push_back(set.jobs[each].name);
        return names;
    };
    for (const auto& flips : found.flips) result["flips"].push_back(names_of(flips));
    result["unseen"] = names_of(found.unseen);
    for (const auto& others : found.as_good) result["as_good"].push_back(names_of(others));
    if (!set.has_forces) return result;
    const table constants = force_constants(made.forces);
    result["forces"] = json_of(made.forces);
    result["force_rounding"] = made.force_rounding;
    result["force_step_error"] = made.force_step_error;
    result["force_constants"] = json_of(constants);
    result["asymmetry"] = largest_asymmetry(made.forces);
    for (const auto& mode :
         normal_modes(set.atoms, constants, made.dipole, set.jobs.front().dipole)) {
        result["wavenumbers"].push_back(std::array{mode.wavenumber, mode.reduced_mass});
        // Which two of the equal bends of a line come out is open.
        if (set.atoms.size() < 4) continue;
        result["modes"].push_back(json_value::array(
            {mode.displacement, mode.dipole_derivative, mode.dipole_derivative_q, mode.borrowed}));
    }
    return result;
}

TEST(Set, FindsDisplacementsInTheGeometries) {
    std::vector<result_file> files;
    for (const std::size_t i : {0, 23, 1, 8, 0, 22, 1}) {
        files.push_back(model::displaced(model::bent)[i]);
    }
    files.push_back(model::reference(model::bent));
    files.push_back(model::displaced(model::bent, 0.02).front());
    files.push_back(model::displaced(model::bent, 0.000008).back());
    // One coordinate rounded the other way: still the same place, and an opposite displacement.
    files[2].contents.x[3][2] += 2e-6;
    files[3].contents.x[0][0] += 0.004;
    files[5].contents.parameters.sign = -1;
    EXPECT_EQ(
        support::difference_from("set/roles.json",
                                 json_text(told(make_set(model::reference(model::bent), files)))),
        "");
}

TEST(Set, LeavesOutWhatDoesNotBelongToIt) {
    std::vector<result_file> files = model::displaced(model::bent);
    files[2].contents.mass[1] += 0.001;
    files[5].contents.frc[0][2] = std::nan("");
    files[7].contents.x.pop_back();
    files[8].contents.frc.pop_back();
    const displaced_set set = make_set(model::reference(model::bent), files);
    std::string told;
    for (const misfit& each : set.misfits) told += each.name + ": " + each.reason + "\n";
    EXPECT_EQ(told,
              "1y+: atom 2 is H 1 1.008825 instead of H 1 1.007825, so it does not belong to ref\n"
              "1z-: the forces holds a value that is not a finite number\n"
              "2x-: has 3 atoms instead of 4, so it does not belong to ref\n"
              "2y+: has 3 forces of 4 atoms, so it does not belong to ref\n");
    EXPECT_EQ(set.jobs.size() + set.misfits.size(), files.size() + 1);
    EXPECT_EQ(set.one_sided, 4U);
    for (result_file& each : files) each.contents.x.clear();
    EXPECT_TRUE(support::ending_of([&] { make_set(model::reference(model::bent), files); }));
}

TEST(Set, IsComputedAsAWhole) {
    const auto none = [](auto&, auto&) {};
    const struct {
        const char* name;
        model::molecule of;
        std::function<void(result_file&, std::vector<result_file>&)> change;
    } cases[] = {
        {"pairs", model::bent, none},
        {"one_sided", model::bent,
         [](auto&, auto& files) {
             const auto larger = model::displaced(model::bent, 0.015);
             std::copy(larger.begin() + 4, larger.begin() + 8, files.begin() + 4);
             files.erase(files.begin() + 3);
             files.erase(files.begin() + 11);
             files.push_back(model::displaced(model::bent, 0.02).front());
         }},
        {"oblique", model::diatomic,
         [](auto&, auto& files) { files = model::obliquely_displaced(model::diatomic); }},
        {"reversed", model::line,
         [](auto& reference, auto& files) {
             model::reverse(reference);
             for (const std::size_t i : {2, 3, 9}) model::reverse(files[i]);
         }},
        {"vanished", model::dark,
         [](auto&, auto& files) {
             for (std::size_t i = 0; i < files.size(); i += 2) model::reverse(files[i]);
         }},
        {"alternatives", model::dark,
         [](auto&, auto& files) {
             for (const std::size_t i : {6, 7}) model::reverse(files[i]);
         }},
        {"no_forces", model::diatomic,
         [](auto& reference, auto& files) {
             reference.contents.frc.assign(2, {0, 0, 0});
             for (result_file& each : files) each.contents.frc = reference.contents.frc;
             files.front().contents.corrected_tdip[1] += 0.00123;
             files.erase(files.begin() + 5);
         }},
        {"single", {{8}, {{0.1, 0.2, 0.3}}}, none},
        {"upright", {{8, 6, 1}, {{0, 0, -1.1}, {0, 0, 0}, {0, 0, 1.2}}}, none},
        {"nearly_upright", {{8, 6, 1}, {{0, 0, -1.1}, {0.01, 0, 0}, {0, 0, 1.2}}}, none},
    };
    for (const auto& [name, of, change] : cases) {
        result_file reference = model::reference(of);
        auto files = model::displaced(of);
        change(reference, files);
        EXPECT_EQ(support::difference_from("set/" + std::string(name) + ".json",
                                           json_text(outcome(make_set(reference, files)))),
                  "")
            << name;
    }
    // An atom alone has no modes.
    const std::vector<atom> alone{{"O", 8, 16, {0.1, 0.2, 0.3}}};
    EXPECT_TRUE(normal_modes(alone, table(3, 3), table(3, 3), {}).empty());
}

TEST(Set, NamesCoordinatesThatAreMissing) {
    const auto missing = [](const std::vector<result_file>& files) {
        const displaced_set set = make_set(model::reference(model::dark), files);
        const derivatives made = differentiate(set);
        return std::to_string(made.open_directions) + ": " + text_of(made.missing, set.atoms);
    };
    auto files = model::displaced(model::dark);
    files.erase(files.begin() + 20, files.begin() + 26);
    files.erase(files.begin() + 8, files.begin() + 12);
    EXPECT_EQ(missing(files), "5: 2 H y, z; 4 H y, z; 5 H x");
    EXPECT_EQ(missing({files[0]}),
              "14: 1 C y, z; 2 H x, y, z; 3 H x, y, z; 4 H x, y, z; 5 H x and 2 more");
    // Two atoms that only ever move together, but for the last digit.
    files = model::displaced(model::dark);
    files.erase(files.begin() + 6, files.begin() + 8);
    files[0].contents.x[1][0] += 0.01;
    files[1].contents.x[1][0] -= 0.01;
    for (const std::size_t i : {0, 1}) {
        files.push_back(model::displaced(model::dark, 0.02)[i]);
        files.back().contents.x[1][0] += i == 0 ? 0.020001 : -0.020001;
    }
    EXPECT_EQ(missing(files), "1: 1 C x; 2 H x");
}

TEST(Set, RefusesOtherShapes) {
    const displaced_set whole =
        make_set(model::reference(model::bent), model::displaced(model::bent));
    const derivatives of = differentiate(whole);
    const table dipole = of.dipole;
    const table forces = force_constants(of.forces);
    const auto changed = [](auto value, auto&& change) {
        change(value);
        return value;
    };
    const auto short_shift = changed(whole, [](auto& set) { set.jobs[3].moved.shift.pop_back(); });
    const auto short_forces = changed(whole, [](auto& set) { set.jobs[2].forces.pop_back(); });
    const auto more_atoms = changed(whole, [](auto& set) { set.atoms.push_back(set.atoms[0]); });
    const auto transposed =
        changed(of, [](auto& d) { std::swap(d.dipole.rows, d.dipole.columns); });
    const auto emptied = changed(of, [](auto& d) { d.forces.values.pop_back(); });
    const std::span<const atom> atoms(whole.atoms);
    const std::vector<vec3> places(4);
    const std::vector<double> masses(4);
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"there are 3 shifts of 1y+ instead of 4", [&] { differentiate(short_shift); }},
        {"there are 3 forces of 1x- instead of 4", [&] { dipole_rules(short_forces, of); }},
        {"there are 4 shifts of ref instead of 5", [&] { force_rules(more_atoms, of); }},
        {"there are 3 rows of the derivatives of the dipole instead of 12",
         [&] { checkpoint_of(whole, transposed); }},
        {"there are 143 values of the derivatives of the forces instead of 144",
         [&] { dipole_rules(whole, emptied); }},
        {"there is no job in the set", [&] { differentiate({}); }},
        {"there are 3 columns of the derivatives of the forces instead of 12",
         [&] { force_constants(dipole); }},
        {"there are 3 columns of the derivatives of the forces instead of 12",
         [&] { largest_asymmetry(dipole); }},
        {"there are 12 rows of the force constants instead of 9",
         [&] { normal_modes(atoms.first(3), forces, dipole, {}); }},
        {"there are 12 columns of the derivatives of the dipole instead of 3",
         [&] { normal_modes(atoms, forces, forces, {}); }},
        {"there are 12 columns of the derivatives instead of 3",
         [&] { rules_of(atoms, dipole.row(0), forces, 1, 1); }},
        {"there are 4 places instead of 3",
         [&] { displacement_of(places, std::span(places).first(3)); }},
        {"there are 3 places instead of 4",
         [&] { turn_of_frame(places, std::span(places).first(3), masses); }},
        {"there are 3 masses instead of 4",
         [&] { turn_of_frame(places, places, std::span(masses).first(3)); }},
    };
    for (const auto& [words, call] : cases) {
        try {
            call();
            ADD_FAILURE() << "no error: " << words;
        } catch (const flib::run_error& error) {
            EXPECT_STREQ(error.what(), words);
        }
    }
}

TEST(Set, RefusesWhatDoesNotBelongTogether) {
    const double nan = std::nan("");
    const auto other = ", so it does not belong to ref";
    const auto no_number = std::string(" holds a value that is not a finite number");
    const struct {
        std::function<void(result_file&, result_file&)> change;
        std::string message;
    } cases[] = {
        {[](auto&, auto& file) { file = model::reference(model::dark); },
         std::string("ref: has 5 atoms instead of 4") + other},
        {[](auto&, auto& file) { file.contents.symbol[1] = "D"; },
         std::string("1y-: atom 2 is D 1 1.007825 instead of H 1 1.007825") + other},
        {[](auto&, auto& file) { file.contents.nat[2] = 7; },
         std::string("1y-: atom 3 is C 7 12.000000 instead of C 6 12.000000") + other},
        {[](auto&, auto& file) { file.contents.mass[3] += 2e-6; },
         std::string("1y-: atom 4 is H 1 1.007827 instead of H 1 1.007825") + other},
        {[](auto&, auto& file) { file.contents.mass[3] += 5e-7; }, ""},
        {[&](auto&, auto& file) { file.contents.corrected_tdip[2] = nan; },
         "1y-: the dipole" + no_number},
        {[&](auto&, auto& file) { file.contents.frc[3][2] = 1 / 0.0; },
         "1y-: the forces" + no_number},
        {[&](auto& reference, auto&) { reference.contents.x[3][0] = nan; },
         "ref: the geometry" + no_number},
        {[&](auto&, auto& file) { file.contents.mass[0] = nan; }, "1y-: the masses" + no_number},
        {[](auto& reference, auto& file) { file = reference; },
         "ref: is not displaced in any of the files, so there is nothing to differentiate"},
        {[](auto& reference, auto&) { reference.contents.x.clear(); }, "ref: holds no atoms"},
    };
    for (const auto& [change, message] : cases) {
        result_file reference = model::reference(model::bent);
        result_file file = model::displaced(model::bent)[3];
        change(reference, file);
        const auto ended =
            support::ending_of([&] { (void)make_set(reference, std::vector{file}); });
        EXPECT_EQ(ended ? ended->text : "", message);
    }
}

TEST(Set, SeesDecimalsInValues) {
    const auto seen = [](std::initializer_list<double> values) {
        decimals_seen decimals(4);
        for (const double each : values) decimals.look_at(each);
        return decimals.decimals();
    };
    EXPECT_EQ(seen({0.0, -0.5, 0.25}), 4);
    EXPECT_EQ(seen({0.123456}), 6);
    EXPECT_EQ(seen({0.1, 0.2, -0.3, 0.4, 0.5, 0.6, 0.7, 0.7, 0.0}), 4);
    EXPECT_EQ(seen({0.1, 0.2, -0.3, 0.4, 0.5, 0.6, 0.7, 0.8}), 1);
    EXPECT_EQ(seen({1234.5678, 8.3903333e-2}), 9);
    EXPECT_EQ(seen({1 / 3.0}), 10);
}

TEST(SumRules, OfDerivativesMadeElsewhere) {
    // Numbers without any rule.
    constexpr double bohr = flib::bohr_radius;
    const std::vector<atom> atoms{
        {"", 0, 0, {0, 0, 0}}, {"", 0, 0, {0, 0.4 * bohr, 2 * bohr}}, {"", 0, 0, {3 * bohr, 0, 0}}};
    table j(9, 3);
    for (std::size_t i = 0; i < 27; ++i) j.values[i] = std::sin(static_cast<double>(i));
    const std::vector<double> dipole{0.3, -0.5, 0.7};
    EXPECT_EQ(support::difference_from("set/elsewhere.json",
                                       json_text(json_of(rules_of(atoms, dipole, j, 1e-3, 0.01)))),
              "");
    // Up to a mean square of 4, for forces a residue of 8, in units of the uncertainties.
    const double chi2 = rules_of(atoms, dipole, j, 1, 0).chi2;
    EXPECT_TRUE(rules_of(atoms, dipole, j, std::sqrt(chi2 / 18 / 3.9), 0).satisfied);
    EXPECT_FALSE(rules_of(atoms, dipole, j, std::sqrt(chi2 / 18 / 4.1), 0).satisfied);
    table f(9, 9);
    f(4, 7) = 1;
    const double largest = rules_of(atoms, std::vector<double>(9), f, 1, 0).largest;
    EXPECT_TRUE(rules_of(atoms, std::vector<double>(9), f, largest / 7.9, 0).satisfied);
    EXPECT_FALSE(rules_of(atoms, std::vector<double>(9), f, largest / 8.1, 0).satisfied);
}

}  // namespace
