// The page: what it says, that its drawings show the numbers, and that nothing breaks out of it.
#include "sgn_derive/html.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <map>
#include <regex>

#include "common/number_text.h"
#include "sets.h"
#include "sgn_derive/html_drawings.h"
#include "sgn_derive/svg.h"

namespace {

using sgn_derive::report;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
namespace fs = std::filesystem;
using element = std::map<std::string, std::string>;  // attributes, and "" for the text inside

report water_report() {
    return sgn_derive::analyse(sets::water().reference, sets::water().files);
}

/// The water set with the dipole, sign and element of files turned round.
report with_reversed(const std::vector<std::string>& names) {
    auto files = sets::water().files;
    for (auto& file : files) {
        if (std::find(names.begin(), names.end(), file.name) == names.end()) continue;
        for (double& component : file.contents.corrected_tdip) component = -component;
        file.contents.parameters.sign *= -1;
        file.contents.parameters.tden_maxval *= -1;
    }
    return sgn_derive::analyse(sets::water().reference, files);
}

std::vector<element> elements(const std::string& text, const std::string& tag,
                              const std::string& kind) {
    std::vector<element> found;
    const std::regex whole("<" + tag + " class=\"" + kind + "\"([^>]*?)/?>([^<]*)");
    const std::regex attribute("([a-z0-9-]+)=\"([^\"]*)\"");
    for (std::sregex_iterator i(text.begin(), text.end(), whole), end; i != end; ++i) {
        element one{{"", (*i)[2]}};
        const std::string attributes = (*i)[1];
        for (std::sregex_iterator a(attributes.begin(), attributes.end(), attribute); a != end; ++a)
            one[(*a)[1]] = (*a)[2];
        found.push_back(one);
    }
    return found;
}

double number(const element& of, const std::string& name) {
    return std::stod(of.at(name));
}

/// What is wrong with the nesting of tags, or nothing.
std::string fault_of(const std::string& page) {
    std::vector<std::string> open;
    const std::regex tag(
        "<(/?)([a-zA-Z0-9!]+)((?:[ \n]+[a-zA-Z0-9-]+(?:=\"[^\"<>]*\")?)*)[ ]*(/?)>");
    auto at = page.cbegin();
    for (std::smatch found; std::regex_search(at, page.cend(), found, tag); at = found[0].second) {
        const std::string between(at, found[0].first);
        if (between.find_first_of("<>") != std::string::npos &&
            (open.empty() || open.back() != "style"))
            return "loose < or > in: " + between.substr(0, 60);
        const std::string name = found[2];
        if (name == "!DOCTYPE" || name == "meta" || found[4] == "/") continue;
        if (found[1] == "") {
            open.push_back(name);
        } else if (open.empty() || open.back() != name) {
            return "</" + name + "> closes " + (open.empty() ? "nothing" : open.back());
        } else {
            open.pop_back();
        }
    }
    return open.empty() ? "" : "open: " + open.back();
}

/// The page without tags and without what hints say, white space made one blank.
std::string words_of(std::string page) {
    page = std::regex_replace(page, std::regex("<(style|title)>[^]*?</\\1>"), "");
    page = std::regex_replace(page, std::regex("<[^>]*>"), " ");
    return std::regex_replace(page, std::regex("\\s+"), " ");
}

TEST(Page, BeginsWithTheVerdictAndNeedsNothingElse) {
    const std::string page = html_of(water_report());
    EXPECT_EQ(fault_of(page), "");
    for (const char* foreign : {"<script", "http:", "https:", "src=", "url(", "@import", "<link"}) {
        EXPECT_EQ(page.find(foreign), std::string::npos) << foreign;
    }
    for (const char* look :
         {"(prefers-color-scheme: dark)", "@media print", "default-src 'none'"}) {
        EXPECT_THAT(page, HasSubstr(look));
    }
    const std::string words = words_of(page);
    std::size_t at = 0;
    for (const char* part : {"H2O \u00B7 reference h2o_ref.sgn",
                             "All 19 files are fine: no sign is wrong.",
                             "Files 19 9 pairs",
                             "Signs put right 7 of 19",
                             "of 18 sums",
                             "0.5354 au",
                             "0.0100 \u00C5",
                             "The molecule",
                             "2 H 0.0000 0.7600 -0.4720 1.0078",
                             "The dipole along the jobs",
                             "7 of 19 jobs came out with the other sign",
                             "corrected: -0.5417 to -0.5291 au",
                             "corrected: -0.0035 to 0.0035 au",
                             "corrected: -0.0091 to 0.0091 au",
                             "Sum rules",
                             "largest residue is 2.7 times its uncertainty: they hold.",
                             "Forces: \u03C7\u00B2 = ",
                             "moving the molecule",
                             "Borrowed intensity",
                             "no stationary point (a force of 0.0839",
                             "3 3388.3 1.0542 0.07646 0.00000 0.00000 0.02040",
                             "All files",
                             "h2o_ref.sgn reference as printed -0.5354 0.0000 0.0000 fine",
                             "h2o_01xm.sgn 1 O -x 0.0100 put right -0.5353 0.0000 -0.0091 fine",
                             "h2o_03zp.sgn 3 H +z 0.0100 put right -0.5384 0.0000 0.0000 fine"}) {
        const std::size_t found = words.find(part, at);
        EXPECT_NE(found, std::string::npos) << part;
        if (found != std::string::npos) at = found;
    }
    EXPECT_EQ(page.find("doubt\""), std::string::npos);
}

TEST(Page, IsWrittenByTheToolWholeOrNotAtAll) {
    const support::scratch_directory scratch;
    std::vector<std::string> line{"--html", "page.html", "h2o_ref.sgn"};
    fs::copy(sets::water_directory() / "h2o_ref.sgn", scratch.path());
    for (const auto& file : sets::water().files) {
        fs::copy(sets::water_directory() / file.name, scratch.path());
        line.push_back(file.name);
    }
    const auto told = support::run({"sgn_derive", line, scratch.path()});
    EXPECT_EQ(told.status, 0);
    EXPECT_THAT(told.output, HasSubstr("All 19 files are fine"));
    EXPECT_EQ(support::contents_of(scratch.path() / "page.html"), html_of(water_report()));
    line[1] = "-";
    EXPECT_EQ(support::run({"sgn_derive", line, scratch.path()}).output, html_of(water_report()));
    line[1] = "absent/page.html";
    const auto refused = support::run({"sgn_derive", line, scratch.path()});
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.output, "");
    EXPECT_THAT(refused.errors, testing::StartsWith("sgn_derive: absent/page.html: "));
}

