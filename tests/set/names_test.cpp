// Names of files and symbols of atoms with control characters, in what is said of a set: of that
// which tools do not show in tests/checks/odd_names.sh.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model.h"
#include "sgn/check/report.h"
#include "sgn/set/find_signs.h"
#include "sgn/set/from_arrays.h"
#include "support/support.h"

namespace {

using namespace sgn;

TEST(OddNames, AreShownInPrintableCharacters) {
    const std::string odd = "a\x1b[2J";
    const std::vector<std::string> names(2, odd);
    displaced_set set = make_set(model::reference(model::dark), model::displaced(model::dark));
    for (displaced_job& each : set.jobs) each.name = odd;
    displaced_set without_force = set;
    without_force.jobs[1].forces.pop_back();
    displaced_set without_partner = set;
    without_partner.jobs[1].other = set.jobs.size();
    proof unseen;
    unseen.unseen = {1};
    unseen.largest_dipole = unseen.largest_error = 1e-4;
    proof dark;
    dark.as_good = {{0}};
    const auto ended = [](const std::function<void()>& routine) {
        return support::ending_of(routine).value_or(support::ending{}).text;
    };
    const struct {
        const char* what;
        std::string text;
    } all[] = {{"signs that are open", find_signs(set).reason},
               {"a sign that is none",
                ended([&] { with_signs(set, std::vector<int>(set.jobs.size(), 0)); })},
               {"a force that is missing", ended([&] { differentiate(without_force); })},
               {"a partner that is missing", ended([&] { differentiate(without_partner); })},
               {"a sign that is not seen", reservation_of(unseen, names)},
               {"signs that fit as well", reservation_of(dark, names)},
               {"an element", ended([&] { set_of_arrays(std::vector{odd}, {}, {}, {}); })}};
    for (const auto& [what, text] : all) {
        EXPECT_THAT(text, testing::HasSubstr("a\\x1B[2J")) << what;
        EXPECT_EQ(text.find('\x1b'), std::string::npos) << what;
    }
}

}  // namespace
