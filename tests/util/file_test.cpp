#include "flib/util/file.h"

#include <gtest/gtest.h>

#include <climits>

#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/util/gjf.h"
#include "flib/util/matrix.h"
#include "flib/util/mod_timer.h"
#include "support/support.h"

namespace flib {
namespace {

using support::ending;
using support::ending_of;

TEST(File, Lines) {
    const support::scratch_directory scratch;
    const std::string path = scratch.file("f", "a\n\n" + std::string(201, 'c'));
    EXPECT_EQ(num_file_lines(path + "  "), 3);
    EXPECT_EQ(num_file_lines(scratch.file("empty", "")), 0);
    EXPECT_EQ(
        ending_of([] { num_file_lines("/no/f "); }),
        (ending{1, " Error in opening file '/no/f' in function num_file_lines, stop!", true}));
    std::vector<line_buffer> lines(7);
    read_lines(path, 3, lines);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0].padded(), "a" + std::string(199, ' '));
    EXPECT_EQ(lines[2].padded(), std::string(200, 'c'));
    EXPECT_THROW(read_lines(path, 4, lines), io_error);
    EXPECT_THROW(read_lines("/no/f", 0, lines), io_error);
    EXPECT_EQ(get_free_fid(), 100);  // all closed again
}

TEST(File, NamesWithoutDirectoryAndExtension) {
    for (const auto& [name, base, main] : {std::tuple{"/a/b/job.fchk", "job.fchk", "job"},
                                           {"job.opt.fchk", "job.opt.fchk", "job.opt"},
                                           {"job", "job", "job"},
                                           {".hidden", ".hidden", ""},
                                           {"run.1/job ", "job", "job"},
                                           {"  dir/x.log", "x.log", "x"},
                                           {"a\\b.c", "a\\b.c", "a\\b"},
                                           {"d/ a b.c", " a b.c", " a b"},
                                           {"a/", "", ""},
                                           {"  ", "", ""}}) {
        EXPECT_EQ(name_base(name), base) << name;
        EXPECT_EQ(name_main(name), main) << name;
    }
}

TEST(Gjf, SectionsOfTheLastJob) {
    const struct {
        std::string contents;
        std::vector<std::int32_t> expected;  // route, title, charge, first atom, number of atoms
    } cases[] = {
        {"%mem=1\n# a\nb\nc\n\ntitle\n\n0 1\nH\nH\nH\nH\n\nC\n", {2, 6, 8, 9, 4}},
        {"  # a\n  \nt\n\n0 1\nH\nO", {1, 3, 5, 6, 2}},
        {"# a\n\nt\n\n0 1\nH\n\n--Link1--\n# b\n\nt\n\n0 1\nC\nC\n\n", {9, 11, 13, 14, 2}},
        {"# a\n\t\n\nt\n\n0 1\n\n", {1, 4, 6, 7, 0}},
        {"title\n\n0 1\nH\n", {0, 0, 0, 0, 0}},
        {"# a\n\nt\n0 1\nH\n", {1, 3, 0, 0, 0}},
        {"# a\nb\n", {1, 0, 0, 0, 0}},
        {"# a\n\nt\n\n", {1, 3, 5, 6, 0}},
        {"", {0, 0, 0, 0, 0}},
    };
    for (const auto& [contents, expected] : cases) {
        const support::scratch_directory scratch;
        const std::string path = scratch.file("f", contents);
        std::vector<std::int32_t> got;
        for (const auto locate :
             {get_gjf_route_linenumber, get_gjf_title_linenumber, get_gjf_charge_linenumber,
              get_gjf_atom_linenumber, get_gjf_natom}) {
            locate(path, got.emplace_back(-7));
        }
        EXPECT_EQ(got, expected) << contents;
    }
}

TEST(Timer, KnowsNoHours) {
    EXPECT_EQ(seconds_within_hour(0, 1, 250) - seconds_within_hour(59, 58, 500), -3597.25F);
    timer watch{-5000};
    watch.start_timer();
    EXPECT_GE(watch.saved_time, 0.0F);
    EXPECT_LT(watch.saved_time, 3600.0F);
    EXPECT_GE(timer{-5000}.elapsed_time(), 5000.0F);
}

TEST(Matrix, CountsItsElements) {
    EXPECT_EQ(element_count({3, 4, 5}, "a"), 60U);
    EXPECT_EQ(element_count({INT_MAX, INT_MAX, -1, INT_MAX}, "a"), 0U);
    EXPECT_EQ(element_count({INT_MAX, INT_MAX}, "a"), std::size_t{INT_MAX} * INT_MAX);
    EXPECT_EQ(ending_of([] {
                  element_count({INT_MAX, INT_MAX, INT_MAX}, "the rows");
              }),
              (ending{2, "not enough memory for the rows", false}));
    matrix<double> a(2, 3, "a");
    a(2, 3) = 6;
    a(1, 2) = 3;
    const std::vector<double> stored(a.view().all().begin(), a.view().all().end());
    EXPECT_EQ(stored, (std::vector<double>{0, 0, 3, 0, 0, 6}));
    EXPECT_TRUE(matrix<double>(-1, 5, "a").view().all().empty());
}

}  // namespace
}  // namespace flib
