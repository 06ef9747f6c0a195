// The numbers of the drawings: places and lengths that can be computed by hand.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <regex>

#include "sgn/check/report.h"
#include "sgn/page/detail/drawings.h"
#include "sgn/page/detail/svg.h"

namespace {

using sgn::report;

/// The elements of a drawing with a class, a line each: the values of their other attributes, and
/// the text in them.
std::string shapes(const std::string& drawing, const std::string& kind) {
    static const std::regex element(
        R"re(<\w+ class="([^"]*)"([^>]*[^>/])/?>(?:<title>)?([^<\n]*))re");
    static const std::regex attribute(R"re( [a-z0-9-]+="([^"]*)")re");
    std::string text;
    for (std::sregex_iterator each(drawing.begin(), drawing.end(), element), end; each != end;
         ++each) {
        if ((*each)[1] != kind) continue;
        const std::string rest = (*each)[2];
        std::string line;
        for (std::sregex_iterator of(rest.begin(), rest.end(), attribute); of != end; ++of) {
            line += (line.empty() ? "" : " ") + (*of)[1].str();
        }
        const std::string words = (*each)[3];
        text += line + (words.empty() ? "" : ": " + words) + "\n";
    }
    return text;
}

/// All elements from the first of a class on.
std::string everything_after(const std::string& drawing, const std::string& kind) {
    const std::string rest = drawing.substr(drawing.find("<line class=\"" + kind));
    std::string text;
    for (std::size_t at = 0; (at = rest.find("class=\"", at)) != std::string::npos;) {
        at += 7;
        const std::size_t end = rest.find("class=\"", at);
        const std::size_t from = rest.rfind('<', at);
        text += shapes(rest.substr(from, end == std::string::npos ? end : end - from),
                       rest.substr(at, rest.find('"', at) - at));
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

/// Jobs stand at 72 + 914 (i + 1/2) / 3. Of a panel of 132 from 24 on, 1.12 times the largest value
/// is the top: 1 lies at 90 - 66 / 1.12. Below it the next, 172 further down.
TEST(DipoleDrawing, ShowsPrintedAndCorrectedValues) {
    report of;
    of.set.dipole_decimals = 4;
    of.set.jobs = {job_of("ref.sgn", 1, {0.5, 0, 0}), job_of("d/a_1.sgn", -1, {-1, 0.0005, 0}),
                   job_of("<.sgn", 0, {0.25, 0, 0})};
    of.suspects.flips = {{2}, {1}};
    const std::string drawing = sgn::page::dipole_drawing(of);
    EXPECT_EQ(shapes(drawing, "printed"),
              "529 31.07 4.2: d/a_1.sgn: printed 1.0000, corrected -1.0000\n"
              "529 291.46 4.2: d/a_1.sgn: printed -0.0005, corrected 0.0005\n");
    EXPECT_EQ(shapes(drawing, "jump"), "529 31.07 529 148.93\n529 291.46 529 232.54\n");
    EXPECT_EQ(shapes(drawing, "corrected"),
              "224.33 60.54 4.2: ref.sgn: printed 0.5000, corrected 0.5000\n"
              "529 148.93 4.2: d/a_1.sgn: printed 1.0000, corrected -1.0000\n"
              // Rounding is not to look like something: the panel shows 10 units of it.
              "224.33 262 4.2: ref.sgn: printed 0.0000, corrected 0.0000\n"
              "529 232.54 4.2: d/a_1.sgn: printed -0.0005, corrected 0.0005\n"
              "224.33 434 4.2: ref.sgn: printed 0.0000, corrected 0.0000\n"
              "529 434 4.2: d/a_1.sgn: printed 0.0000, corrected 0.0000\n");
    EXPECT_EQ(shapes(drawing, "corrected suspect").substr(0, 16), "833.67 75.27 4.2");
    EXPECT_EQ(shapes(drawing, "suspect-ring"),
              "833.67 75.27 9.2\n833.67 262 9.2\n833.67 434 9.2\n");
    EXPECT_EQ(shapes(drawing, "printed-line").substr(0, 37),
              "224.33,60.54 529,31.07 833.67,75.27\n2");
    EXPECT_EQ(shapes(drawing, "corrected-line").substr(0, 38),
              "224.33,60.54 529,148.93 833.67,75.27\n2");
    EXPECT_EQ(shapes(drawing, "zero"), "72 90 986 90\n72 262 986 262\n72 434 986 434\n");
    EXPECT_EQ(shapes(drawing, "small").substr(0, 26), "64 152.93 end: -1.0\n64 123");
    EXPECT_EQ(shapes(drawing, "small bad-text"), "837.67 514 end rotate(-55 837.67 514): &lt;\n");
    EXPECT_THAT(shapes(drawing, "small"),
                testing::AllOf(testing::HasSubstr("986 17 end: corrected: -1.0000 to 0.5000 au\n"),
                               testing::EndsWith("228.33 514 end rotate(-55 228.33 514): ref\n"
                                                 "533 514 end rotate(-55 533 514): a_1\n")));
    // No more names than there is room for, and those of suspects.
    while (of.set.jobs.size() < 61) of.set.jobs.push_back(of.set.jobs.front());
    of.suspects.flips = {{7}};
    const std::string crowd = sgn::page::dipole_drawing(of);
    const std::string names = shapes(crowd, "small") + shapes(crowd, "small bad-text");
    EXPECT_EQ(std::count(names.begin(), names.end(), '('), 32);
    EXPECT_EQ(shapes(crowd, "suspect-ring").substr(0, 16), "184.38 60.54 9.2");
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

/// A ratio r has a bar of 240 log(1 + r) / log(100), or of 1.5 at least, from 196 or 696 on.
TEST(RulesDrawing, ShowsResiduesOverTheirUncertainties) {
    report of;
    of.dipole_rules = rules_of({{false, 0, 0, 4.5}, {false, 1, 2, -2}, {true, 0, 1, 1.25}});
    std::string drawing = sgn::page::rules_drawing(of);
    EXPECT_EQ(shapes(drawing, "bar bar-beyond"), "196 43 120 12\n696 67 93.38 12\n");
    EXPECT_EQ(shapes(drawing, "small beyond-text"), "322 53 start: 9.0\n795.38 77 start: 5.0\n");
    const std::string bars = shapes(drawing, "bar");
    EXPECT_EQ(std::count(bars.begin(), bars.end(), '\n'), 13);
    EXPECT_THAT(bars, testing::HasSubstr("\n196 163 83.88 12\n696 163 1.5 12\n"));
    EXPECT_EQ(shapes(drawing, "rounding"), "196 32 57.25 228\n696 32 57.25 228\n");
    EXPECT_EQ(shapes(drawing, "small faint"),
              "702 196 start: about the axis of the molecule\n"
              "702 220 start: about the axis of the molecule\n"
              "702 244 start: about the axis of the molecule\n");
    EXPECT_THAT(shapes(drawing, "small"),
                testing::AllOf(testing::HasSubstr("686 76 end: about x, component \u03BCy\n"),
                               testing::HasSubstr("186 172 end: along y, component \u03BCz\n"),
                               testing::HasSubstr("320.97 28 middle: 10\n"),
                               testing::Not(testing::HasSubstr("middle: 100"))));
    // Failing, and mended by other signs; what is absurd stays in the drawing.
    of.dipole_rules.satisfied = false;
    of.suspects.flips = {{1}};
    of.suspects.mended = rules_of({{false, 0, 0, 1.5}});
    drawing = sgn::page::rules_drawing(of);
    EXPECT_EQ(shapes(drawing, "bar bar-bad"), "196 43 120 7\n696 67 93.38 7\n");
    EXPECT_EQ(shapes(drawing, "small bad-text"), "322 53 start: 9.0\n795.38 77 start: 5.0\n");
    EXPECT_EQ(shapes(drawing, "bar bar-mended").substr(0, 28), "196 52 72.25 5\n696 52 1.5 5\n");
    of.dipole_rules.translation(0, 0) = of.dipole_rules.largest =
        std::numeric_limits<double>::infinity();
    EXPECT_EQ(shapes(sgn::page::rules_drawing(of), "bar bar-bad").substr(0, 12), "196 43 240 7");
}

sgn::normal_mode mode_of(double wavenumber, double borrowed) {
    sgn::normal_mode mode;
    mode.wavenumber = wavenumber;
    mode.borrowed = borrowed;
    mode.dipole_derivative_q = {0.3, 0, std::sqrt(borrowed)};
    return mode;
}

/// From 72 to 976 lie 1.05 times the smallest and the largest wavenumbers; 236 up from 270, 1.08
/// times the largest height.
TEST(ModesDrawing, ShowsBorrowedIntensity) {
    report of;
    of.modes = {mode_of(-250, std::nan("")), mode_of(1000, 0.5), mode_of(1010, 0.25),
                mode_of(4000, 1)};
    std::string drawing = sgn::page::modes_drawing(of);
    EXPECT_EQ(shapes(drawing, "stick"),
              "935.48 270 935.48 51.48\n327.75 270 327.75 160.74\n329.78 270 329.78 215.37\n");
    EXPECT_EQ(shapes(drawing, "knob"),
              "935.48 51.48 4: mode 4: 4000.0 1/cm, 1.000\n"
              "327.75 160.74 4: mode 2: 1000.0 1/cm, 0.500\n"
              "329.78 215.37 4: mode 3: 1010.0 1/cm, 0.250\n");
    EXPECT_EQ(shapes(drawing, "stick imaginary"), "74.53 270 74.53 270\n");
    EXPECT_EQ(shapes(drawing, "knob imaginary"), "74.53 270 4: mode 1: -250.0 1/cm, 0.000\n");
    // Names where there is room, of the highest first.
    EXPECT_EQ(shapes(drawing, "small strong"),
              "935.48 42.48 end: 4: 4000\n"
              "327.75 151.74 middle: 2: 1000\n"
              "74.53 261 middle: 1: -250\n");
    EXPECT_THAT(shapes(drawing, "label"), testing::HasSubstr("intensity of the dipole itself"));
    // Of a dipole of no intensity the squares of the derivatives, 0.09 + 0.16.
    of.modes = {mode_of(30, 0.16)};
    of.modes[0].borrowed = std::nan("");
    drawing = sgn::page::modes_drawing(of);
    EXPECT_EQ(shapes(drawing, "knob"), "343.2 51.48 4: mode 1: 30.0 1/cm, 0.250\n");
    EXPECT_THAT(shapes(drawing, "label"), testing::HasSubstr("squared derivative"));
    EXPECT_THAT(shapes(drawing, "small"), testing::HasSubstr("252.8 290 middle: 20\n"));
}

report molecule_of(const std::vector<sgn::atom>& atoms, const sgn::vec3& dipole) {
    report of;
    of.set.atoms = atoms;
    of.set.jobs = {job_of("ref.sgn", 1, dipole)};
    return of;
}

/// The long axis of the molecule points to the right, turned by 0.45 about the vertical, then all
/// by 0.35 towards the reader; the drawing is 460 wide, 46 of it a margin, and 360 high.
TEST(MoleculeDrawing, ShowsWhereTheAtomsAre) {
    std::vector<sgn::atom> atoms{{"O", 8, 16, {-2, 0, 0}},
                                 {"<", 1, 1, {2, 0, 0}, 12},
                                 {"C", 6, 12, {0, 0.6, 0}},
                                 {"C", 6, 12, {0, -0.6, 0}}};
    std::string drawing = sgn::page::molecule_drawing(molecule_of(atoms, {0, 0, 2}));
    // 368 for 4 cos(0.45) Angstrom; the far atoms first, the arrow comes towards the reader.
    EXPECT_EQ(everything_after(drawing, "bond"),
              "230 122.41 230 237.59\n"
              "46 149.52 31.18: O1: -2.000000, 0.000000, 0.000000 \u00C5\n"
              "46 154.02 middle: O1\n"
              "230 237.59 33.43: C4: 0.000000, -0.600000, 0.000000 \u00C5\n"
              "230 242.09 middle: C4\n"
              "230 122.41 33.43: C3: 0.000000, 0.600000, 0.000000 \u00C5\n"
              "230 126.91 middle: C3\n"
              "414 210.48 23.32: &lt;12: 2.000000, 0.000000, 0.000000 \u00C5\n"
              "414 214.98 middle: &lt;12\n"
              "230 180 173.63 220.02\n"
              "178.36,211.14 173.63,220.02 183.57,218.48\n"
              "166.67 229.96 middle: \u03BC\n");
    // One that goes away lies behind the atoms; along the line of sight it is a dot; or there is
    // none.
    drawing = sgn::page::molecule_drawing(molecule_of(atoms, {0, 0, -2}));
    EXPECT_LT(drawing.find("\"dipole\""), drawing.find("<circle"));
    EXPECT_EQ(shapes(drawing, "dipole").substr(0, 21), "230 180 286.37 139.98");
    EXPECT_EQ(
        shapes(sgn::page::molecule_drawing(molecule_of(atoms, {0.408592, 0.342898, 0.845847})),
               "dipole"),
        "230 180 3\n");
    EXPECT_EQ(shapes(sgn::page::molecule_drawing(molecule_of(atoms, {})), "dipole"), "");

    // A crowd on one side: all smaller, with numbers alone; not their mean is in the middle.
    for (std::size_t i = 4; i < 41; ++i) atoms.push_back({"H", 1, 1, {1, 0, 0}});
    drawing = sgn::page::molecule_drawing(molecule_of(atoms, {}));
    EXPECT_THAT(shapes(drawing, "atom el-o"), testing::StartsWith("46 149.52 24.95: O1"));
    atoms.assign(41, {"H", 1, 1, {}});
    for (std::size_t i = 0; i < 41; ++i) atoms[i].x[0] = 0.5 * static_cast<double>(i);
    drawing = sgn::page::molecule_drawing(molecule_of(atoms, {}));
    EXPECT_EQ(shapes(drawing, "atom-name small-name").substr(0, 42),
              "46 152.52 middle: 1\n55.2 154.05 middle: 2\n");
    EXPECT_EQ(shapes(drawing, "atom el-h").substr(0, 17), "46 149.52 7: H1: ");
    atoms.resize(1);
    EXPECT_EQ(
        shapes(sgn::page::molecule_drawing(molecule_of(atoms, {})), "atom el-h").substr(0, 13),
        "230 180 34: H");
}

TEST(MoleculeDrawing, ColoursElements) {
    std::vector<sgn::atom> atoms;
    for (const int number : {1, 2, 6, 7, 8, 9, 15, 16, 17, 35}) {
        atoms.push_back({"E", number, 1, {-3.0 * number, 0, 0}});  // the last one is nearest
    }
    std::string drawing = sgn::page::molecule_drawing(molecule_of(atoms, {}));
    std::string kinds;
    for (std::size_t at = 0; (at = drawing.find("atom el-", at)) != std::string::npos; ++at) {
        kinds = drawing.substr(at + 8, drawing.find('"', at) - at - 8) + " " + kinds;
    }
    EXPECT_EQ(kinds, "h x c n o hal s s hal x ");
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
