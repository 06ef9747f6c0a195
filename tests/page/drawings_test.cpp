// The numbers of the drawings: places and lengths that can be computed by hand, as
// tests/data/page/drawings.txt does.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <regex>

#include "sgn/check/report.h"
#include "sgn/page/detail/drawings.h"
#include "sgn/page/detail/svg.h"
#include "support/session.h"

namespace {

using sgn::report;

/// The elements of a drawing, a line each: the values of their attributes, and the text in them.
/// They are those with a class, without that, or, with "-" behind it, all from its first one on.
std::string shapes(const std::string& drawing, std::string kind) {
    static const std::regex element(
        R"re(<\w+ class="([^"]*)"([^>]*[^>/])/?>(?:<title>)?([^<\n]*))re");
    static const std::regex attribute(R"re( [a-z0-9-]+="([^"]*)")re");
    const bool all = kind.ends_with('-');
    if (all) kind.pop_back();
    bool reached = false;
    std::string text;
    for (std::sregex_iterator each(drawing.begin(), drawing.end(), element), end; each != end;
         ++each) {
        const std::string is = (*each)[1];
        reached = reached || is == kind;
        if (all ? !reached : is != kind) continue;
        const std::string rest = (*each)[2];
        std::string line = all ? is + ":" : "";
        for (std::sregex_iterator of(rest.begin(), rest.end(), attribute); of != end; ++of) {
            line += (line.empty() ? "" : " ") + (*of)[1].str();
        }
        const std::string words = (*each)[3];
        text += line + (words.empty() ? "" : ": " + words) + "\n";
    }
    return text;
}

sgn::displaced_job job_of(const std::string& name, std::int32_t sign, const sgn::vec3& dipole) {
    sgn::displaced_job made;
    made.name = name;
    made.sign = sign;
    made.dipole = dipole;
    return made;
}

using drawings = std::map<std::string, std::string>;

void add_dipoles(drawings& all) {
    report of;
    of.set.dipole_decimals = 4;
    of.set.jobs = {job_of("ref.sgn", 1, {0.5, 0, 0}), job_of("d/a_1.sgn", -1, {-1, 0.0005, 0}),
                   job_of("<.sgn", 0, {0.25, 0, 0})};
    of.suspects.flips = {{2}, {1}};
    all["dipoles"] = sgn::page::dipole_drawing(of);
    while (of.set.jobs.size() < 61) of.set.jobs.push_back(of.set.jobs.front());
    of.suspects.flips = {{7}};
    all["many dipoles"] = sgn::page::dipole_drawing(of);
}

sgn::sum_rules rules_of(std::initializer_list<sgn::residue> residues) {
    sgn::sum_rules rules;
    rules.judged = rules.satisfied = true;
    rules.largest = 99 / 1.15;
    rules.translation = rules.rotation = rules.translation_uncertainty =
        rules.rotation_uncertainty = sgn::table(3, 3);
    for (std::size_t i = 0; i < 9; ++i) {
        rules.translation_uncertainty.values[i] = 0.5;
        rules.rotation_uncertainty.values[i] = i < 6 ? 0.25 : 0;  // no turn about z
    }
    for (const sgn::residue& each : residues) {
        (each.turning ? rules.rotation : rules.translation)(each.axis, each.component) = each.value;
    }
    return rules;
}

void add_rules(drawings& all) {
    report of;
    of.dipole_rules = rules_of({{false, 0, 0, 4.5}, {false, 1, 2, -2}, {true, 0, 1, 1.25}});
    all["sums"] = sgn::page::rules_drawing(of);
    of.dipole_rules.satisfied = false;
    of.suspects.flips = {{1}};
    of.suspects.mended = rules_of({{false, 0, 0, 1.5}});
    all["failing sums"] = sgn::page::rules_drawing(of);
    of.dipole_rules.translation(0, 0) = of.dipole_rules.largest =
        std::numeric_limits<double>::infinity();
    all["absurd sums"] = sgn::page::rules_drawing(of);
}

sgn::normal_mode mode_of(double wavenumber, double borrowed) {
    sgn::normal_mode mode;
    mode.wavenumber = wavenumber;
    mode.borrowed = borrowed;
    mode.dipole_derivative_q = {0.3, 0, std::sqrt(borrowed)};
    return mode;
}

void add_modes(drawings& all) {
    report of;
    of.modes = {mode_of(-250, std::nan("")), mode_of(1000, 0.5), mode_of(1010, 0.25),
                mode_of(4000, 1)};
    all["modes"] = sgn::page::modes_drawing(of);
    of.modes = {mode_of(30, 0.16)};
    of.modes[0].borrowed = std::nan("");
    all["mode of a dark state"] = sgn::page::modes_drawing(of);
}

report molecule_of(const std::vector<sgn::atom>& atoms, const sgn::vec3& dipole) {
    report of;
    of.set.atoms = atoms;
    of.set.jobs = {job_of("ref.sgn", 1, dipole)};
    return of;
}

void add_molecules(drawings& all) {
    std::vector<sgn::atom> atoms{{"O", 8, 16, {-2, 0, 0}},
                                 {"<", 1, 1, {2, 0, 0}, 12},
                                 {"C", 6, 12, {0, 0.6, 0}},
                                 {"C", 6, 12, {0, -0.6, 0}}};
    const auto add = [&](const std::string& name, const sgn::vec3& dipole) {
        all[name] = sgn::page::molecule_drawing(molecule_of(atoms, dipole));
    };
    add("molecule", {0, 0, 2});
    add("dipole away", {0, 0, -2});
    add("dipole along the line of sight", {0.408592, 0.342898, 0.845847});
    add("no dipole", {});
    for (std::size_t i = 4; i < 41; ++i) atoms.push_back({"H", 1, 1, {1, 0, 0}});
    add("crowd", {});
    atoms.assign(41, {"H", 1, 1, {}});
    for (std::size_t i = 0; i < 41; ++i) atoms[i].x[0] = 0.5 * static_cast<double>(i);
    add("chain", {});
    atoms.resize(1);
    add("atom", {});
    atoms.clear();
    for (const int number : {1, 2, 6, 7, 8, 9, 15, 16, 17, 35}) {
        atoms.push_back({"E", number, 1, {-3.0 * number, 0, 0}});  // the last one is nearest
    }
    add("elements", {});
}

TEST(Drawings, HaveTheseShapes) {
    drawings all;
    add_dipoles(all);
    add_rules(all);
    add_modes(all);
    add_molecules(all);
    for (const auto& [step, expected] : support::session_of("page/drawings.txt")) {
        const auto row = support::fields_of(step, 2);
        const std::string told = shapes(all.at(row[0]), row[1]);
        EXPECT_EQ(support::elided(told, expected), expected) << "$ " << step;
    }
    // No more names than there is room for, and those of suspects.
    const std::string& many = all.at("many dipoles");
    const std::string names = shapes(many, "small") + shapes(many, "small bad-text");
    EXPECT_EQ(std::count(names.begin(), names.end(), '('), 32);
    // An arrow that goes away lies behind the atoms.
    const std::string& away = all.at("dipole away");
    EXPECT_LT(away.find("\"dipole\""), away.find("<circle"));
}

TEST(Svg, ChoosesRoundTicks) {
    const auto shown = [](double low, double high, int about) {
        const auto marks = sgn::page::svg::ticks(low, high, about);
        std::string text = std::to_string(sgn::page::svg::decimals_of(marks));
        for (const double mark : marks) text += " " + sgn::page::svg::number(mark);
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

}  // namespace
