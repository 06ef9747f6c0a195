// Every doubt: planted one at a time, found by both tools, and told in docs/findings.md.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <nlohmann/json.hpp>
#include <set>

#include "flib/io/stop_run.h"
#include "sets.h"
#include "sgn/check/check.h"
#include "sgn/check/report.h"

namespace {

using sgn::doubt;
using sgn::sgn_contents;

struct set_of {
    sgn::result_file reference;
    std::vector<sgn::result_file> files;
};

set_of water() {
    return {sets::water().reference, sets::water().files};
}

/// The names of all findings, each once.
std::set<std::string> names_in(const set_of& set, bool derive) {
    std::set<std::string> names;
    const auto add = [&](const std::vector<sgn::finding>& findings) {
        for (const sgn::finding& each : findings) {
            EXPECT_NE(each.text, "");
            EXPECT_EQ(each.text.find("{}"), std::string::npos) << each.text;
            names.emplace(name_of(each.kind));
        }
    };
    if (derive) {
        add(sgn::analyse(set.reference, set.files).findings);
    } else {
        const sgn::assessment judged = sgn::check(set.reference, set.files, {});
        for (const sgn::verdict& each : judged.verdicts) add(each.findings);
        add(judged.findings);
        EXPECT_EQ(judged.fine(), names.empty());
    }
    return names;
}

std::string joined(const std::set<std::string>& names) {
    std::string text;
    for (const std::string& each : names) text += (text.empty() ? "" : " ") + each;
    return text;
}

/// A fault, and what is found: the doubt itself and what comes with it by nature.
struct fault {
    doubt kind;
    std::function<void(set_of&)> plant;
    std::string found;
    bool refused = false;  ///< by sgn_derive: there is no result
    /// What sgn_derive says besides: it does not leave turned files out of the set.
    std::string besides{};
};

sgn_contents& file(set_of& set, std::size_t i = 5) {
    return set.files[i].contents;  // of h2o_01zp.sgn
}

/// Shifts the dipoles of a pair alike, which no derivative sees.
void shift_pair(set_of& set, double by) {
    for (const std::size_t i : {4, 5}) file(set, i).corrected_tdip[1] += by;
}

void reverse(sgn_contents& of) {
    for (double& each : of.corrected_tdip) each = -each;
    of.parameters.sign *= -1;
    of.parameters.tden_maxval *= -1;
}

/// Turns a file about the z axis by some degrees, its dipole along.
void turn(set_of& set, double degrees, bool dipole) {
    const double c = std::cos(degrees * 3.14159265358979 / 180);
    const double s = std::sin(degrees * 3.14159265358979 / 180);
    const auto turned = [&](const sgn::vec3& v) {
        return sgn::vec3{c * v[0] - s * v[1], s * v[0] + c * v[1], v[2]};
    };
    for (sgn::vec3& x : file(set).x) x = turned(x);
    if (dipole) file(set).corrected_tdip = turned(file(set).corrected_tdip);
}

const std::vector<fault>& faults() {
    static const std::vector<fault> all{
        {doubt::sign_zero, [](auto& set) { file(set).parameters.sign = 0; }, "sign_zero"},
        {doubt::other_element, [](auto& set) { ++file(set).parameters.tden_maxloc[0]; },
         "other_element"},
        {doubt::other_sizes, [](auto& set) { ++file(set).parameters.mci; }, "other_sizes"},
        {doubt::small_element, [](auto& set) { file(set).parameters.tden_maxval *= 0.49; },
         "small_element"},
        {doubt::large_element, [](auto& set) { file(set).parameters.tden_maxval *= 2.1; },
         "large_element"},
        {doubt::zero_element, [](auto& set) { set.reference.contents.parameters.tden_maxval = 0; },
         "zero_element"},
        {doubt::sign_conflict, [](auto& set) { file(set).parameters.tden_maxval *= -1; },
         "sign_conflict"},
        {doubt::no_partner, [](auto& set) { set.files.erase(set.files.begin() + 5); },
         "no_partner"},
        {doubt::not_displaced, [](auto& set) { set.files.push_back(set.reference); },
         "not_displaced"},
        {doubt::repeated, [](auto& set) { set.files.push_back(set.files[5]); }, "repeated"},
        {doubt::no_masses,
         [](auto& set) {
             set.reference.contents.mass[2] = 0;
             for (auto& each : set.files) each.contents.mass[2] = 0;
         },
         "no_masses"},
        {doubt::not_finite, [](auto& set) { file(set).corrected_tdip[1] = std::nan(""); },
         "not_finite", true},
        {doubt::other_atoms, [](auto& set) { file(set).mass[1] += 1; }, "other_atoms", true},
        {doubt::turned, [](auto& set) { turn(set, 40, true); }, "dipole_turned no_partner turned",
         false, "large_step"},
        {doubt::dipole_turned, [](auto& set) { shift_pair(set, 0.4); },
         "asymmetric_pair dipole_turned"},
        {doubt::asymmetric_pair, [](auto& set) { shift_pair(set, 0.003); }, "asymmetric_pair"},
        {doubt::large_step,
         [](auto& set) {
             for (auto& each : set.files) {
                 for (std::size_t i = 0; i < 9; ++i) {
                     double& x = each.contents.x[i / 3][i % 3];
                     x += 9 * (x - set.reference.contents.x[i / 3][i % 3]);
                 }
             }
         },
         "dipole_sum_rules force_sum_rules large_step unsound"},
        {doubt::force_sum_rules, [](auto& set) { file(set).frc[0][0] += 1e-2; },
         "asymmetric_forces force_sum_rules"},
        {doubt::asymmetric_forces,
         [](auto& set) {  // forces that sum to nothing
             file(set).frc[1][1] += 3e-3;
             file(set).frc[2][1] -= 3e-3;
         },
         "asymmetric_forces force_sum_rules"},
        {doubt::suspect_sign, [](auto& set) { reverse(file(set)); },
         "asymmetric_pair dipole_sum_rules dipole_turned suspect_sign"},
        {doubt::unsound,
         [](auto& set) {
             file(set, 0).corrected_tdip = {0.1, 0.2, 0.3};
             file(set, 5).corrected_tdip = {-0.3, 0.5, 0.2};
         },
         "asymmetric_pair dipole_sum_rules dipole_turned unsound"},
    };
    return all;
}

TEST(Findings, AreThoseOfThePlantedFaultInBothTools) {
    EXPECT_EQ(joined(names_in(water(), false)) + joined(names_in(water(), true)), "");
    for (const fault& each : faults()) {
        set_of set = water();
        each.plant(set);
        const std::string name(name_of(each.kind));
        const auto checked = names_in(set, false);
        EXPECT_TRUE(checked.contains(name)) << name;
        EXPECT_EQ(joined(checked), each.found) << name;
        if (each.refused) {
            EXPECT_THROW(sgn::analyse(set.reference, set.files), flib::io_error) << name;
        } else {
            auto expected = checked;
            if (!each.besides.empty()) expected.insert(each.besides);
            EXPECT_EQ(joined(names_in(set, true)), joined(expected)) << name;
        }
    }
}

TEST(Findings, AreFilledOncePerGap) {
    EXPECT_EQ(text_of(doubt::asymmetric_pair, {"a{}.sgn", "0.5"}),
              "dipole not symmetric with a{}.sgn: 0.5 au");
}

TEST(Findings, StandInTheTableAndInItsPage) {
    const std::string page = support::contents_of(EXAMPLES "/../docs/findings.md");
    std::string rows;
    for (const sgn::doubt_row& each : sgn::doubts) {
        EXPECT_EQ(&row_of(each.kind), &each);
        std::string limit;
        if (!std::isnan(each.limit)) {
            limit = nlohmann::json(each.limit).dump();
            if (limit.ends_with(".0")) limit.resize(limit.size() - 2);
            limit.append(" ").append(each.unit);
        }
        for (std::size_t at = 0; (at = limit.find('|', at)) != std::string::npos; at += 2) {
            limit.insert(at, 1, '\\');
        }
        for (const std::string& cell :
             {"`" + std::string(each.name) + "`", std::string(each.words), limit,
              std::string(each.meaning), std::string(each.advice)}) {
            rows.append("| ").append(cell).append(" ");
        }
        rows += "|\n";
    }
    EXPECT_EQ(page.substr(page.find("| `")), rows);
}

}  // namespace
