// All outputs as a whole, against tests/data/sgn_derive, of sets that differ in everything: what is
// not as it was made is left in the directory for temporary files.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <thread>

#include "common/progress.h"
#include "common/version.h"
#include "set/model.h"
#include "sets.h"
#include "sgn/check/report.h"
#include "sgn_derive/html.h"
#include "sgn_derive/html_drawings.h"
#include "sgn_derive/html_style.h"
#include "sgn_derive/json.h"
#include "sgn_derive/molden.h"
#include "sgn_derive/svg.h"
#include "sgn_derive/text.h"
#include "support/json_difference.h"

namespace {

using namespace sgn_derive;
using sgn::report;
using testing::HasSubstr;

/// The first line that is not as in the fixture, or nothing.
std::string difference_from(const std::string& fixture, const std::string& made) {
    const std::string expected = support::contents_of(support::data_file(fixture));
    if (made == expected) return {};
    const auto file =
        std::filesystem::temp_directory_path() / fixture.substr(fixture.rfind('/') + 1);
    support::write_file(file, made);
    const auto [at, there] =
        std::mismatch(made.begin(), made.end(), expected.begin(), expected.end());
    const auto from = made.rfind('\n', static_cast<std::size_t>(at - made.begin())) + 1;
    return fixture + ", line " + std::to_string(1 + std::count(made.begin(), at, '\n')) + ": " +
           made.substr(from, made.find('\n', from) - from) +
           "\nall that was made: " + file.string();
}

/// A page without what others decide, and without its style.
std::string page_of(const report& of) {
    const std::string page = support::replaced(html_of(of), sgn_derive::page_style, "");
    return support::replaced(page, "sgn_derive " + std::string(tools::version()), "sgn_derive");
}

/// What is wrong with the nesting of tags, or nothing.
std::string fault_of(const std::string& page) {
    std::vector<std::string> open;
    for (std::size_t at = page.find('<'); at < page.size(); at = page.find('<', at + 1)) {
        const std::size_t end = page.find_first_of("<>", at + 1);
        if (end == std::string::npos || page[end] == '<') return page.substr(at, 60);
        const std::string name = page.substr(at + 1, page.find_first_of(" >", at) - at - 1);
        if (name[0] == '/') {
            if (open.empty() || open.back() != name.substr(1)) return name + " is not open";
            open.pop_back();
        } else if (page[end - 1] != '/' && name != "meta" && name != "!DOCTYPE") {
            open.push_back(name);
        }
    }
    return open.empty() ? "" : open.back() + " stays open";
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

/// On a line along z, in a state without a dipole; masses are missing from `without`.
report upright(bool masses, bool forces) {
    const model::molecule of{{8, 6, 8}, {{0, 0, -1.2}, {0, 0, 0}, {0, 0, 1.2}}};
    auto reference = model::reference(of);
    auto files = model::displaced(of);
    files.push_back(reference);
    for (auto& each : files) {
        if (!forces) each.contents.frc.assign(3, {});
        if (!masses) each.contents.mass[1] = 0;
    }
    reference.contents.frc = files.back().contents.frc;
    reference.contents.mass = files.back().contents.mass;
    files.pop_back();
    return sgn::analyse(reference, files);
}

TEST(Outputs, AreThoseOfTheFixtures) {
    const struct {
        const char* name;
        report of;
    } cases[] = {
        {"water", sgn::analyse(sets::water().reference, sets::water().files)},
        {"doubtful", doubtful()},
        {"many", many()},
        {"line", upright(true, true)},
    };
    for (const auto& [name, of] : cases) {
        const std::string base = "sgn_derive/" + std::string(name);
        const std::string page = page_of(of);
        EXPECT_EQ(fault_of(page), "") << name;
        EXPECT_EQ(difference_from(base + ".html", page), "");
        EXPECT_EQ(difference_from(base + ".txt", text_of(of, {})), "");
        EXPECT_EQ(difference_from(base + "_80.txt", text_of(of, {true, 80})), "");
        if (base.find("water") == base.npos && base.find("doubt") == base.npos) continue;
        EXPECT_EQ(support::difference_from(base + ".json", json_of(of)), "");
        EXPECT_EQ(difference_from(base + ".molden", molden_of(of)), "");
    }
    EXPECT_EQ(difference_from("sgn_derive/water.txt", text_of(cases[0].of, {false, 118})), "");
    EXPECT_THAT(text_of(cases[0].of, {false, 117}), HasSubstr("mass-weighted coordinate: x"));
    sgn::sum_rules failed = cases[3].of.dipole_rules;
    failed.satisfied = false;
    EXPECT_THAT(sgn_derive::residues_text(failed, "dipole"), testing::Not(HasSubstr("about z")));
    const auto json = nlohmann::json::parse(json_of(many()));
    EXPECT_EQ(json["files"][1]["role"], "one_sided");
    EXPECT_NEAR(json["step"]["smallest"], 0.01, 1e-6);
    EXPECT_NEAR(json["step"]["largest"], 0.0125, 1e-6);
    EXPECT_THAT(page_of(upright(false, true)), HasSubstr("A mass is missing"));
    EXPECT_THAT(page_of(upright(true, false)), HasSubstr("The files hold no forces"));
    for (const char* foreign : {"<script", "http:", "https:", "src=", "url(", "@import", "<link"}) {
        EXPECT_EQ(html_of(cases[0].of).find(foreign), std::string::npos) << foreign;
    }
}

/// Residues beyond their uncertainties are no doubt while the sums hold, and the page says no
/// other.
TEST(Outputs, AreAsCalmAsTheVerdict) {
    auto files = sets::water().files;
    files[7].contents.corrected_tdip[1] += 6e-4;  // of h2o_02xp.sgn
    const report calm = sgn::analyse(sets::water().reference, files);
    EXPECT_TRUE(calm.fine());
    EXPECT_GT(calm.dipole_rules.largest, sgn::unremarkable_residue);
    const std::string page = page_of(calm);
    EXPECT_THAT(page, HasSubstr("bar bar-beyond"));
    EXPECT_THAT(page, HasSubstr("beyond its uncertainty, but no doubt"));
    EXPECT_THAT(page, testing::Not(testing::AnyOf(HasSubstr("bar-bad"), HasSubstr("bad-text"))));
    const std::string red = page_of(doubtful());
    EXPECT_THAT(red, testing::AllOf(HasSubstr("bar-bad"), testing::Not(HasSubstr("beyond"))));
}

TEST(Outputs, OfReportsThatSetsDoNotMake) {
    // A dark state with an imaginary mode; rounding is not blown up in the drawing of the dipole.
    report of = sgn::analyse(sets::water().reference, sets::water().files);
    of.modes[0].wavenumber = -250;
    for (auto& mode : of.modes) mode.borrowed = std::nan("");
    of.modes[1].dipole_derivative_q = {0.3, 0, 0.4};
    for (auto& job : of.set.jobs) job.dipole = {0, 0.0001, -0.0003};
    std::string drawings = modes_drawing(of) + dipole_drawing(of) + molecule_drawing(of);
    // A crowd of small atoms, the dipole towards the reader; all elements; a single atom.
    of.set.jobs.front().dipole = {-0.4, 0.1, 0.2};
    for (const auto& [first, count] : {std::pair{1, 42}, {1, 32}, {33, 32}, {65, 33}}) {
        of.set.atoms.clear();
        for (int i = 0; i < count; ++i) {
            of.set.atoms.push_back(
                {"E", first + i, 0, {1.2 * (i % 8), 1.1 * (i / 8), 0.2 * (i % 5)}});
        }
        drawings += molecule_drawing(of);
    }
    of.set.atoms.resize(1);
    drawings += molecule_drawing(of);
    EXPECT_EQ(difference_from("sgn_derive/drawings.svg", drawings), "");
}

TEST(ShortNames, AreWhatTellsJobsApart) {
    const auto shortened = [](const std::vector<std::string>& names) {
        sgn::displaced_set set;
        for (const std::string& name : names) {
            set.jobs.emplace_back();
            set.jobs.back().name = name;
        }
        return testing::PrintToString(sgn_derive::short_names(set));
    };
    EXPECT_EQ(shortened({"a/h2o_ref.sgn", "b/h2o_01xm.sgn", "h2o_01xp.sgn"}),
              R"({ "ref", "01xm", "01xp" })");
    EXPECT_EQ(shortened({"ref.sgn", "d_a-1.sgn", "d_a-12.sgn"}), R"({ "ref", "1", "12" })");
    EXPECT_EQ(shortened({"x.sgn", "abc.sgn", "abd"}), R"({ "x", "abc", "abd" })");
}

TEST(Svg, ChoosesRoundTicks) {
    const auto shown = [](double low, double high, int about) {
        const auto marks = sgn_derive::svg::ticks(low, high, about);
        std::string text = std::to_string(sgn_derive::svg::decimals_of(marks));
        for (const double mark : marks) text += " " + sgn_derive::svg::number(mark);
        return text;
    };
    EXPECT_EQ(shown(0, 1, 5), "1 0 0.2 0.4 0.6 0.8 1");
    EXPECT_EQ(shown(-0.6, 0.6, 6), "1 -0.6 -0.4 -0.2 0 0.2 0.4 0.6");
    EXPECT_EQ(shown(0, 3500, 9), "0 0 500 1000 1500 2000 2500 3000 3500");
    EXPECT_EQ(shown(0, 0.85, 8), "1 0 0.2 0.4 0.6 0.8");
    EXPECT_EQ(shown(0, 0.0214, 5), "3 0 0.01 0.01 0.01 0.02");
    EXPECT_EQ(shown(0.1, 0.2, 1), "1 0.1 0.2");
    EXPECT_EQ(shown(1, 9, 1), "1");
}

TEST(Progress, IsShownOnATerminalAfterASecond) {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    const bool ready = terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0;
    const int inside = ready ? open(ptsname(terminal), O_RDWR | O_NOCTTY) : -1;
    if (inside < 0) GTEST_SKIP() << "no terminal to be had";
    const support::scratch_directory scratch;
    const int file = open(scratch.file("shown", "").c_str(), O_RDWR);
    {
        tools::progress shown(inside, 601);
        tools::progress hidden(file, 601);
        shown.at(1, "reading");
        std::this_thread::sleep_for(std::chrono::milliseconds(1005));
        shown.at(12, "reading");
        hidden.at(12, "reading");
    }
    std::string text;
    char part[100];
    for (pollfd output{terminal, POLLIN, 0}; poll(&output, 1, 300) > 0;) {
        const ssize_t count = read(terminal, part, sizeof part);
        if (count <= 0) break;
        text.append(part, static_cast<std::size_t>(count));
    }
    EXPECT_EQ(text, "\r\033[Kreading 12 of 601\r\033[K");
    EXPECT_EQ(lseek(file, 0, SEEK_END), 0);
    for (const int each : {terminal, inside, file}) close(each);
}

}  // namespace
