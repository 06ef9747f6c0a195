// What the page says, and one small page as a whole.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "set/model.h"
#include "sgn/check/report.h"
#include "sgn/page/detail/drawings.h"
#include "sgn/page/detail/style.h"
#include "sgn/page/html.h"
#include "support/support.h"

namespace {

using sgn::report;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// A page without its style.
std::string page_of(const report& of) {
    return support::replaced(sgn::page::html_of(of, "sgn_derive 1.2"), sgn::page::style, "");
}

/// The words of a page without its drawings: a line for each paragraph, heading, item and row,
/// cells between bars, a [class] before whatever has a colour of its own. What is wrong with the
/// nesting of tags stands there instead.
std::string words_of(const std::string& page) {
    static const std::set<std::string> lines{"title", "section", "h2",      "p",       "li",
                                             "dt",    "tr",      "details", "summary", "footer"};
    std::vector<std::string> open;
    std::string words;
    std::size_t drawing = 0;  // depth of an svg
    for (std::size_t at = page.find('<'), end = 0; at < page.size(); at = page.find('<', end)) {
        end = page.find_first_of("<>", at + 1);
        if (end == std::string::npos || page[end] == '<') return page.substr(at, 60);
        const std::string tag = page.substr(at + 1, end - at - 1);
        const std::string name = tag.substr(0, tag.find(' '));
        if (name[0] == '/') {
            if (open.empty() || open.back() != name.substr(1)) return name + " is not open";
            if (open.size() == drawing) drawing = 0;
            open.pop_back();
        } else if (!tag.ends_with('/') && name != "meta" && name != "!DOCTYPE") {
            open.push_back(name);
            if (name == "svg" && drawing == 0) drawing = open.size();
        }
        if (drawing > 0) continue;
        if (lines.contains(name) && !words.empty() && !words.ends_with('\n')) words += '\n';
        if (name == "td" || name == "th") words += words.ends_with('\n') ? "" : " | ";
        if (name == "dd") words += ": ";
        const std::size_t kind = tag.find("class=\"");
        for (const char* colour : {"doubt", "doubtful", "turned", "warning", "bad"}) {
            const std::string list = kind == std::string::npos ? "" : " " + tag.substr(kind + 7);
            if (list.find(std::string(" ") + colour + '"') != std::string::npos) {
                words += std::string("[") + colour + "] ";
            }
        }
        const std::string text = page.substr(end + 1, page.find('<', end) - end - 1);
        if (text.find_first_not_of('\n') != std::string::npos) words += text;
    }
    return open.empty() ? words + "\n" : open.back() + " stays open";
}

report analysed(
    const model::molecule& of,
    const std::function<void(sgn::result_file&, std::vector<sgn::result_file>&)>& change) {
    auto reference = model::reference(of);
    auto files = model::displaced(of);
    change(reference, files);
    return sgn::analyse(reference, files);
}

report plain(const model::molecule& of) {
    return analysed(of, [](auto&, auto&) {});
}

/// Wrong in every way in which a set can still be judged.
report doubtful() {
    report of = analysed(model::bent, [](sgn::result_file& reference, auto& files) {
        files.resize(24);
        for (const std::size_t i : {2U, 3U}) {  // put right, the second wrongly so
            files[i].contents.parameters.sign = -1;
            files[i].contents.parameters.tden_maxval = -0.4;
        }
        model::reverse(files[3]);
        files[5].contents.parameters.sign = 0;
        files[7].contents.parameters.nmo = 32;
        files[3].name = "1y<-";
        files.push_back(files[8]);
        files.back().name = "a/again.sgn";
        files.push_back(reference);
        files.back().name = "<i>&\"'\n\xFF.sgn";
        reference.name = "</title><b>";
    });
    of.suspects.flips.push_back({4, 7});
    of.set.atoms[0].symbol = "<";
    of.set.atoms[1].mass = std::nan("");
    return of;
}

std::string fixture(const std::string& name) {
    return support::contents_of(support::data_file("page/" + name));
}

TEST(Page, IsThatOfTheFixture) {
    EXPECT_EQ(page_of(plain(model::diatomic)), fixture("diatomic.html"));
    model::molecule exact = model::diatomic;
    exact.dipole_decimals = 6;
    EXPECT_THAT(page_of(plain(exact)), HasSubstr("<td class=\"n aside\">-0.213396"));
}

TEST(Page, TellsWhatCheckpointsDo) {
    report of = analysed(model::bent, [](sgn::result_file& reference, auto& files) {
        reference = model::with_moments(model::bent, reference);
        reference.excited = {2, 1, 0.25};
        const auto farther = model::displaced(model::bent, 0.02);
        files.insert(files.end(), farther.begin(), farther.end());
        for (auto& each : files) each = model::with_moments(model::bent, each);
    });
    of.surroundings = {"link atoms", "an outer field"};
    of.set.atoms[1].input = 7;
    const std::string words = words_of(page_of(of));
    for (const char* line :
         {"\nDipoles: 9 decimals, of the checkpoints\n",
          "\nExcitation: 6.8028 eV, state 2; forces of state 1\n",
          "\n7 | H (2 of the high layer) | ", " | 7 H (2 of the high layer) +x 0.0100 | ",
          "\nVelocity dipole: ", "\nDisplacement: 0.0100 to 0.0200 \u00C5\n",
          "\n[warning] The job has link atoms and an outer field, which do not move with the "
          "atoms: the sums need not vanish.\n"}) {
        EXPECT_THAT(words, HasSubstr(line));
    }
}

TEST(Page, SaysWhatDeservesDoubt) {
    EXPECT_EQ(words_of(page_of(doubtful())), fixture("doubtful.txt"));
    const std::string page = sgn::page::html_of(doubtful(), "x");
    for (const char* foreign : {"<script", "http:", "https:", "src=", "url(", "@import", "<link"}) {
        EXPECT_EQ(page.find(foreign), std::string::npos) << foreign;
    }
}

/// Residues beyond their uncertainties are no doubt while the sums hold, and the page says no
/// other; and what it says of sets that are not judged, or have no modes.
TEST(Page, IsAsCalmAsTheVerdict) {
    const report calm = analysed(
        model::bent, [](auto&, auto& files) { files[7].contents.corrected_tdip[1] += 4e-4; });
    EXPECT_TRUE(calm.fine());
    EXPECT_THAT(page_of(calm), AllOf(HasSubstr("<rect class=\"bar bar-beyond\" x=\"0\""),
                                     HasSubstr("beyond its uncertainty, but no doubt"),
                                     Not(HasSubstr("bar-bad")), Not(HasSubstr("bad-text"))));
    EXPECT_THAT(page_of(doubtful()),
                AllOf(HasSubstr("<rect class=\"bar bar-bad\" x=\"0\""), Not(HasSubstr("beyond"))));

    const report one_sided =
        analysed(model::diatomic, [](auto&, auto& files) { files.pop_back(); });
    EXPECT_THAT(words_of(page_of(one_sided)),
                AllOf(HasSubstr("Files: 12 5 pairs, 1 one-sided\n"),
                      HasSubstr("Sum rules: \u2013 not judged\n"),
                      HasSubstr("\nDipole: not judged, 1 displacement is one-sided (2z+).\n"),
                      Not(HasSubstr("residue"))));
    const report no_mass = analysed(model::diatomic, [](auto& reference, auto& files) {
        reference.contents.mass[1] = 0;
        for (auto& each : files) each.contents.mass[1] = 0;
    });
    EXPECT_THAT(words_of(page_of(no_mass)),
                HasSubstr("\nA mass is missing, so there are no normal modes.\n"));
    const report no_forces = analysed(model::diatomic, [](auto& reference, auto& files) {
        reference.contents.frc.assign(2, {});
        for (auto& each : files) each.contents.frc.assign(2, {});
    });
    EXPECT_THAT(words_of(page_of(no_forces)),
                AllOf(HasSubstr("\nThe files hold no forces, so there are no normal modes.\n"),
                      HasSubstr("\nForces: not judged, the files hold no forces.\n")));
}

TEST(Page, FoldsLongTables) {
    const auto folds = [](std::size_t atoms, std::size_t modes) {
        report of = plain(model::diatomic);
        of.set.atoms.resize(atoms, of.set.atoms.front());
        of.modes.resize(modes, of.modes.front());
        std::string said;
        const std::string page = page_of(of);
        for (std::size_t at = 0; (at = page.find("<summary>", at)) != std::string::npos; ++at) {
            said += page.substr(at + 9, page.find('<', at + 1) - at - 9) + ".";
        }
        return said;
    };
    EXPECT_EQ(folds(12, 12), "");
    EXPECT_EQ(folds(13, 12), "Coordinates of the reference.");
    EXPECT_EQ(folds(12, 13), "All modes.");
}

TEST(ShortNames, AreWhatTellsJobsApart) {
    const auto shortened = [](const std::vector<std::string>& names) {
        sgn::displaced_set set;
        for (const std::string& name : names) {
            set.jobs.emplace_back();
            set.jobs.back().name = name;
        }
        return testing::PrintToString(sgn::page::short_names(set));
    };
    EXPECT_EQ(shortened({"a/h2o_ref.sgn", "b/h2o_01xm.sgn", "h2o_01xp.sgn"}),
              R"({ "ref", "01xm", "01xp" })");
    EXPECT_EQ(shortened({"ref.sgn", "d_a-1.sgn", "d_a-12.sgn"}), R"({ "ref", "1", "12" })");
    EXPECT_EQ(shortened({"x.sgn", "abc.sgn", "abd"}), R"({ "x", "abc", "abd" })");
}

}  // namespace