TEST(Page, NamesWhatIsWrong) {
    const report of = with_reversed({"h2o_02yp.sgn"});
    const std::string page = html_of(of);
    EXPECT_EQ(fault_of(page), "");
    const std::string words = words_of(page);
    for (const char* part :
         {"One sign is wrong: h2o_02yp.sgn", "h2o_02yp.sgn : the sum rules hold if this sign is",
          "they fail.", "suspect sign", "once the suspect signs are reversed",
          "these heights mean nothing yet"}) {
        EXPECT_THAT(words, HasSubstr(part));
    }
    EXPECT_THAT(page, HasSubstr("<section class=\"verdict doubt\">"));
    EXPECT_THAT(words, testing::ContainsRegex(
                           "h2o_02yp.sgn 2 H \\+y 0.0100 put right 0.5309 0.0000 0.0000 the sum "
                           "rules hold if this sign is reversed; "));
    // Three panels, and the legend.
    EXPECT_EQ(elements(page, "circle", "suspect-ring").size(), 4U);
    EXPECT_EQ(elements(page, "rect", "bar bar-mended").size(), 19U);
    EXPECT_EQ(elements(page, "text", "small bad-text")[0].at(""), "02yp");
}

/// Places of marks, translated to values by the labels of an axis.
class axis {
  public:
    /// From texts (values) at places.
    axis(const std::vector<element>& labels, const std::string& place) {
        const element& first = labels.front();
        const element& last = labels.back();
        value_ = std::stod(first.at(""));
        place_ = number(first, place);
        slope_ = (std::stod(last.at("")) - value_) / (number(last, place) - place_);
    }
    double operator()(double place) const { return value_ + slope_ * (place - place_); }

