#include "common/command_line.h"

#include <gtest/gtest.h>

#include "common/version.h"
#include "flib/io/fixed_field.h"
#include "support/session.h"

namespace {

/// An application with an option of every kind, and what a line has set in it.
struct tool {
    tools::command_line app{{"tool", "[OPTIONS] FILE...\n--list",
                             "Does this and that with files of many kinds, and tells in a second "
                             "line what.",
                             "Status: 0 always.\n"}};
    bool quick = false;
    bool quiet = false;
    double limit = 2.5;
    std::optional<std::string> page{};
    std::optional<std::string> from{};
    std::string atoms{};

    tool() {
        tools::add_number(app, "--limit", limit, -3, "largest value").group("Limits");
        const tools::option fast = tools::add_switch(app, "-q,--quick", quick, "not slowly");
        tools::add_switch(app, "--quiet", quiet, "say nothing").excludes(fast);
        tools::add_output(app, "--page", page,
                          "write a page whose description is so long that it takes a second line");
        tools::add_input(app, "--from", from, "read this");
        tools::add_value(
            app, "--atoms", "LIST", [this](const std::string& list) { atoms += list + ";"; },
            "which");
    }

    std::string meaning(const std::string& line) {
        const std::vector<std::string> words = support::words_of(line);
        return support::answer_of("", [&] {
            const tools::parsed_line parsed =
                tools::parse_line(app, std::vector<std::string_view>(words.begin(), words.end()));
            if (parsed.shown) return *parsed.shown;
            std::string text;
            for (const std::string& name : parsed.names) text += (text.empty() ? "" : ", ") + name;
            text += text.empty() ? "/" : " /";
            if (quick) text += " quick";
            if (quiet) text += " quiet";
            if (limit != 2.5) text += " limit " + flib::shortest_real(limit);
            if (page) text += " page " + *page;
            if (from) text += " from " + *from;
            return atoms.empty() ? text : text + " atoms " + atoms;
        });
    }
};

TEST(CommandLine, MeansWhatTheRowsSay) {
    for (const auto& row : support::table_of("command_lines.txt")) {
        EXPECT_EQ(tool().meaning(row[0]), row[1]);
    }
    for (const auto& [line, shown] : support::session_of("command_help.txt")) {
        EXPECT_EQ(support::elided(tool().meaning(line), shown), shown) << "$ " << line;
    }
    EXPECT_EQ(tool().meaning("--version"), "tool " + std::string(tools::version()) + "\n");
    EXPECT_GE(tools::version().size(), 5U);
}

}  // namespace
