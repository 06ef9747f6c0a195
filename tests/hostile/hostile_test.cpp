// The sign tool where everything around it is as bad as it gets: odd files, odd names, no memory,
// no disk, counts that no program prints.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <random>

#include "support/job.h"
#include "support/support.h"

namespace {

namespace fs = std::filesystem;
using support::contents_of;
using support::outcome;
using support::write_file;

const std::string earlier = "an earlier result\n";

#if defined(__SANITIZE_ADDRESS__)
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif

/// A directory with a job "a", its reference and an earlier result.
class hostile_place {
  public:
    explicit hostile_place(std::int32_t virtual_orbitals = 3) {
        // What can not be allocated is no error of the program's.
        setenv("ASAN_OPTIONS", "allocator_may_return_null=1:max_allocation_size_mb=1024", 0);
        std::mt19937_64 random(17);
        support::write_job(at(""), "a",
                           support::random_job(random, 3, 1, 2, virtual_orbitals, 1, 2));
        EXPECT_EQ(run({"a.fchk"}).status, 0);
        fs::rename(at("a.sgn"), at("ref.sgn"));
        write_file(at("a.sgn"), earlier);
    }

    fs::path at(std::string_view name) const { return directory_.path() / name; }

    outcome run(std::vector<std::string> arguments,
                std::vector<std::pair<int, rlim_t>> limits = {}) const {
        return support::run({"stigruz", std::move(arguments), directory_.path(), "", limits});
    }

    /// Runs a shell script, in which $0 stands for the tool.
    outcome run_script(const std::string& script) const {
        const std::string tool = TOOL_DIRECTORY "/stigruz";
        return support::run({"/bin/sh", {"-c", script, tool}, directory_.path()});
    }

    void expect_complete(const outcome& ended) const {
        EXPECT_EQ(ended.status, 0);
        EXPECT_EQ(ended.output + ended.errors, "");
        EXPECT_EQ(contents_of(at("a.sgn")), contents_of(at("ref.sgn")));
    }

    void expect_diagnostic(const outcome& ended) const {
        EXPECT_EQ(ended.status, 2);
        EXPECT_EQ(ended.output, "");
        EXPECT_THAT(ended.errors,
                    testing::MatchesRegex("(==[0-9]+==WARNING: [^\n]+\n)*stigruz: [^\n]+\n"));
        EXPECT_EQ(contents_of(at("a.sgn")), earlier);
    }