  private:
    double value_;
    double place_;
    double slope_;
};

TEST(DipoleDrawing, ShowsPrintedAndCorrectedValues) {
    const report of = with_reversed({"h2o_03xp.sgn"});
    const std::string drawing = sgn_derive::dipole_drawing(of);
    EXPECT_EQ(fault_of(drawing), "");
    std::vector<element> labels;  // of the vertical axes
    for (const element& each : elements(drawing, "text", "small")) {
        if (each.at("x") == "64") labels.push_back(each);
    }
    std::vector<element> corrected = elements(drawing, "circle", "corrected(?: suspect)?");
    std::vector<element> printed = elements(drawing, "circle", "printed");
    const std::size_t jobs = of.set.jobs.size();
    ASSERT_EQ(corrected.size(), 3 * jobs);
    std::size_t label = 0;
    std::size_t turned = 0;
    for (std::size_t k = 0; k < 3; ++k) {
        // The labels of a panel go upwards.
        std::vector<element> own{labels[label++]};
        while (label < labels.size() && number(labels[label], "y") < number(own.back(), "y")) {
            own.push_back(labels[label++]);
        }
        ASSERT_GE(own.size(), 3U);
        const axis value(own, "y");
        for (std::size_t i = 0; i < jobs; ++i) {
            const auto& job = of.set.jobs[i];
            const element& mark = corrected[k * jobs + i];
            // Labels stand 4 below their lines; places have two decimals.
            EXPECT_NEAR(value(number(mark, "cy") + 4), job.dipole[k], 0.0002) << i << ' ' << k;
            EXPECT_NEAR(number(mark, "cx"), 72 + 914 * (static_cast<double>(i) + 0.5) / 19, 0.01);
            if (job.sign > 0 || std::abs(job.dipole[k]) < 1e-9) continue;
            ASSERT_LT(turned, printed.size());
            EXPECT_NEAR(value(number(printed[turned], "cy") + 4), -job.dipole[k], 0.0002);
            EXPECT_EQ(printed[turned++].at("cx"), mark.at("cx"));
        }
    }
    EXPECT_EQ(turned, printed.size());
    EXPECT_EQ(turned, elements(drawing, "line", "jump").size());
    EXPECT_GE(turned, 8U);
    EXPECT_THAT(drawing, HasSubstr("h2o_01xm.sgn: printed 0.5353, corrected -0.5353"));
    // Rounding is not blown up.
    report still = of;
    for (auto& job : still.set.jobs) job.dipole[1] = 0.0001;
    EXPECT_THAT(sgn_derive::dipole_drawing(still),
                testing::AllOf(HasSubstr(">0.0010</text>"), Not(HasSubstr(">0.0015</text>"))));
}

