// What is told of whole files, and why something is not.
#include <gmock/gmock.h>

#include <cmath>
#include <sstream>

#include "flib/io/stop_run.h"
#include "flib/qm_file/file_facts.h"
#include "support/support.h"

namespace {

using flib::file_facts;
using flib::quantity;

void add(std::ostream& told, const std::vector<double>& values) {
    for (const double value : values) std::isnan(value) ? told << " ?" : told << ' ' << value;
}

void add(std::ostream& told, const flib::vector_list& vectors) {
    for (const auto& vector : vectors) {
        add(told, std::vector<double>(vector.begin(), vector.end()));
        told << ',';
    }
}

/// All of the facts: "QUANTITY VALUES; ...", and "QUANTITY - REASON; ..." for what is missing.
std::string told(const file_facts& facts) {
    std::ostringstream text;
    text.precision(6);
    for (const quantity which : flib::all_quantities) {
        text << flib::name_of(which);
        if (const auto why = facts.missing.find(which); why != facts.missing.end()) {
            text << (why->second.damaged ? " ! " : " - ") << why->second.reason << "; ";
            continue;
        }
        if (which == quantity::kind) {
            const auto& kind = facts.kind.value();
            text << ' ' << kind.tag << ", " << kind.in_words << ", " << kind.version << ", "
                 << kind.class_code;
        }
        if (which == quantity::natom) text << ' ' << facts.natom.value();
        if (which == quantity::numbers) {
            for (const std::int32_t number : facts.numbers.value()) text << ' ' << number;
        }
        if (which == quantity::geometry) {
            const auto& geometry = facts.geometry.value();
            add(text, geometry.x);
            text << (geometry.last ? " last of " : " first of ") << geometry.tables << ' '
                 << geometry.frame << (geometry.two_frames ? " (two frames)" : "");
        }
        if (which == quantity::masses) add(text, facts.masses.value());
        if (which == quantity::forces) add(text, facts.forces.value());
        if (which == quantity::dipoles) add(text, facts.dipoles.value());
        if (which == quantity::oniom) {
            text << ' ' << facts.oniom.value().natom << ':';
            for (const std::int32_t atom : facts.oniom->high) text << ' ' << atom;
        }
        if (which == quantity::basis) {
            const auto& basis = facts.basis.value();
            text << ' ' << basis.alpha_electrons << ' ' << basis.beta_electrons << ' '
                 << basis.functions << ' ' << basis.independent;
        }
        if (which == quantity::excitations) {
            const auto& space = facts.excitations.value();
            text << ' ' << space.roots << ' ' << space.alpha_electrons << ' ' << space.frozen_core
                 << ' ' << space.active_occupied << ' ' << space.active_virtual << ' '
                 << space.frozen_virtual;
        }
        if (which == quantity::dump) {
            text << ' ' << facts.dump.value().number << ' ' << facts.dump->values;
        }
        text << "; ";
    }
    return text.str();
}

TEST(FileFacts, AreToldAsTheRowsSay) {
    const support::scratch_directory scratch;
    for (const auto& row : support::table_of("file_facts.txt")) {
        std::string text = support::contents_of(support::data_file(row[0]));
        if (row[1] == "END") {
            text.resize(text.find(row[2]));
        } else if (!row[1].empty()) {
            text = support::replaced(text, row[1], row[2]);
        }
        const std::string answer = told(flib::facts_of(scratch.file("edited", text)));
        EXPECT_THAT(answer, testing::HasSubstr(row[3])) << row[0] << " with " << row[1];
    }
}

TEST(FileFacts, AreThoseThatWereAskedFor) {
    const std::string log = support::data_file("gaussian/water_cis.log");
    const quantity wanted[] = {quantity::dipoles, quantity::basis};
    const file_facts some = flib::facts_of(log, wanted);
    EXPECT_TRUE(some.kind && some.dipoles);
    EXPECT_FALSE(some.natom || some.numbers || some.geometry || some.masses || some.forces ||
                 some.oniom || some.basis || some.excitations || some.dump);
    EXPECT_EQ(some.missing.size(), 1U);
    EXPECT_THAT(some.why_not(quantity::basis), testing::HasSubstr("independent"));
    EXPECT_EQ(some.why_not(quantity::masses), "");
    EXPECT_EQ(some.file, log);
}

TEST(FileFacts, OfManyAtoms) {
    const support::scratch_directory scratch;
    std::string log =
        " Entering Gaussian System\n ****************************\n"
        " Gaussian 16:  ES64L-G16RevA.03 25-Dec-2016\n NAtoms=   1200\n";
    for (const char* frame : {" Input orientation:\n", " Standard orientation:\n"}) {
        log += frame;
        log += " ---\n Center     Atomic      Atomic             Coordinates (Angstroms)\n ---\n";
        for (int i = 1; i <= 1200; ++i)
            log += " " + std::to_string(i) + " 6 0 0 0 " + std::to_string(i) + "\n";
    }
    const file_facts facts = flib::facts_of(scratch.file("long.log", log));
    ASSERT_TRUE(facts.geometry) << facts.why_not(quantity::geometry);
    EXPECT_EQ(facts.geometry->x.size(), 1200U);
    EXPECT_NEAR(facts.geometry->x.back()[2], 1200 / 0.529177249, 1e-9);
    EXPECT_FALSE(facts.geometry->two_frames);
    EXPECT_EQ(facts.masses.value().back(), 12.0);
}

TEST(FileFacts, NeedAFileThatCanBeOpened) {
    const support::scratch_directory scratch;
    EXPECT_THROW(flib::facts_of((scratch.path() / "none").string()), flib::io_error);
    EXPECT_THROW(flib::facts_of(scratch.path().string()), flib::io_error);
    const std::string empty = scratch.file("empty", "");
    EXPECT_THAT(told(flib::facts_of(empty)), testing::HasSubstr("file type ! "));
}

}  // namespace
