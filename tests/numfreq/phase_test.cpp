// What an arbitrary phase and another way of writing may and may not change, on made-up jobs of
// many shapes.
#include <gtest/gtest.h>

#include <random>

#include "numfreq/run_driver.h"
#include "support/job.h"
#include "support/support.h"

namespace {

using support::job;
using support::writing;

/// The driver runs in this process, so the test has a working directory of its own.
class Phase : public testing::Test {
  protected:
    /// The result of a reference run, or of one mapped to `reference`.
    static std::string result_of(const job& what, const char* reference = nullptr,
                                 const writing& how = {}) {
        const std::string name = reference == nullptr ? "ref" : "a name with blanks";
        support::write_job(".", name, what, how);
        // A blank line would end the tables of the log.
        if (how.end_of_line == "\n\n") support::write_file(name + ".log", log_text(what));
        const std::string checkpoint = name + ".fchk";
        std::vector<std::string_view> arguments{checkpoint};
        if (reference != nullptr) arguments.emplace_back(reference);
        numfreq::run_driver(arguments);
        return support::contents_of(name + ".sgn");
    }

  private:
    support::working_directory here_;
};

job next_job(std::mt19937_64& random) {
    const auto count = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    return support::random_job(random, count(1, 12), count(0, 3), count(1, 6), count(1, 20),
                               count(0, 3), count(1, 4));
}

void negate(std::vector<double>& values, std::size_t from, std::size_t count,
            std::size_t step = 1) {
    for (std::size_t i = 0; i < count; ++i) values[from + i * step] *= -1;
}

TEST_F(Phase, OrWritingChangesNothingButTheSignOfTheState) {
    std::mt19937_64 random(1);
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        const job reference = next_job(random);
        const std::string before = result_of(reference);

        // Of the state: its sign and the element's are reversed, the corrected dipole is the same.
        job state = reference;
        negate(state.xpy, 0, state.xpy.size());
        for (double& component : state.tdip) component *= -1;
        std::string expected = support::replaced(before, "sign  =                    1",
                                                 "sign  =                   -1");
        char& sign = expected[expected.find("tden_maxval    =    ") + 20];
        sign = sign == '-' ? ' ' : '-';
        EXPECT_EQ(result_of(state, "ref.sgn"), expected);

        // Of one orbital of either kind.
        job orbitals = reference;
        const auto n = static_cast<std::size_t>(orbitals.nbasis());
        const auto mi = static_cast<std::size_t>(orbitals.mi);
        const auto ma = static_cast<std::size_t>(orbitals.ma);
        const auto nfc = static_cast<std::size_t>(orbitals.nfc);
        const std::size_t i = random() % mi;
        const std::size_t a = random() % ma;
        negate(orbitals.moc, (nfc + i) * n, n);
        negate(orbitals.moc, (nfc + mi + a) * n, n);
        for (std::size_t block = 0; block < orbitals.xpy.size(); block += ma * mi) {
            negate(orbitals.xpy, block + i * ma, ma);
            negate(orbitals.xpy, block + a, mi, ma);
        }
        EXPECT_EQ(result_of(orbitals, "ref.sgn"), before);
        EXPECT_EQ(result_of(orbitals), before);

        for (const writing& how :
             {writing{"\r\n", 5, 'D'}, writing{"   \n", 1, 'E'}, writing{"\n\n", 3, 'd'},
              writing{"\n", 4000, 'e'}, writing{.layout_told = false}}) {
            EXPECT_EQ(result_of(reference, "ref.sgn", how), before);
            EXPECT_EQ(result_of(reference, nullptr, how), before);
        }
    }
}

}  // namespace