TEST(RulesDrawing, ShowsResiduesAgainstTheirUncertainty) {
    const auto numbers_in = [](const std::string& drawing, const std::string& kind) {
        std::vector<std::string> texts;
        for (const element& each : elements(drawing, "text", kind)) {
            if (each.at("text-anchor") == "start" && each.at("") != "")
                texts.push_back(each.at(""));
        }
        return texts;
    };
    const report fine = water_report();
    const std::string drawing = sgn_derive::rules_drawing(fine);
    EXPECT_EQ(fault_of(drawing), "");
    const auto& rules = fine.dipole_rules;
    std::vector<std::string> expected;
    std::vector<double> ratios;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        for (std::size_t k = 0; k < 3; ++k) {
            for (const auto& [value, uncertainty] :
                 {std::pair{rules.translation, rules.translation_uncertainty},
                  {rules.rotation, rules.rotation_uncertainty}}) {
                ratios.push_back(std::abs(value(axis, k)) / uncertainty(axis, k));
                expected.push_back(tools::decimal(ratios.back(), 1));
            }
        }
    }
    EXPECT_EQ(numbers_in(drawing, "small"), expected);
    const std::vector<element> bars = elements(drawing, "rect", "bar");
    const std::vector<element> rounding = elements(drawing, "rect", "rounding");
    ASSERT_EQ(bars.size(), 18U);
    for (std::size_t i = 0; i < bars.size(); ++i) {
        // The band ends at twice the uncertainty, lengths are logarithms of 1 + ratio.
        const double unit = number(rounding[i % 2], "width") / std::log10(3);
        EXPECT_NEAR(number(bars[i], "width"), std::max(unit * std::log10(1 + ratios[i]), 1.5),
                    0.02);
        EXPECT_EQ(bars[i].at("x"), rounding[i % 2].at("x"));
    }
    EXPECT_THAT(drawing, HasSubstr(">along x, component \u03BCz</text>\n"));
    report linear = fine;
    for (std::size_t k = 0; k < 3; ++k) linear.dipole_rules.rotation_uncertainty(2, k) = 0;
    const std::string fewer = sgn_derive::rules_drawing(linear);
    EXPECT_EQ(elements(fewer, "rect", "bar").size(), 15U);
    EXPECT_EQ(elements(fewer, "text", "small faint").size(), 3U);
    // With a wrong sign, long bars are marked, and shrink once it is reversed.
    const report wrong = with_reversed({"h2o_02yp.sgn"});
    const std::string marked = sgn_derive::rules_drawing(wrong);
    const auto bad = elements(marked, "rect", "bar bar-bad");
    EXPECT_THAT(numbers_in(marked, "small bad-text"), ElementsAre("232", "924"));
    EXPECT_EQ(bad.size(), 2U);
    for (const element& each : elements(marked, "rect", "bar bar-mended")) {
        EXPECT_LT(number(each, "width"), number(bad[0], "width") / 3);
    }
}

TEST(ModesDrawing, HasASticksPerMode) {
    const report of = water_report();
    const std::string drawing = sgn_derive::modes_drawing(of);
    EXPECT_EQ(fault_of(drawing), "");
    std::vector<element> heights;
    std::vector<element> wavenumbers;
    for (const element& each : elements(drawing, "text", "small")) {
        (each.at("text-anchor") == "end" ? heights : wavenumbers).push_back(each);
    }
    const axis height(heights, "y");
    const axis wavenumber(wavenumbers, "x");
    std::vector<sgn_set::normal_mode> modes = of.modes;
    std::sort(modes.begin(), modes.end(),
              [](const auto& a, const auto& b) { return a.borrowed > b.borrowed; });
    const auto knobs = elements(drawing, "circle", "knob");
    const auto sticks = elements(drawing, "line", "stick");
    ASSERT_EQ(knobs.size(), modes.size());
    for (std::size_t i = 0; i < modes.size(); ++i) {
        EXPECT_NEAR(wavenumber(number(knobs[i], "cx")), modes[i].wavenumber, 0.5);
        EXPECT_NEAR(height(number(knobs[i], "cy") + 4), modes[i].borrowed, 1e-5);
        EXPECT_EQ(sticks[i].at("x1"), knobs[i].at("cx"));
        EXPECT_EQ(sticks[i].at("y2"), knobs[i].at("cy"));
        EXPECT_NEAR(height(number(sticks[i], "y1") + 4), 0, 1e-6);
    }
    // The first two lie too close to each other for both their names.
    const auto names = elements(drawing, "text", "small strong");
    ASSERT_EQ(names.size(), 2U);
    EXPECT_EQ(names[0].at("") + ", " + names[1].at(""), "3: 3388, 2: 1153");
    // An imaginary one, and a dipole of zero.
    report dark = of;
    dark.modes[0].wavenumber = -250;
    for (auto& mode : dark.modes) mode.borrowed = std::nan("");
    dark.modes[1].dipole_derivative_q = {0.3, 0, 0.4};
    const std::string other = sgn_derive::modes_drawing(dark);
    const auto imaginary = elements(other, "circle", "knob imaginary");
    ASSERT_EQ(imaginary.size(), 1U);
    EXPECT_GT(number(imaginary[0], "cx"), 72);
    EXPECT_DOUBLE_EQ(sgn_derive::borrowed_by(dark, dark.modes[1]), 0.25);
    EXPECT_THAT(other, HasSubstr("squared derivative of the dipole (au)"));
    EXPECT_THAT(other, Not(HasSubstr("nan")));
}

