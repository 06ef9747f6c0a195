// Runs on dumps that tell their layout: what the words, the number of roots and the phases of
// orbitals may and may not change.
#include <gmock/gmock.h>

#include <random>

#include "numfreq/run_driver.h"
#include "support/dump.h"
#include "support/job.h"
#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using support::contents_of;
using support::dump;
using support::job;

/// The driver runs in this process, so the test has a working directory of its own.
class DumpLayout : public testing::Test {
  protected:
    /// The result of the job NAME, mapped if there is a reference, or how the run ends.
    static std::string told(const std::string& name, const char* reference = nullptr) {
        const std::string checkpoint = name + ".fchk";
        std::vector<std::string_view> arguments{checkpoint};
        if (reference != nullptr) arguments.emplace_back(reference);
        const auto end = support::ending_of([&] { numfreq::run_driver(arguments); });
        if (end) return std::to_string(end->status) + ": " + end->text;
        return contents_of(name + ".sgn");
    }

  private:
    support::working_directory here_;
};

/// A result but for the number of roots.
std::string without_roots(const std::string& result) {
    const std::size_t at = result.find(" mci ");
    return at == std::string::npos ? result
                                   : result.substr(0, at) + result.substr(result.find('\n', at));
}

TEST_F(DumpLayout, NoOtherSignWhateverWordIsChanged) {
    std::mt19937_64 random(5);
    const char* const others[] = {"0.00000000D+00", "0.49406565-323",
                                  "0.98813129-323", "0.34584595-322",
                                  "0.10000000D+01", "-0.4940656-323",
                                  "0.10609979-313", "0.21219958-313",
                                  "0.30000000-309", "NaN",
                                  "-Infinity",      "word"};
    for (const int states : {1, 2, 3}) {
        const job made = support::random_job(random, 1, 1, 2, 3, 0, 4 * states);
        support::write_job(".", "a", made);
        fs::copy_file("a.cis", "whole.cis", fs::copy_options::overwrite_existing);
        const std::string right = told("a");
        ASSERT_THAT(right, testing::StartsWith("INFORMATION"));
        support::write_file("ref.sgn", right);
        int same = 0;
        for (std::size_t word = 0; word < 12; ++word) {
            for (const char* const other : others) {
                dump changed("whole.cis");
                changed.values[word] = other;
                changed.write("a.cis");
                const std::string after = told("a", "ref.sgn");
                if (after == right) {
                    ++same;
                } else {
                    EXPECT_THAT(after, testing::StartsWith("2: a.cis: ")) << word << ' ' << other;
                }
            }
        }
        // The states are not asked for, nor what stands where the program writes zeros.
        EXPECT_GE(same, 8 * 5) << states;
    }
}

TEST_F(DumpLayout, SameSignWhateverTheNumberOfRoots) {
    std::mt19937_64 random(6);
    job made = support::random_job(random, 1, 1, 2, 3, 0, 40);
    support::write_job(".", "ref", made);
    const std::string right = without_roots(told("ref"));
    for (const int states : {1, 2, 3, 4, 5, 6, 10}) {
        made.mci = 4 * states;
        made.xpy.resize(static_cast<std::size_t>(2 * 6 * made.mci));
        support::write_job(".", "a", made);
        const std::string result = told("a");
        EXPECT_EQ(without_roots(result), right) << states;
        EXPECT_THAT(result, testing::HasSubstr(" " + std::to_string(made.mci) + "\n NFC "));
        EXPECT_EQ(without_roots(told("a", "ref.sgn")), right) << states;
        // What is not needed is not read.
        dump damaged("a.cis");
        std::fill(damaged.values.begin() + 12 + 6, damaged.values.end(), "0.I0000000D+00");
        damaged.write("a.cis");
        EXPECT_EQ(without_roots(told("a", "ref.sgn")), right) << states;
        support::write_job(".", "a", made);
        // With as many other values before the amplitudes as there are words, they stand where a
        // dump that does not tell its layout has them: twelve roots are read either way.
        dump plain("a.cis");
        for (std::size_t word = 0; word < 12; ++word) plain.values[word] = "0.31000000D+00";
        plain.write("a.cis");
        EXPECT_EQ(told("a") == result, states == 3) << states;
        // Another number of roots than the log sought is no error.
        support::write_job(".", "a", made);
        support::write_file(
            "a.log", support::replaced(contents_of("ref.log"), "seek:    40", "seek:     7"));
        EXPECT_EQ(without_roots(told("a", "ref.sgn")), right);
    }
}

