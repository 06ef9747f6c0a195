// The sign tool where everything around it is as bad as it gets: odd files, odd names, no memory,
// no disk, counts that no program prints.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>

#include "hostile/place.h"

namespace {

using hostile::place;
using testing::StartsWith;
using words = std::vector<std::string>;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif

TEST(Hostile, Places) {
    for (const auto& row : support::table_of("hostile_places.txt")) {
        const std::string& script = row[2];
        const bool of_each_input = script.find("$1") != std::string::npos;
        for (const std::string input : {"a.log", "a.fchk", "a.cis", "ref.sgn"}) {
            place here;
            here.arguments = {input, TEST_DATA};
            const std::string ended = here.run(script);
            const std::string expected = row[1] + (of_each_input ? ": " + input : "");
            EXPECT_TRUE(ended.starts_with(expected) || ended.starts_with("status 77,"))
                << row[0] << ": " << ended;
            if (!of_each_input) break;
        }
    }
}

/// Between the least memory that lets the tool start and the least that is enough for it.
TEST(Hostile, LittleMemory) {
    if (sanitized) GTEST_SKIP() << "the sanitizer needs the memory itself";
    const place here({"a.fchk"}, ":", 150);
    const auto under = [&](int kilobytes) {
        here.restore();
        return here.run("ulimit -v " + std::to_string(kilobytes) + R"(; exec "$0" "$@")");
    };
    const auto least = [&](const auto& reached) {
        int low = 0;
        int high = 1 << 20;
        while (high - low > 4) {
            const int middle = (low + high) / 2;
            (reached(under(middle)) ? high : low) = middle;
        }
        return high;
    };
    const auto complete = [](const std::string& ended) { return ended == "complete"; };
    const auto as_promised = [&](const std::string& ended) {
        return complete(ended) || ended.starts_with("diagnostic: not enough memory");
    };
    const int starts = least(as_promised) + 16;
    const int enough = least(complete);
    constexpr int limits = 60;
    int told = 0;
    for (int i = 0; i < limits; ++i) {
        const std::string ended = under(starts + (enough - starts) * i / limits);
        EXPECT_TRUE(as_promised(ended)) << ended;
        if (!complete(ended)) ++told;
    }
    EXPECT_GT(told, limits * 3 / 4);
    EXPECT_EQ(under(enough + 64), "complete");
}

/// Each integer of a job of one atom; in the runs that read the file.
TEST(Hostile, AbsurdCounts) {
    const std::string four_gib = sanitized ? "" : "ulimit -v 4194304; ";
    const std::string script = "ulimit -t 20; " + four_gib + R"(exec "$0" "$@")";
    const char* const digits = "0123456789";
    place here({"a.fchk"}, ":", 3, 1);
    const words reference{"a.fchk"};
    const words mapped{"a.fchk", "ref.sgn"};
    // A sanitizer makes each run ten times as long, but sees more than how it ends.
    const words counts = sanitized ? words{"-1", "4", "46341", "2147483647"}
                                   : words{"-1", "4",       "46341",      "2147483647",
                                           "0",  "1000000", "2147483648", "*******"};
    const std::pair<const char*, std::vector<words>> files[] = {
        {"a.log", {reference, mapped}}, {"a.fchk", {reference}}, {"ref.sgn", {mapped}}};
    for (const auto& [name, runs] : files) {
        const std::string text = support::contents_of(here.at(name));
        std::size_t end = 0;
        for (std::size_t at; (at = text.find_first_of(digits, end)) != std::string::npos;) {
            end = text.find_first_not_of(digits, at);
            if (!std::isspace(text[at - 1]) || !std::isspace(text[end])) continue;
            for (const std::string& count : counts) {
                for (const words& arguments : runs) {
                    here.restore();
                    here.write(name, text.substr(0, at) + count + text.substr(end));
                    here.arguments = arguments;
                    EXPECT_THAT(here.run(script), testing::Not(StartsWith("status")))
                        << name << " at " << at << ": " << count;
                }
            }
        }
    }
    // A log that no reader knows asks nothing of the atoms.
    here.restore();
    here.write("a.log", "Hello\n");
    const std::string text = support::contents_of(here.at("ref.sgn"));
    here.write("ref.sgn", support::replaced(text, "        1\n nmo", "987654321\n nmo"));
    EXPECT_EQ(here.run(script), "diagnostic: a.log: is too short to hold 987654321 atoms");
}

}  // namespace