TEST(MoleculeDrawing, HasNumberedAtomsAndBonds) {
    report of = water_report();
    const std::string drawing = sgn_derive::molecule_drawing(of);
    EXPECT_EQ(fault_of(drawing), "");
    std::vector<std::string> names;
    for (const element& each : elements(drawing, "text", "atom-name")) names.push_back(each.at(""));
    EXPECT_THAT(names, testing::UnorderedElementsAre("O1", "H2", "H3"));
    EXPECT_EQ(elements(drawing, "line", "bond").size(), 2U);
    EXPECT_EQ(elements(drawing, "circle", "atom el-h").size(), 2U);
    EXPECT_EQ(elements(drawing, "line", "dipole").size(), 1U);
    EXPECT_THAT(drawing, HasSubstr("<title>H2: 0.000000, 0.760000, -0.472000 \u00C5</title>"));
    // Bonds end in their atoms, and atoms stand as far apart as they are long.
    const auto hydrogen = elements(drawing, "circle", "atom el-h");
    for (const element& bond : elements(drawing, "line", "bond")) {
        const bool ends = std::any_of(hydrogen.begin(), hydrogen.end(), [&](const element& atom) {
            return (bond.at("x1") == atom.at("cx") && bond.at("y1") == atom.at("cy")) ||
                   (bond.at("x2") == atom.at("cx") && bond.at("y2") == atom.at("cy"));
        });
        EXPECT_TRUE(ends);
    }
    // What lies behind is drawn first: a dipole that points away, behind all atoms.
    EXPECT_LT(drawing.find("class=\"dipole\""), drawing.find("el-o"));
    for (double& component : of.set.jobs.front().dipole) component = -component;
    const std::string before = sgn_derive::molecule_drawing(of);
    EXPECT_GT(before.find("class=\"dipole\""), before.find("el-o"));
    of.set.jobs.front().dipole = {};
    EXPECT_THAT(sgn_derive::molecule_drawing(of), Not(HasSubstr("dipole-name")));
    // Out of reach of each other; an element that is not known.
    of.set.atoms[1].x[1] += 3;
    of.set.atoms[2].number = 300;
    EXPECT_EQ(elements(sgn_derive::molecule_drawing(of), "line", "bond").size(), 1U);
    of.set.atoms.resize(1);
    EXPECT_THAT(sgn_derive::molecule_drawing(of), Not(HasSubstr("nan")));
}

TEST(Page, LetsNoNameBreakOut) {
    auto files = sets::water().files;
    files[3].name = "a<script>&\"'\n\xFF.sgn";
    auto reference = sets::water().reference;
    reference.name = "</title><b>";
    report of = sgn_derive::analyse(reference, files);
    of.set.atoms[0].symbol = "<";
    of.findings.push_back({"x", "<i>", 3});
    of.findings.push_back({"y", "of all <i>"});
    const std::string page = html_of(of);
    EXPECT_EQ(fault_of(page), "");
    EXPECT_THAT(page,
                Not(testing::AnyOf(HasSubstr("<script"), HasSubstr("<i>"), HasSubstr("<b></"))));
    EXPECT_THAT(page, HasSubstr("a&lt;script&gt;&amp;&quot;&#39;\\n\\xFF.sgn"));
    EXPECT_THAT(page, HasSubstr("<title>&lt;/title&gt;&lt;b&gt;: transition"));
}