/// `number` with the other sign.
std::string negated(const std::string& number) {
    return number.front() == '-' ? number.substr(1) : '-' + number;
}

TEST_F(DumpLayout, PhasesOfOrbitalsChangeNothingOfASample) {
    const fs::path water = fs::path(EXAMPLES) / "water";
    for (const char* const name : {"h2o_ref", "h2o_01zp"}) {
        for (const char* const suffix : {".log", ".fchk", ".cis"}) {
            fs::copy(water / (std::string(name) + suffix), ".");
        }
    }
    told("h2o_ref");
    const std::string right = told("h2o_01zp", "h2o_ref.sgn");
    ASSERT_THAT(right, testing::StartsWith("INFORMATION\n Transden_sign  =                   -1"));
    const std::string checkpoint = contents_of("h2o_01zp.fchk");
    const std::size_t begin = checkpoint.find('\n', checkpoint.find("Alpha MO coef")) + 1;
    const dump amplitudes("h2o_01zp.cis");
    // Frozen core 1, active occupied 4, active virtual 17.
    for (std::size_t orbital = 0; orbital < 22; ++orbital) {
        std::string turned = checkpoint;
        for (std::size_t i = 22 * orbital; i < 22 * (orbital + 1); ++i) {
            // Fields of 16 columns, five of them and a newline in a line.
            char& sign = turned[begin + 16 * i + i / 5 + 1];
            sign = sign == '-' ? ' ' : '-';
        }
        support::write_file("h2o_01zp.fchk", turned);
        dump also_turned = amplitudes;
        for (std::size_t i = 12; i < also_turned.values.size() - 16; ++i) {
            const std::size_t occupied = 1 + (i - 12) / 17 % 4;
            const std::size_t virtual_one = 5 + (i - 12) % 17;
            if (orbital != occupied && orbital != virtual_one) continue;
            also_turned.values[i] = negated(also_turned.values[i]);
        }
        also_turned.write("h2o_01zp.cis");
        EXPECT_EQ(told("h2o_01zp", "h2o_ref.sgn"), right) << orbital;
    }
}

TEST_F(DumpLayout, SizesOfAnotherJobAreRefused) {
    std::mt19937_64 random(7);
    // Of each pair the first is the reference's, the second the job's.
    const struct {
        std::int32_t nfc, mi, ma, nfv;
        const char* end;
    } jobs[] = {
        {1, 2, 4, 1,
         "2: a.fchk: holds 64 MO coefficients where the 9 basis functions of the "
         "reference make 81: does it belong to another molecule or basis set?"},
        {0, 4, 6, 0,
         "2: a.fchk: holds 100 MO coefficients where the 9 basis functions of the "
         "reference make 81: does it belong to another molecule or basis set?"},
        {0, 3, 5, 1,
         "2: a.cis: holds 15 amplitudes per root and spin where 2 active occupied and "
         "6 active virtual orbitals make 12: is it the dump of another job?"},
    };
    support::write_job(".", "ref", support::random_job(random, 1, 1, 2, 6, 0, 4));
    const std::string reference = told("ref");
    for (const auto& [nfc, mi, ma, nfv, end] : jobs) {
        const job other = support::random_job(random, 1, nfc, mi, ma, nfv, 4);
        support::write_job(".", "a", other);
        EXPECT_EQ(told("a", "ref.sgn"), end);
        EXPECT_FALSE(fs::exists("a.sgn"));
        // What the files do not tell is not asked for: the numbers that are there are taken.
        support::write_job(".", "a", other, {.layout_told = false});
        support::write_file("a.fchk", support::replaced(contents_of("a.fchk"), "N=", "n="));
        EXPECT_THAT(told("a", "ref.sgn"), testing::Not(testing::HasSubstr("another"))) << end;
        fs::remove("a.sgn");
    }
    // Orbitals that were removed as linearly dependent.
    support::write_job(".", "a", support::random_job(random, 1, 1, 2, 6, 0, 4));
    const std::string checkpoint = contents_of("a.fchk");
    support::write_file("a.fchk",
                        support::replaced(checkpoint, "N=          81", "N=          72"));
    EXPECT_EQ(told("a", "ref.sgn"),
              "2: a.fchk: holds 72 MO coefficients where the 9 basis functions of the reference "
              "make 81: if linear dependences were removed, the tool sgn_states treats such jobs");
    EXPECT_EQ(told("ref", "ref.sgn"), reference);
}

}  // namespace
