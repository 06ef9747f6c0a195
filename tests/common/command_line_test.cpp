#include "common/command_line.h"

#include <gtest/gtest.h>

#include "common/version.h"
#include "support/support.h"

namespace {

using tools::parsed_line;
using words = std::vector<std::string_view>;

/// An application with an option of every kind, and what a line has set in it.
struct tool {
    CLI::App app{};
    bool quick = false;
    bool quiet = false;
    double limit = 2.5;
    std::optional<std::string> page{};
    std::string atoms{};

    tool() {
        tools::describe(app, {"tool", "[OPTIONS] FILE...\n--list",
                              "Does this and that with files of many kinds, and tells in a second "
                              "line what.",
                              "Status: 0 always.\n"});
        tools::add_number(app, "--limit", limit, -3, "largest value")->group("Limits");
        CLI::Option* const fast = tools::add_switch(app, "-q,--quick", quick, "not slowly");
        tools::add_switch(app, "--quiet", quiet, "say nothing")->excludes(fast);
        tools::add_file(app, "--page", page,
                        "write a page whose description is so long that it takes a second line");
        tools::add_value(
            app, "--atoms", "LIST", [this](const std::string& list) { atoms += list + ";"; },
            "which");
    }

    /// What a line means: the names, and the options behind a bar.
    std::string meaning(const words& line) {
        return support::answer_of("", [&] {
            const parsed_line parsed = tools::parse_line(app, line);
            if (parsed.shown) return "shown: " + *parsed.shown;
            std::string text;
            for (const std::string& name : parsed.names) text += name + ' ';
            text += '|';
            if (quick) text += " quick";
            if (quiet) text += " quiet";
            if (limit != 2.5) text += " limit " + std::to_string(limit).substr(0, 4);
            if (page) text += " page " + *page;
            if (!atoms.empty()) text += " atoms " + atoms;
            return text;
        });
    }
};

TEST(CommandLine, TakesOptionsAnywhereAndEverythingElseAsNames) {
    const struct {
        words line;
        const char* meaning;
    } cases[] = {
        {{}, "|"},
        {{"--limit=-3"}, "| limit -3.0"},  // the least there may be
        {{"--page", "-"}, "| page -"},
        {{"a", "--quick", "b"}, "a b | quick"},
        {{"-q", "a", "-q", "--quick", "-", "b"}, "a - b | quick"},
        {{"a", "--limit", "-1", "b", "--page=x.html"}, "a b | limit -1.0 page x.html"},
        {{"--limit=-3", "--limit=7e0", "a"}, "a | limit 7.00"},
        {{"--limit", "0.25", "--", "--quick", "--", "-a", "--page="},
         "--quick -- -a --page= | limit 0.25"},
        {{"[a,b]", "{}", "%%", "a b", ""}, "[a,b] {} %% a b  |"},
        {{"--page", "[a,b]", "c"}, "c | page [a,b]"},
        {{"--page", "-", "--page", "{}"}, "| page {}"},
        {{"--atoms", "1-3,7", "--atoms=x=y", "a"}, "a | atoms x=y;"},
    };
    for (const auto& [line, meaning] : cases) EXPECT_EQ(tool().meaning(line), meaning);
}

TEST(CommandLine, SaysInOneLineWhatIsWrong) {
    const struct {
        words line;
        const char* complaint;
    } cases[] = {
        {{"a", "--quik", "b"}, "no option '--quik' (see --help)"},
        {{"--quick=no", "a"}, "--quick takes no value"},
        {{"-x", "-1"}, "no option '-x' (see --help)"},
        {{"-1"}, "no option '-1' (see --help)"},
        {{"---"}, "no option '---' (see --help)"},
        {{"a", "--lim\n"}, "no option '--lim\\n' (see --help)"},
        {{"--limit="}, "--limit needs a value"},
        {{"--page=", "a"}, "--page needs a value"},
        {{"a", "--limit"}, "--limit needs a value"},
        {{"--page", "--quick"}, "--page needs the name of a file"},
        {{"--page", ""}, "--page needs the name of a file"},
        {{"--limit", "--quick"}, "--limit takes a number, -3 or above, not '--quick'"},
        {{"--limit=-3.0001"}, "--limit takes a number, -3 or above, not '-3.0001'"},
        {{"--limit=1x"}, "--limit takes a number, -3 or above, not '1x'"},
        {{"--limit", "nan"}, "--limit takes a number, -3 or above, not 'nan'"},
        {{"--limit", "inf"}, "--limit takes a number, -3 or above, not 'inf'"},
        {{"--quiet", "--quick"}, "--quick and --quiet exclude each other"},
    };
    for (const auto& [line, complaint] : cases) {
        EXPECT_EQ(tool().meaning(line), std::string("exit 2: ") + complaint);
    }
}

TEST(CommandLine, ShowsHelpAndVersion) {
    const char* const help =
        "shown: usage: tool [OPTIONS] FILE...\n"
        "       tool --list\n"
        "\n"
        "Does this and that with files of many kinds, and tells in a second line what.\n"
        "\n"
        "Limits:\n"
        "  --limit=NUMBER          largest value (2.5)\n"
        "\n"
        "Options:\n"
        "  -q, --quick             not slowly\n"
        "  --quiet                 say nothing\n"
        "  --page=FILE             write a page whose description is so long that it\n"
        "                          takes a second line\n"
        "  --atoms=LIST            which\n"
        "  -h, --help              show this text\n"
        "  --version               show the version\n"
        "\n"
        "Status: 0 always.\n";
    for (const words& line : {words{"--help"}, words{"a", "-h", "--quik"}, words{"-qh"}}) {
        EXPECT_EQ(tool().meaning(line), help);
    }
    const std::string version = "shown: tool " + std::string(tools::version()) + "\n";
    EXPECT_EQ(tool().meaning({"a", "--version"}), version);
    EXPECT_GE(tools::version().size(), 5U);
}

}  // namespace
