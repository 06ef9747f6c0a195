// What an arbitrary phase may and may not change, on made-up jobs of many shapes.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <random>

#include "numfreq/run_driver.h"
#include "support/job.h"
#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using support::job;
using support::random_job;
using support::writing;

/// The tests run the driver in this process, so each has a working directory of its own.
class Phase : public testing::Test {
  protected:
    Phase() : home_(fs::current_path()) { fs::current_path(directory_.path()); }
    ~Phase() override { fs::current_path(home_); }

    /// The result of a reference run, or of one mapped to `reference`.
    static std::string result_of(const job& what, const char* name, const char* reference = nullptr,
                                 const writing& how = {}) {
        support::write_job(".", name, what, how);
        const std::string checkpoint = std::string(name) + ".fchk";
        std::vector<std::string_view> arguments{checkpoint};
        if (reference != nullptr) arguments.emplace_back(reference);
        numfreq::run_driver(arguments);
        return support::contents_of(std::string(name) + ".sgn");
    }

    static job next_job(std::mt19937_64& random) {
        const auto count = [&](int low, int high) {
            return std::uniform_int_distribution<int>(low, high)(random);
        };
        return random_job(random, count(1, 12), count(0, 3), count(1, 6), count(1, 20), count(0, 3),
                          count(1, 4));
    }

  private:
    support::scratch_directory directory_;
    fs::path home_;
};

/// The record of a result file that begins with `label`.
std::string record(const std::string& result, const std::string& label) {
    const std::size_t at = result.find("\n " + label) + 1;
    return result.substr(at, result.find('\n', at) - at);
}

std::string real_record(const char* label, double value) {
    char text[64];
    std::snprintf(text, sizeof text, " %s%20.10E", label, value);
    return text;
}

void negate(std::vector<double>& values, std::size_t from, std::size_t count,
            std::size_t step = 1) {
    for (std::size_t i = 0; i < count; ++i) values[from + i * step] *= -1;
}

constexpr int rounds = 60;

TEST_F(Phase, ReferenceIsTheLargestElementOfThePlainFormula) {
    std::mt19937_64 random(1);
    for (int round = 0; round < rounds; ++round) {
        const job now = next_job(random);
        const auto n = static_cast<std::size_t>(now.nbasis());
        const auto mi = static_cast<std::size_t>(now.mi);
        const auto ma = static_cast<std::size_t>(now.ma);
        const auto nfc = static_cast<std::size_t>(now.nfc);
        double largest = 0;
        std::size_t row = 0;
        std::size_t column = 0;
        for (std::size_t p = 0; p < n; ++p) {
            for (std::size_t q = 0; q < n; ++q) {
                double element = 0;
                for (std::size_t i = 0; i < mi; ++i) {
                    for (std::size_t a = 0; a < ma; ++a) {
                        element += now.moc[(nfc + mi + a) * n + p] * now.xpy[i * ma + a] *
                                   now.moc[(nfc + i) * n + q];
                    }
                }
                if (std::abs(element) > std::abs(largest)) {
                    largest = element;
                    row = p + 1;
                    column = q + 1;
                }
            }
        }
        char location[80];
        std::snprintf(location, sizeof location, " tden_maxloc    = %20zu%20zu", row, column);
        const std::string result = result_of(now, "ref");
        EXPECT_EQ(record(result, "tden_maxloc"), location);
        EXPECT_EQ(record(result, "tden_maxval"), real_record("tden_maxval    = ", largest));
        EXPECT_EQ(record(result, "Transden_sign"), " Transden_sign  =                    1");
    }
}

TEST_F(Phase, OfTheStateReversesTheSignAndLeavesTheCorrectedDipole) {
    std::mt19937_64 random(2);
    for (int round = 0; round < rounds; ++round) {
        const job reference = next_job(random);
        const std::string before = result_of(reference, "ref");
        job reversed = reference;
        negate(reversed.xpy, 0, reversed.xpy.size());
        for (double& component : reversed.tdip) component *= -1;
        std::string after = result_of(reversed, "job", "ref.sgn");
        // Undo what has to differ; everything else is the same, byte for byte.
        const std::string sign = record(after, "Transden_sign");
        EXPECT_EQ(sign, " Transden_sign  =                   -1");
        after.replace(after.find(sign), sign.size(), record(before, "Transden_sign"));
        const std::string value = record(after, "tden_maxval");
        const double recorded = std::stod(value.substr(value.size() - 20));
        after.replace(after.find(value), value.size(), real_record("tden_maxval    = ", -recorded));
        EXPECT_EQ(after, before);
    }
}

TEST_F(Phase, OfAnOrbitalChangesNothing) {
    std::mt19937_64 random(3);
    for (int round = 0; round < rounds; ++round) {
        const job reference = next_job(random);
        const std::string before = result_of(reference, "ref");
        job changed = reference;
        const auto n = static_cast<std::size_t>(changed.nbasis());
        const auto mi = static_cast<std::size_t>(changed.mi);
        const auto ma = static_cast<std::size_t>(changed.ma);
        const auto nfc = static_cast<std::size_t>(changed.nfc);
        const std::size_t i = random() % mi;
        const std::size_t a = random() % ma;
        const std::size_t blocks = changed.xpy.size() / (ma * mi);
        negate(changed.moc, (nfc + i) * n, n);
        negate(changed.moc, (nfc + mi + a) * n, n);
        for (std::size_t block = 0; block < blocks; ++block) {
            negate(changed.xpy, block * ma * mi + i * ma, ma);
            negate(changed.xpy, block * ma * mi + a, mi, ma);
        }
        EXPECT_EQ(result_of(changed, "ref"), before);
        EXPECT_EQ(result_of(changed, "job", "ref.sgn"), before);
    }
}

TEST_F(Phase, AndWritingChangeNothing) {
    std::mt19937_64 random(4);
    for (int round = 0; round < rounds; ++round) {
        const job now = next_job(random);
        const std::string before = result_of(now, "ref");
        for (const writing& how : {writing{"\r\n", 5, 'D'}, writing{"   \n", 1, 'E'},
                                   writing{"\n\n", 3, 'd'}, writing{"\n", 4000, 'e'}}) {
            // A blank line would end the tables of the log.
            const bool blank_lines = how.end_of_line == "\n\n";
            support::write_job(".", "a name with blanks", now, how);
            if (blank_lines) support::write_file("a name with blanks.log", log_text(now));
            const std::vector<std::string_view> arguments{"a name with blanks.fchk"};
            numfreq::run_driver(arguments);
            EXPECT_EQ(support::contents_of("a name with blanks.sgn"), before);
        }
    }
}

}  // namespace