TEST(Page, TellsWhatThereIsNot) {
    report of = water_report();
    of.dipole_rules = {};
    of.dipole_rules.why_not = "2 displacements are one-sided";
    of.set.has_forces = false;
    of.modes.clear();
    for (auto& job : of.set.jobs) job.sign = 1;
    of.set.jobs[4].sign = 0;
    of.set.jobs[5].is = sgn_set::role::undisplaced;
    of.set.one_sided = 2;
    of.suspects.flips = {{1, 2}, {3}};
    const std::string words = words_of(html_of(of));
    for (const char* part :
         {"9 pairs, 2 one-sided", "Sum rules \u2013 not judged", "No sign had to be put right",
          "Dipole: not judged, 2 displacements are one-sided.", "hold no forces",
          "h2o_01yp.sgn 1 O +y 0.0100 not told", "h2o_01zm.sgn none as printed"}) {
        EXPECT_THAT(words, HasSubstr(part));
    }
    EXPECT_THAT(words, Not(testing::AnyOf(HasSubstr("moving the molecule"), HasSubstr("nan"))));
    EXPECT_TRUE(is_suspect(of, 1) && is_suspect(of, 2) && !is_suspect(of, 3));
    EXPECT_THAT(words, HasSubstr("As good a guess at the wrong signs: h2o_01ym.sgn"));
    of.set.has_forces = true;
    EXPECT_THAT(words_of(html_of(of)), HasSubstr("A mass is missing"));
}

TEST(ShortNames, AreWhatTellsJobsApart) {
    const auto shortened = [](const std::vector<std::string>& names) {
        sgn_set::displaced_set set;
        for (const std::string& name : names) {
            set.jobs.emplace_back();
            set.jobs.back().name = name;
        }
        return sgn_derive::short_names(set);
    };
    EXPECT_THAT(shortened({"a/h2o_ref.sgn", "b/h2o_01xm.sgn", "h2o_01xp.sgn"}),
                ElementsAre("ref", "01xm", "01xp"));
    EXPECT_THAT(shortened({"ref.sgn", "d_a-1.sgn", "d_a-12.sgn"}), ElementsAre("ref", "1", "12"));
    EXPECT_THAT(shortened({"x.sgn", "abc.sgn", "abd"}), ElementsAre("x", "abc", "abd"));
}

TEST(Svg, ChoosesRoundTicks) {
    using sgn_derive::svg::ticks;
    const auto shown = [](double low, double high, int about) {
        std::string text;
        const auto marks = ticks(low, high, about);
        for (const double mark : marks) {
            text += tools::decimal(mark, sgn_derive::svg::decimals_of(marks)) + " ";
        }
        return text;
    };
    EXPECT_EQ(shown(0, 1, 5), "0.0 0.2 0.4 0.6 0.8 1.0 ");
    EXPECT_EQ(shown(-0.6, 0.6, 6), "-0.6 -0.4 -0.2 0.0 0.2 0.4 0.6 ");
    EXPECT_EQ(shown(0, 3500, 9), "0 500 1000 1500 2000 2500 3000 3500 ");
    EXPECT_EQ(shown(0, 0.0214, 5), "0.000 0.005 0.010 0.015 0.020 ");
    EXPECT_EQ(shown(0, 85, 8), "0 20 40 60 80 ");
    EXPECT_EQ(sgn_derive::svg::number(3) + " " + sgn_derive::svg::number(-0.004) + " " +
                  sgn_derive::svg::number(10.256),
              "3 0 10.26");
}

}  // namespace
