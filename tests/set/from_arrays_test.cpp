// Sets made of arrays are those of result files, with all their digits.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "flib/io/stop_run.h"
#include "model.h"
#include "sgn/check/report.h"
#include "sgn/set/derivatives.h"
#include "sgn/set/find_signs.h"
#include "sgn/set/from_arrays.h"
#include "support/support.h"

namespace {

using namespace sgn;

const std::vector<std::string> symbols{"O", " h", "C", "H"};

job_arrays arrays_of(const result_file& file) {
    return {file.contents.x, file.contents.corrected_tdip, file.contents.frc, file.name};
}

struct arrays {
    job_arrays reference = arrays_of(model::reference(model::bent));
    std::vector<job_arrays> displaced;

    arrays() {
        for (const auto& file : model::displaced(model::bent)) displaced.push_back(arrays_of(file));
    }
};

TEST(SetOfArrays, IsThatOfTheResultFiles) {
    const arrays given;
    const auto files = make_set(model::reference(model::bent), model::displaced(model::bent));
    array_facts facts;
    for (const atom& each : files.atoms) facts.masses.push_back(each.mass);
    const auto set = set_of_arrays(symbols, given.reference, given.displaced, facts);
    for (std::size_t i = 0; i < set.atoms.size(); ++i) {
        EXPECT_EQ(set.atoms[i].symbol, files.atoms[i].symbol);
        EXPECT_EQ(set.atoms[i].number, files.atoms[i].number);
        EXPECT_EQ(set.atoms[i].mass, files.atoms[i].mass);
    }
    ASSERT_EQ(set.jobs.size(), files.jobs.size());
    for (std::size_t j = 0; j < set.jobs.size(); ++j) {
        EXPECT_EQ(set.jobs[j].name, files.jobs[j].name);
        EXPECT_EQ(set.jobs[j].is, files.jobs[j].is);
        EXPECT_EQ(set.jobs[j].sign, 1);
    }
    EXPECT_THAT(differentiate(set).dipole.values,
                testing::Pointwise(testing::DoubleNear(1e-9), differentiate(files).dipole.values));
    EXPECT_TRUE(set.has_forces);
    EXPECT_EQ(set.dipole_decimals, 4);
    EXPECT_EQ(set.force_decimals, 9);
    EXPECT_EQ(set.coordinate_decimals, 9);
}

TEST(SetOfArrays, IsReportedOnLikeTheResultFiles) {
    const auto told = [](const report& of) {
        std::string text = verdict_of(of);
        for (const finding& each : of.findings) {
            const bool whole = each.job == finding::whole_set;
            text.append("\n").append(whole ? "set" : of.set.jobs[each.job].name);
            text.append(": ").append(each.text);
        }
        return text;
    };
    const auto reference = model::reference(model::bent);
    for (const bool wrong : {false, true}) {
        auto files = model::displaced(model::bent);
        files.push_back(files[3]);
        files.erase(files.begin());
        if (wrong) files[5].contents.corrected_tdip = scaled(-1, files[5].contents.corrected_tdip);
        arrays given;
        given.displaced.clear();
        for (const auto& file : files) given.displaced.push_back(arrays_of(file));
        array_facts facts;
        facts.masses = reference.contents.mass;
        facts.coordinate_decimals = 6;
        const auto set = set_of_arrays(symbols, given.reference, given.displaced, facts);
        EXPECT_EQ(told(analyse(set)), told(analyse(reference, files)));
        EXPECT_EQ(told(analyse(set, false)), told(analyse(reference, files, false)));
    }
}

TEST(SetOfArrays, TellsThatSoughtSignsAreUndecided) {
    const arrays given;
    const auto set = set_of_arrays(symbols, given.reference, given.displaced);
    found_signs signs = find_signs(set);
    ASSERT_TRUE(signs.decided);
    EXPECT_TRUE(analyse(set, signs).fine());
    signs.decided = false;
    signs.reason = "2x+ or 2x-";
    signs.signs[3] = -1;
    const report of = analyse(set, signs);
    EXPECT_EQ(of.set.jobs[3].sign, -1);
    EXPECT_EQ(of.findings.back().text, "the signs are undecided: 2x+ or 2x-");
    EXPECT_EQ(of.findings.back().kind, doubt::undecided_signs);
}

TEST(SetOfArrays, KeepsAllDigitsAndWhatIsToldOfThem) {
    arrays given;
    given.displaced[3].x[1][2] += 1.25e-7;
    given.reference.name.clear();
    for (job_arrays* each : {&given.reference, &given.displaced[2]}) each->name.clear();
    for (job_arrays& each : given.displaced) each.forces.clear();
    given.reference.forces.clear();
    const auto set = set_of_arrays(symbols, given.reference, given.displaced, {{}, 6, 5, 7});
    EXPECT_DOUBLE_EQ(set.jobs[4].moved.shift[1][2],
                     given.displaced[3].x[1][2] - given.reference.x[1][2]);
    EXPECT_EQ(set.jobs[0].name + ", " + set.jobs[3].name, "reference, job 3");
    EXPECT_FALSE(set.has_forces);
    EXPECT_EQ(set.atoms[0].mass, 15.99491464);
    EXPECT_EQ(set.dipole_decimals, 6);
    EXPECT_EQ(set.force_decimals, 5);
    EXPECT_EQ(set.coordinate_decimals, 7);
}

TEST(SetOfArrays, RefusesWhatDoesNotBelongTogether) {
    const struct {
        const char* message;
        std::function<void(arrays&, std::vector<std::string>&, array_facts&)> change;
    } cases[] = {
        {"atom 2: no element has the symbol Qq", [](auto&, auto& of, auto&) { of[1] = "Qq"; }},
        {"ref: has 3 symbols of 4 atoms", [](auto&, auto& of, auto&) { of.pop_back(); }},
        {"ref: has 1 masses of 4 atoms", [](auto&, auto&, auto& facts) { facts.masses = {1}; }},
        {"the coordinates cannot have 11 decimals: 0 to 10",
         [](auto&, auto&, auto& facts) { facts.coordinate_decimals = 11; }},
        {"the dipoles cannot have -1 decimals: 0 to 10",
         [](auto&, auto&, auto& facts) { facts.dipole_decimals = -1; }},
        {"the forces cannot have 99 decimals: 0 to 10",
         [](auto&, auto&, auto& facts) { facts.force_decimals = 99; }},
        {"1x-: has no forces, other than the reference",
         [](auto& all, auto&, auto&) { all.displaced[1].forces.clear(); }},
        {"1x+: has forces, other than the reference",
         [](auto& all, auto&, auto&) { all.reference.forces.clear(); }},
        {"2y+: has 5 atoms instead of 4, so it does not belong to ref",
         [](auto& all, auto&, auto&) { all.displaced[8].x.emplace_back(); }},
        {"2y+: has 3 forces of 4 atoms, so it does not belong to ref",
         [](auto& all, auto&, auto&) { all.displaced[8].forces.pop_back(); }},
        {"2y+: the dipole holds a value that is not a finite number",
         [](auto& all, auto&, auto&) { all.displaced[8].dipole[1] = std::nan(""); }},
        {"ref: holds no atoms", [](auto& all, auto&, auto&) { all.reference.x.clear(); }},
        {"ref: is not displaced in any of the files, so there is nothing to differentiate",
         [](auto& all, auto&, auto&) { all.displaced.clear(); }},
    };
    for (const auto& [message, change] : cases) {
        arrays all;
        std::vector<std::string> of = symbols;
        array_facts facts;
        change(all, of, facts);
        const auto end =
            support::ending_of([&] { set_of_arrays(of, all.reference, all.displaced, facts); });
        ASSERT_TRUE(end) << message;
        EXPECT_EQ(end->text, message);
    }
}

}  // namespace
