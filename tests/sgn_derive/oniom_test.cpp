// Atoms of an ONIOM job are told by their numbers in the input.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "sgn/check/report.h"
#include "sgn/set/input_numbers.h"
#include "sgn/set/listed.h"
#include "sgn/set/surroundings.h"
#include "sgn_derive/csv.h"
#include "sgn_derive/json.h"
#include "sgn_derive/text.h"
#include "support/sets.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using numbers = std::vector<std::int32_t>;

/// Copies of the job whose high layer are atoms 2, 4 and 5 of six.
class Oniom : public testing::Test {
  protected:
    Oniom() {
        for (const char* const suffix : {".sgn", ".log", ".fchk"}) {
            fs::copy_file(support::data_file(std::string("oniom/h2o_oniom_ref") + suffix),
                          path(std::string("ref") + suffix));
        }
        scratch_.file("other.sgn",
                      support::replaced(support::contents_of(path("ref.sgn")),
                                        "0.000000    0.118000", "0.000000    0.128000"));
    }
    std::string path(const std::string& name) const { return scratch_.path() / name; }
    support::outcome run(const std::string& tool, std::vector<std::string> options) const {
        options.insert(options.end(), {"ref.sgn", "other.sgn"});
        return support::run({tool, options, scratch_.path()});
    }

    support::scratch_directory scratch_;
};

TEST_F(Oniom, NumbersAreThoseOfTheLogOrTheCheckpoint) {
    EXPECT_EQ(sgn::input_numbers_beside(path("ref.sgn"), 3), (numbers{2, 4, 5}));
    EXPECT_EQ(sgn::input_numbers_beside(path("ref_s2.sgn"), 3), (numbers{2, 4, 5}));
    EXPECT_EQ(sgn::input_numbers_beside(path("ref.sgn"), 2), numbers{});
    // This checkpoint tells no layers.
    fs::remove(path("ref.log"));
    EXPECT_EQ(sgn::input_numbers_beside(path("ref.sgn"), 3), numbers{});
    const std::string checkpoint = support::contents_of(path("ref.fchk"));
    const auto with_layers = [&](const std::string& layers) {
        support::write_file(path("ref.fchk"),
                            checkpoint +
                                "Atom Layers                                I   N=           6\n" +
                                layers + "\n");
        return sgn::input_numbers_beside(path("ref.sgn"), 3);
    };
    EXPECT_EQ(with_layers(" 2 1 2 1 1 2"), (numbers{2, 4, 5}));
    // Their places say as much.
    EXPECT_EQ(with_layers(" 1 1 1 2 2 2"), numbers{});
    EXPECT_EQ(sgn::input_numbers_beside(path("none.sgn"), 3), numbers{});
}

TEST_F(Oniom, SurroundingsAreTold) {
    const std::string log = support::contents_of(path("ref.log"));
    const std::string checkpoint = support::contents_of(path("ref.fchk"));
    EXPECT_EQ(sgn::surroundings_beside(path("ref.sgn")), std::vector<std::string>{});
    const struct {
        std::string route;
        std::string sections;
        std::string told;
    } cases[] = {
        // The route is cut after 70 columns, within words and at blanks.
        {" #p oniom(cis(nstates=4,root=1)/6-31+g(d) 5d:amber)=EmbedCh\n arge nosymm fo\n rce\n", "",
         "electronic embedding"},
        {" #p cis(nstates=4,root=1)/6-31+g(d) nosymm force iop(9/40=3) scf=tight \n charge 5d\n",
         "", "point charges"},
        {" # td hf Field=X+10 nosymm\n", "", "an outer field"},
        {" # td hf guess=mix nosymm\n", "", ""},
        {"", "Number of point charges in /Mol/           I                2\n", "point charges"},
        {"", "Number of point charges in /Mol/           I                0\n", ""},
        {"",
         "External E-field                           R   N=           6\n"
         "  0.00000000E+00  0.00000000E+00  0.00000000E+00  0.00000000E+00  0.00000000E+00\n"
         "  1.00000000E-03\nLink Atoms                                 I   N=           2\n"
         "           0           0\n",
         "an outer field"},
        {"",
         "External E-field                           R   N=           1\n  0.00000000E+00\n"
         "Link Atoms                                 I   N=           2\n"
         "           0           2\n",
         "link atoms"},
        {" # td hf field=x+10 charge\n",
         "Link Atoms                                 I   N=           1\n"
         "           2\n",
         "an outer field, point charges and link atoms"},
    };
    for (const auto& [route, sections, told] : cases) {
        std::string edited = log;
        if (!route.empty()) {
            const std::size_t begin = edited.find("\n #") + 1;
            edited.replace(begin, edited.find(" ---", begin) - begin, route);
        }
        support::write_file(path("ref.log"), edited);
        support::write_file(path("ref.fchk"), checkpoint + sections);
        EXPECT_EQ(sgn::listed(sgn::surroundings_beside(path("ref.sgn"))), told)
            << route << sections;
    }
    EXPECT_EQ(
        nlohmann::json::parse(run("sgn_check", {"--json=-"}).output).at("surroundings").size(), 3U);
    // A charge of a model that is no atomic number.
    support::write_file(path("ref.fchk"), support::replaced(checkpoint, "  1.80000000E+01  1.0",
                                                            " -8.34000000E-01  1.0"));
    fs::remove(path("ref.log"));
    EXPECT_EQ(sgn::listed(sgn::surroundings_beside(path("ref.sgn"))), "point charges");
    // In the report only where the sums are judged.
    for (const bool rules : {true, false}) {
        sgn::report of = sgn::analyse(sets::water().reference, sets::water().files, rules);
        of.surroundings = {"link atoms"};
        const std::string shown = sgn_derive::text_of(of, tools::terminal{});
        EXPECT_EQ(shown.find("The job has link atoms, which") != std::string::npos, rules);
    }
}

TEST_F(Oniom, ReportsTellThem) {
    auto reference = sets::water().reference;
    reference.input_numbers = {2, 4, 5};
    const sgn::report of = sgn::analyse(reference, sets::water().files);
    const std::string shown = sgn_derive::text_of(of, tools::terminal{});
    EXPECT_THAT(shown,
                HasSubstr("\n    2 O  x     0.0000     0.0000     0.4816  0.0011 (1 of the high "
                          "layer)\n    2 O  y     0.0000     0.0000     0.0000  0.0011\n"));
    EXPECT_THAT(shown, HasSubstr("\n    5 H  z    -0.1667"));
    const auto atoms = nlohmann::json::parse(sgn_derive::json_of(of)).at("atoms");
    EXPECT_EQ(atoms.at(1).at("place"), 2);
    EXPECT_EQ(atoms.at(1).at("input"), 4);
    EXPECT_THAT(sgn_derive::derivatives_csv(of), HasSubstr("\n2,4,H,x,"));
    sgn::sum_rules failed = of.force_rules;
    failed.satisfied = false;
    failed.translation(1, 5) = 9;
    EXPECT_THAT(sgn_derive::residues_text(failed, "forces", of.set.atoms),
                HasSubstr("component z of atom 4 H (2 of the high layer)"));
    EXPECT_THAT(sgn_derive::residues_text(failed, "forces"), HasSubstr("component z of atom 2 "));
}

}  // namespace
