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

/// All of the facts: "QUANTITY VALUES; ...", and "QUANTITY - REASON; ..." for what is missing.
class facts_text {
  public:
    explicit facts_text(const file_facts& facts) : facts_(facts) {
        const auto values = [&](const auto&... all) { (add(all), ...); };
        fact(quantity::kind, facts.kind, [&](const flib::file_kind& kind) {
            text_ << ' ' << kind.tag << ", " << kind.in_words << ", " << kind.version << ", "
                  << kind.class_code;
        });
        fact(quantity::natom, facts.natom, values);
        fact(quantity::numbers, facts.numbers, values);
        fact(quantity::geometry, facts.geometry, [&](const flib::geometry& geometry) {
            add(geometry.x);
            text_ << (geometry.last ? " last of " : " first of ") << geometry.tables << ' '
                  << geometry.frame << (geometry.two_frames ? " (two frames)" : "");
        });
        fact(quantity::masses, facts.masses, values);
        fact(quantity::forces, facts.forces, values);
        fact(quantity::dipoles, facts.dipoles, values);
        fact(quantity::oniom, facts.oniom, [&](const flib::oniom_layers& layers) {
            text_ << ' ' << layers.natom << ':';
            add(layers.high);
        });
        fact(quantity::basis, facts.basis, [&](const flib::basis_counts& n) {
            values(n.alpha_electrons, n.beta_electrons, n.functions, n.independent);
        });
        fact(quantity::excitations, facts.excitations, [&](const flib::excitation_counts& n) {
            values(n.roots, n.alpha_electrons, n.frozen_core, n.active_occupied, n.active_virtual,
                   n.frozen_virtual);
        });
        fact(quantity::dump, facts.dump,
             [&](const flib::dump_header& dump) { values(dump.number, dump.values); });
    }

    std::string text() const { return text_.str(); }

  private:
    template <class Value, class Teller>
    void fact(quantity which, const std::optional<Value>& value, const Teller& tell) {
        const auto why = facts_.missing.find(which);
        if (!value && why == facts_.missing.end()) return;
        text_ << flib::name_of(which);
        if (value) tell(*value);
        if (why != facts_.missing.end()) {
            text_ << (why->second.damaged ? " ! " : " - ") << why->second.reason;
        }
        text_ << "; ";
    }

    void add(std::int32_t number) { text_ << ' ' << number; }
    void add(double value) { std::isnan(value) ? text_ << " ?" : text_ << ' ' << value; }
    void add(const std::array<double, 3>& vector) {
        for (const double component : vector) add(component);
        text_ << ',';
    }
    template <class Value>
    void add(const std::vector<Value>& list) {
        for (const Value& value : list) add(value);
    }

    const file_facts& facts_;
    std::ostringstream text_{};
};

std::string told(const file_facts& facts) {
    return facts_text(facts).text();
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
    EXPECT_EQ(told(some),
              "file type GAUSSIAN LOG, a Gaussian log, G16RevA.03, 2; transition dipoles -0.5354 "
              "0.001 -0.002, 0 0 0.7,; basis - not read from a Gaussian log, which does not tell "
              "the number of independent functions; ");
    const quantity forces[] = {quantity::forces};
    EXPECT_THAT(told(flib::facts_of(log, forces)),
                testing::HasSubstr("; forces 0 0 0.0123457, 0.00"));
    EXPECT_THAT(told(flib::facts_of(support::data_file("gaussian/oniom.log"), forces)),
                testing::HasSubstr("; forces 0.002 0.004 0.006, 0.003 "));
    EXPECT_EQ(some.file + std::string(some.why_not(quantity::masses)), log);
    EXPECT_THAT(some.why_not(quantity::basis), testing::StartsWith("not read from a Gaussian"));
}

TEST(FileFacts, NeedAFileThatCanBeOpened) {
    const support::scratch_directory scratch;
    EXPECT_THROW(flib::facts_of((scratch.path() / "none").string()), flib::io_error);
    EXPECT_THROW(flib::facts_of(scratch.path().string()), flib::io_error);
    const std::string empty = scratch.file("empty", "");
    EXPECT_THAT(told(flib::facts_of(empty)), testing::HasSubstr("file type ! "));
}

}  // namespace