  private:
    const support::scratch_directory directory_;
};

TEST(Hostile, PlacesInWhichARunSucceeds) {
    for (const char* const script :
         {"exec $0 a.fchk <&- >&- 2>&-", "exec $0 a.fchk >/dev/full 2>/dev/full",
          "export LC_ALL=de_DE.UTF-8; exec $0 a.fchk", "LC_ALL=tr_TR.ISO-8859-9 exec $0 a.fchk",
          "LC_ALL=nonsense exec $0 a.fchk", "ulimit -n 4; exec $0 a.fchk",
          "ulimit -f 4; exec $0 a.fchk", "ulimit -s 256; exec $0 a.fchk",
          // The result behind links: what they point to is replaced, or made.
          "mkdir s; mv a.sgn s/r; ln -s r s/l; ln -s s/l a.sgn; $0 a.fchk && test -L a.sgn -a -L "
          "s/l -a -f s/r",
          "mkdir s; ln -s r s/l; ln -sf s/l a.sgn; $0 a.fchk && test -L a.sgn -a -L s/l"}) {
        SCOPED_TRACE(script);
        const hostile_place place;
        place.expect_complete(place.run_script(script));
    }
}

TEST(Hostile, PlacesInWhichARunFails) {
    for (const char* const script :
         {"mkdir x; cd x; rmdir ../x; exec $0 a.fchk", "ulimit -f 1; exec $0 a.fchk",
          "test $(id -u) = 0 && exit 77; chmod a-w .; $0 a.fchk; s=$?; chmod u+w .; exit $s",
          "for n in a.sgn /dev/full /dev/null . a.log/x; do mv a.sgn b; ln -s $n a.sgn; $0 a.fchk "
          "2>e; test $? = 2 -a -L a.sgn || exit 99; rm a.sgn; mv b a.sgn; done; cat e >&2; exit 2",
          "unshare -m sh -c 'mkdir d; mount -t tmpfs -o size=64k none d || exit 77; cp a.* d; "
          "cd d; cat /dev/zero >rest 2>/dev/null; ls -A >../before; $0 a.fchk; s=$?; "
          "ls -A >../after; cmp ../before ../after >&2 && cmp a.sgn ../a.sgn >&2 && exit $s; "
          "exit 99' $0 2>e; s=$?; grep -q unshare: e && exit 77; cat e >&2; exit $s"}) {
        SCOPED_TRACE(script);
        const hostile_place place;
        const outcome ended = place.run_script(script);
        constexpr int impossible_here = 77;
        if (ended.status != impossible_here) place.expect_diagnostic(ended);
    }
}

TEST(Hostile, SomethingElseThanAnInputFile) {
    for (const std::string name : {"a.log", "a.fchk", "a.cis", "ref.sgn"}) {
        for (const std::string command :
             {"mkdir $f", "mkfifo $f", "ln -s /dev/null $f", "ln -s /dev/zero $f", "ln -s none $f",
              "ln -s $f $f", "ln -s a.sgn/x $f", "cp ./-$f $f; chmod 0 $f"}) {
            if (command.find("chmod") != std::string::npos && geteuid() == 0) continue;
            SCOPED_TRACE(name + ": " + command);
            const hostile_place place;
            const outcome ended = place.run_script("f=" + name + "; mv $f ./-$f; " + command +
                                                   "; exec $0 a.fchk ref.sgn");
            place.expect_diagnostic(ended);
            EXPECT_THAT(ended.errors, testing::StartsWith("stigruz: " + name));
        }
    }
}

TEST(Hostile, Names) {
    const std::string longest(195, 'x');  // an argument of 200 characters
    for (const std::string& name :
         {std::string("with blanks  inside"), std::string("new\nline"), std::string("*$(id);'\"\\"),
          std::string("-\xff\xc3\x28"), longest, longest + "y", std::string(240, 'z')}) {
        SCOPED_TRACE(name);
        const hostile_place place;
        for (const char* const suffix : {".log", ".fchk", ".cis"}) {
            fs::rename(place.at("a").concat(suffix), place.at(name).concat(suffix));
        }
        if (name.size() <= longest.size()) {
            EXPECT_EQ(place.run({name + ".fchk"}).status, 0);
            EXPECT_EQ(contents_of(place.at(name).concat(".sgn")), contents_of(place.at("ref.sgn")));
            fs::remove(place.at(name).concat(".cis"));
        }
        place.expect_diagnostic(place.run({name + ".fchk"}));
        place.expect_diagnostic(place.run({name + std::string(300, 'n')}));
    }
}

TEST(Hostile, LittleMemory) {
    if (sanitized) GTEST_SKIP() << "the sanitizer needs the memory itself";
    const hostile_place place(150);
    int failed = 0;
    for (rlim_t pages = 600; pages < 3000; pages += 15) {
        write_file(place.at("a.sgn"), earlier);
        const outcome ended = place.run({"a.fchk"}, {{RLIMIT_AS, pages * 4096}});
        if (ended.status == 0) {
            place.expect_complete(ended);
        } else if (failed > 0 || ended.status == 2) {
            place.expect_diagnostic(ended);
            ++failed;
        }  // else it can not even be loaded
    }
    EXPECT_GT(failed, 0);
}

TEST(Hostile, AbsurdCounts) {
    const hostile_place place;
    for (const char* const name : {"a.log", "a.fchk", "ref.sgn"}) {
        const std::string text = contents_of(place.at(name));
        std::size_t end = text.find('\n');
        for (std::size_t from = 0; from != std::string::npos;
             from = text.find_first_not_of(" \n", end)) {
            end = std::min(text.find_first_of(" \n", from), text.size());
            const std::string word = text.substr(from, end - from);
            if (word.find_first_not_of("0123456789") != std::string::npos) continue;
            for (const char* const count :
                 {"0", "-1", "4", "46341", "1000000", "2147483647", "2147483648", "*******"}) {
                SCOPED_TRACE(std::string(name) + " at " + std::to_string(from) + ": " + count);
                std::string changed = text;
                write_file(place.at(name), changed.replace(from, end - from, count));
                for (std::vector<std::string> arguments :
                     {std::vector<std::string>{"a.fchk"}, {"a.fchk", "ref.sgn"}}) {
                    std::vector<std::pair<int, rlim_t>> limits{{RLIMIT_CPU, 20}};
                    if (!sanitized) limits.emplace_back(RLIMIT_AS, rlim_t{4} << 30);
                    const outcome ended = place.run(arguments, limits);
                    if (ended.status == 2) {
                        place.expect_diagnostic(ended);
                    } else if (!ended.output.empty()) {
                        EXPECT_THAT(ended.status, testing::AnyOf(0, 1));
                        EXPECT_EQ(contents_of(place.at("a.sgn")), earlier);
                    } else {
                        EXPECT_EQ(ended.status, 0);
                        EXPECT_THAT(contents_of(place.at("a.sgn")),
                                    testing::StartsWith("INFORMATION\n"));
                        write_file(place.at("a.sgn"), earlier);
                    }
                }
            }
        }
        write_file(place.at(name), text);
    }
    // A log that no reader knows asks nothing of the atoms.
    std::string reference = contents_of(place.at("ref.sgn"));
    write_file(place.at("ref.sgn"), reference.replace(reference.find("   3\n"), 4, "987654321"));
    write_file(place.at("a.log"), "Hello\n");
    const outcome ended = place.run({"a.fchk", "ref.sgn"}, {{RLIMIT_CPU, 20}});
    place.expect_diagnostic(ended);
    EXPECT_EQ(ended.errors, "stigruz: a.log: is too short to hold 987654321 atoms\n");
}

}  // namespace
