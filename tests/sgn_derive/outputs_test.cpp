// All outputs as a whole, against tests/data/sgn_derive, of sets that differ in everything.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "set/model.h"
#include "sgn/check/report.h"
#include "sgn_derive/json.h"
#include "sgn_derive/molden.h"
#include "sgn_derive/text.h"
#include "support/json_difference.h"
#include "support/sets.h"

namespace {

using namespace sgn_derive;
using sgn::report;
using testing::HasSubstr;

std::string fixture(const std::string& name) {
    return support::contents_of(support::data_file(name));
}

/// Wrong in every way in which a set can still be judged.
report doubtful() {
    auto files = sets::water().files;
    sets::reverse(files[9], true);
    files.push_back(files[3]);
    files.back().name = "a/again.sgn";
    files.push_back(sets::water().reference);
    files.back().name = "<i>&\"'\n\xFF.sgn";
    files[5].contents.parameters.sign = 0;
    auto reference = sets::water().reference;
    reference.name = "</title><b>";
    report of = sgn::analyse(reference, files);
    of.suspects.flips.push_back({3, 7});
    of.suspects.flips.push_back({0});
    of.set.atoms[0].symbol = "<";
    return of;
}

/// Many atoms of many elements, displaced by steps of two sizes, some on one side only.
report many() {
    model::molecule of{{6, 1, 7, 8, 9, 17, 15, 16, 300, 6, 35, 92, 2}, {}};
    for (std::size_t i = 0; i < of.numbers.size(); ++i) {
        const auto turn = 1.1 * static_cast<double>(i);
        of.x.push_back({1.3 * std::cos(turn), 1.1 * std::sin(turn), 0.4 * turn});
    }
    auto files = model::displaced(of);
    const auto larger = model::displaced(of, 0.0125);
    std::copy(larger.begin() + 10, larger.begin() + 16, files.begin() + 10);
    files.erase(files.begin() + 41);
    files.erase(files.begin() + 22);
    for (const std::size_t i : {2, 3, 40}) {
        files[i].contents.parameters.sign = -1;
        files[i].contents.parameters.tden_maxval = -0.4;
    }
    files[0].contents.x[1][1] += 0.002;  // and no longer a pair
    files[5].contents.parameters.nmo = 32;
    report made = sgn::analyse(model::reference(of), files);
    EXPECT_EQ(made.set.one_sided, 4U);
    return made;
}

/// On a line along z, in a state without a dipole.
report upright() {
    const model::molecule of{{8, 6, 8}, {{0, 0, -1.2}, {0, 0, 0}, {0, 0, 1.2}}};
    return sgn::analyse(model::reference(of), model::displaced(of));
}

TEST(Outputs, AreThoseOfTheFixtures) {
    const struct {
        const char* name;
        report of;
    } cases[] = {
        {"water", sgn::analyse(sets::water().reference, sets::water().files)},
        {"doubtful", doubtful()},
        {"many", many()},
        {"line", upright()},
    };
    for (const auto& [name, of] : cases) {
        const std::string base = "sgn_derive/" + std::string(name);
        EXPECT_EQ(text_of(of, {}), fixture(base + ".txt"));
        EXPECT_EQ(text_of(of, {true, 80}), fixture(base + "_80.txt"));
        if (base.find("water") == base.npos && base.find("doubt") == base.npos) continue;
        EXPECT_EQ(support::difference_from(base + ".json", json_of(of)), "");
        EXPECT_EQ(molden_of(of), fixture(base + ".molden"));
    }
    EXPECT_EQ(text_of(cases[0].of, {false, 118}), fixture("sgn_derive/water.txt"));
    EXPECT_THAT(text_of(cases[0].of, {false, 117}), HasSubstr("mass-weighted coordinate: x"));
    sgn::sum_rules failed = cases[3].of.dipole_rules;
    failed.satisfied = false;
    EXPECT_THAT(sgn_derive::residues_text(failed, "dipole"), testing::Not(HasSubstr("about z")));
    const auto json = nlohmann::json::parse(json_of(many()));
    EXPECT_EQ(json["files"][1]["role"], "one_sided");
    EXPECT_NEAR(json["step"]["smallest"], 0.01, 1e-6);
    EXPECT_NEAR(json["step"]["largest"], 0.0125, 1e-6);
}

}  // namespace
