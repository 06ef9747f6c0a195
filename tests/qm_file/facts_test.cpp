// What is told of whole files, and why something is not.
#include <gmock/gmock.h>

#include <cmath>
#include <sstream>

#include "flib/facts/file_facts.h"
#include "flib/io/stop_run.h"
#include "support/session.h"

namespace {

using flib::file_facts;
using flib::quantity;

void add(std::ostream& text, std::int32_t number) {
    text << ' ' << number;
}
void add(std::ostream& text, double value) {
    std::isnan(value) ? text << " ?" : text << ' ' << value;
}
void add(std::ostream& text, const std::array<double, 3>& vector) {
    for (const double component : vector) add(text, component);
    text << ',';
}
template <class Value>
void add(std::ostream& text, const std::vector<Value>& list) {
    for (const Value& value : list) add(text, value);
}

/// All of the facts, a line each: "QUANTITY VALUES", "QUANTITY - REASON" for what is missing,
/// "QUANTITY ! REASON" for what is damaged. Coordinates are in Angstrom.
std::string told(const file_facts& facts) {
    std::ostringstream text;
    const auto values = [&](const auto&... all) { (add(text, all), ...); };
    const auto fact = [&](quantity which, const auto& value, const auto& tell) {
        const auto why = facts.missing.find(which);
        if (!value && why == facts.missing.end()) return;
        text << flib::name_of(which);
        if (value) tell(*value);
        if (why != facts.missing.end()) {
            text << (why->second.damaged ? " ! " : " - ") << why->second.reason;
        }
        text << '\n';
    };
    fact(quantity::kind, facts.kind, [&](const auto& kind) {
        text << ' ' << kind.tag << ", " << kind.in_words << ", " << kind.version << ", "
             << kind.class_code;
    });
    fact(quantity::natom, facts.natom, values);
    fact(quantity::numbers, facts.numbers, values);
    fact(quantity::geometry, facts.geometry, [&](const auto& geometry) {
        auto places = geometry.x;
        for (auto& place : places) {
            for (double& component : place) component *= 0.529177249;
        }
        add(text, places);
        text << (geometry.last ? " last of " : " first of ") << geometry.tables;
        text << (geometry.frame.empty() ? "" : " ") << geometry.frame;
        text << (geometry.two_frames ? " (two frames)" : "");
    });
    fact(quantity::masses, facts.masses, values);
    fact(quantity::forces, facts.forces, values);
    fact(quantity::dipoles, facts.dipoles, values);
    fact(quantity::oniom, facts.oniom, [&](const auto& layers) {
        text << ' ' << layers.natom << ':';
        add(text, layers.high);
    });
    fact(quantity::basis, facts.basis, [&](const auto& n) {
        values(n.alpha_electrons, n.beta_electrons, n.functions, n.independent);
    });
    fact(quantity::excitations, facts.excitations, [&](const auto& n) {
        values(n.roots, n.alpha_electrons, n.frozen_core, n.active_occupied, n.active_virtual,
               n.frozen_virtual);
    });
    fact(quantity::dump, facts.dump, [&](const auto& dump) {
        values(dump.number, dump.values);
        if (dump.layout) {
            values(dump.layout->states, dump.layout->roots, dump.layout->amplitudes);
            text << (dump.layout->has_rest ? " and rest" : " alone");
        }
        for (const auto& [norms, energy] : dump.states) {
            text << ", " << flib::name_of(norms.spin);
            values(norms.alpha, norms.beta, energy.value_or(std::nan("")));
            if (!norms.are_of_amplitudes()) text << " wrong";
        }
    });
    fact(quantity::moments, facts.moments, [&](const auto& moments) {
        values(moments.states, moments.target, moments.spin, moments.of_states.energy,
               moments.total_energy.value_or(std::nan("")));
        for (std::int32_t state = 0; state <= moments.states + 1; ++state) {
            values(moments.excitation_energy(state).value_or(std::nan("")));
        }
    });
    return text.str();
}

TEST(FileFacts, AreToldAsStandsBelowEachFile) {
    const support::scratch_directory scratch;
    for (const auto& [step, expected] : support::session_of("file_facts.txt")) {
        const auto row = support::fields_of(step, 3);
        const std::string whole = support::contents_of(support::data_file(row[0]));
        const std::string file = scratch.file("edited", support::edited(whole, row[1], row[2]));
        EXPECT_EQ(support::elided(told(flib::facts_of(file)), expected), expected) << "$ " << step;
    }
}

TEST(FileFacts, AreThoseThatWereAskedFor) {
    const std::string log = support::data_file("gaussian/water_cis.log");
    const quantity wanted[] = {quantity::dipoles, quantity::basis};
    const file_facts some = flib::facts_of(log, wanted);
    EXPECT_EQ(told(some),
              "file type GAUSSIAN LOG, a Gaussian log, G16RevA.03, 2\n"
              "transition dipoles -0.5354 0.001 -0.002, 0 0 0.7,\n"
              "basis - not read from a Gaussian log: the number of independent functions, its "
              "NBsUse=, is taken from standard input\n");
    const quantity forces[] = {quantity::forces};
    EXPECT_THAT(told(flib::facts_of(log, forces)),
                testing::HasSubstr("\nforces 0 0 0.0123457, 0.00"));
    EXPECT_THAT(told(flib::facts_of(support::data_file("gaussian/oniom.log"), forces)),
                testing::HasSubstr("\nforces 0.002 0.004 0.006, 0.003 "));
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
