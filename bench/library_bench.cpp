// Routines of the library, each against the least work that could do the same.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <fstream>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "compare.h"
#include "flib/excited/detail/largest_of_product.h"
#include "flib/io/detail/columns.h"
#include "flib/io/free_format.h"
#include "flib/io/unit.h"
#include "flib/qm_file/qm_file_type.h"
#include "flib/search/search_word.h"
#include "flib/util/detail/product_variants.h"
#include "flib/util/math.h"
#include "flib/util/matrix_product.h"
#include "inputs.h"

#ifdef HAVE_OPENBLAS
#include <cblas.h>
#endif

namespace {

using flib::input_unit;
using flib::line_buffer;
using flib::matrix_view;

// Searches, against a loop that counts the newlines of the same file.

void count_newlines(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY);
    std::vector<char> buffer(1 << 18);
    std::int64_t newlines = 0;
    for (ssize_t got = 0; (got = read(descriptor, buffer.data(), buffer.size())) > 0;) {
        const char* const end = buffer.data() + got;
        for (const char* p = buffer.data();; ++p, ++newlines) {
            p = static_cast<const char*>(std::memchr(p, '\n', static_cast<std::size_t>(end - p)));
            if (p == nullptr) break;
        }
    }
    close(descriptor);
    benchmark::DoNotOptimize(newlines);
}

using search = bool (*)(std::int32_t fid, std::string_view word, flib::text_span line);

bool back_in_columns(std::int32_t fid, std::string_view word, flib::text_span line) {
    return flib::search_word_back(fid, 16, 19, word, line);
}

void absent_keyword(benchmark::State& state, search find, const char* word, flib::open_at where) {
    static const bench::temporary_directory directory;
    static const std::string path = [] {
        const std::string log = directory.file("long.log");
        bench::write_log({.log_bytes = 200'000'000}, log);
        return log;
    }();
    bench::compare(
        state,
        [&] {
            const input_unit fid(path, where);
            line_buffer line;
            if (find(fid, word, line)) state.SkipWithError("the keyword is there");
        },
        [&] { count_newlines(path); });
}

BENCHMARK_CAPTURE(absent_keyword, forward, flib::search_word_free, "Thermochemistry",
                  flib::open_at::start)
    ->UseManualTime()
    ->UseManualTime();
BENCHMARK_CAPTURE(absent_keyword, forward_blanks_ignored, flib::search_word_del_space,
                  "Mulliken charges", flib::open_at::start)
    ->UseManualTime();
BENCHMARK_CAPTURE(absent_keyword, forward_frequent_letters, flib::search_word_free, "Rotational",
                  flib::open_at::start)
    ->UseManualTime()
    ->UseManualTime();
BENCHMARK_CAPTURE(absent_keyword, last, flib::search_word_free_last, "CARTESIAN COORDINATES",
                  flib::open_at::start)
    ->UseManualTime()
    ->UseManualTime();
BENCHMARK_CAPTURE(absent_keyword, backward, back_in_columns, "NXE=", flib::open_at::end)
    ->UseManualTime()
    ->UseManualTime();

/// The last table of a long log against that of a short one.
void last_occurrence(benchmark::State& state) {
    const bench::temporary_directory directory;
    bench::write_log({.log_bytes = 10'000'000}, directory.file("short.log"));
    bench::write_log({.log_bytes = 500'000'000}, directory.file("long.log"));
    const auto find = [&](const char* log) {
        const input_unit fid(directory.file(log));
        line_buffer line;
        const bool found =
            flib::search_word_last_del_space(fid, "Center Atomic Atomic Coordinates", line);
        if (!found) state.SkipWithError("the table is not there");
    };
    bench::compare(
        state, [&] { find("long.log"); }, [&] { find("short.log"); });
}
BENCHMARK(last_occurrence)->UseManualTime();

/// The kind of a dump, whose test comes ninth, against counting its newlines.
void type_detection(benchmark::State& state) {
    const bench::temporary_directory directory;
    const std::string path = directory.file("job.cis");
    bench::write_dump({.nbasis = 150, .occupied = 15}, path);
    bench::compare(
        state, [&] { benchmark::DoNotOptimize(flib::type_tag_of(path)); },
        [&] { count_newlines(path); });
}
BENCHMARK(type_detection)->UseManualTime();

// Numbers, against std::from_chars on the bare tokens in memory.

void numbers(benchmark::State& state, char exponent_letter, bool noisy, bool in_columns = true) {
    flib::allow_scan_columns(in_columns);
    constexpr std::int64_t count = 2'000'000;
    const bench::temporary_directory directory;
    const std::string path = directory.file("numbers");
    std::string text = bench::number_lines(exponent_letter, count, noisy);
    std::ofstream(path) << text;
    std::replace(text.begin(), text.end(), 'D', 'E');
    std::vector<std::string_view> tokens;
    for (std::size_t at = 0; (at = text.find_first_not_of(" \n", at)) != std::string::npos;) {
        const std::size_t end = std::min(text.find_first_of(" \n", at), text.size());
        tokens.push_back(std::string_view(text).substr(at, end - at));
        at = end;
    }
    std::vector<double> values(tokens.size());
    std::vector<double> expected(tokens.size());
    bench::compare(
        state,
        [&] {
            const input_unit fid(path);
            flib::read_items(fid, std::span(values));
        },
        [&] {
            for (std::size_t i = 0; i < tokens.size(); ++i) {
                const char* const begin = tokens[i].data();
                std::from_chars(begin, begin + tokens[i].size(), expected[i]);
            }
        });
    flib::allow_scan_columns(true);
    if (values != expected) state.SkipWithError("the values differ");
    state.counters["ns_per_number"] = state.counters["shortest_ms"] * 1e6 / count;
}
BENCHMARK_CAPTURE(numbers, checkpoint, 'E', false)->UseManualTime();
BENCHMARK_CAPTURE(numbers, checkpoint_with_noise, 'E', true)->UseManualTime();
BENCHMARK_CAPTURE(numbers, dump, 'D', false)->UseManualTime();
BENCHMARK_CAPTURE(numbers, dump_with_noise, 'D', true)->UseManualTime();
// As processors without the instructions read them, and all other forms.
BENCHMARK_CAPTURE(numbers, checkpoint_one_by_one, 'E', false, false)->UseManualTime();
BENCHMARK_CAPTURE(numbers, checkpoint_with_noise_one_by_one, 'E', true, false)->UseManualTime();
BENCHMARK_CAPTURE(numbers, dump_one_by_one, 'D', false, false)->UseManualTime();
BENCHMARK_CAPTURE(numbers, dump_with_noise_one_by_one, 'D', true, false)->UseManualTime();

// The density's two products, at 2000 functions and 200 occupied orbitals.

void plain_loop(matrix_view<const double> a, matrix_view<const double> b, matrix_view<double> c) {
    for (std::int32_t j = 1; j <= c.columns(); ++j) {
        std::ranges::fill(c.column(j), 0.0);
        for (std::int32_t k = 1; k <= a.columns(); ++k) {
            for (std::int32_t i = 1; i <= c.rows(); ++i) c(i, j) += a(i, k) * b(k, j);
        }
    }
}

#ifdef HAVE_OPENBLAS
/// Adds the product, as the variants do.
void openblas(matrix_view<const double> a, matrix_view<const double> b, matrix_view<double> c) {
    openblas_set_num_threads(1);
    cblas_dgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, c.rows(), c.columns(), a.columns(), 1,
                a.data(), a.rows(), b.data(), b.rows(), 1, c.data(), c.rows());
}
#endif

using product = void (*)(matrix_view<const double>, matrix_view<const double>, matrix_view<double>);

void density(benchmark::State& state, product multiply, product yardstick, bool same_bits) {
    constexpr std::int32_t nbasis = 2000;
    constexpr std::int32_t ni = 200;
    constexpr std::int32_t na = nbasis - ni;
    std::mt19937_64 bits(1);
    std::normal_distribution<double> normal;
    const auto elements = [&](std::int32_t rows, std::int32_t columns) {
        std::vector<double> m(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns));
        for (double& x : m) x = normal(bits);
        return m;
    };
    const std::vector<double> cm = elements(nbasis, na);
    const std::vector<double> z = elements(na, ni);
    const std::vector<double> cnt = elements(ni, nbasis);
    std::vector<double> cmz = elements(nbasis, ni);
    std::vector<double> den = elements(nbasis, nbasis);
    const auto run = [&](product times) {
        times({cm.data(), nbasis, na}, {z.data(), na, ni}, {cmz.data(), nbasis, ni});
        times({cmz.data(), nbasis, ni}, {cnt.data(), ni, nbasis}, {den.data(), nbasis, nbasis});
    };
    bench::compare(
        state, [&] { run(multiply); }, [&] { run(yardstick); });
    if (!same_bits) return;
    run(multiply);
    const std::vector<double> ours = den;
    run(yardstick);
    if (std::memcmp(ours.data(), den.data(), den.size() * sizeof(double)) != 0) {
        state.SkipWithError("the bits differ");
    }
}
BENCHMARK_CAPTURE(density, against_plain_loop, flib::multiply, plain_loop, true)->UseManualTime();
#ifdef HAVE_OPENBLAS
// Every way to compute it that this processor has, the narrowest vectors first.
[[maybe_unused]] const bool registered = [] {
    for (const flib::product_variant& variant : flib::product_variants()) {
        const std::string name = std::string("density/against_openblas/") + variant.name;
        benchmark::RegisterBenchmark(name.c_str(), density, variant.multiply_add, openblas, false)
            ->UseManualTime();
    }
    return true;
}();
#endif

/// The extremum of a matrix that no cache holds, against copying it.
void extremum(benchmark::State& state) {
    constexpr std::int32_t n = 4000;
    std::vector<double> a(std::size_t{n} * n);
    std::mt19937_64 bits(1);
    std::normal_distribution<double> normal;
    for (double& x : a) x = normal(bits);
    std::vector<double> copy(a.size());
    bench::compare(
        state,
        [&] {
            flib::element_location loc;
            flib::mat_abs_maxval_d(n, {a.data(), n, n}, loc);
            benchmark::DoNotOptimize(loc);
        },
        [&] {
            std::memcpy(copy.data(), a.data(), a.size() * sizeof(double));
            benchmark::ClobberMemory();
        });
}
BENCHMARK(extremum)->UseManualTime();

enum class elements { random, equal, equal_at_the_end };

/// The largest element of a product, against the way that computes all of them.
void largest_of_product(benchmark::State& state, elements kind) {
    constexpr std::int32_t n = 2000;
    constexpr std::int32_t terms = 200;
    constexpr std::size_t count = std::size_t{n} * terms;
    std::vector<double> a(count, 1.0);
    std::vector<double> b(count, 1.0);
    std::mt19937_64 bits(1);
    std::normal_distribution<double> normal;
    for (std::size_t i = 0; i < count; ++i) {
        if (kind == elements::random) b[i] = normal(bits);
        if (kind == elements::random) a[i] = normal(bits);
        if (kind == elements::equal_at_the_end && i % n < n - 300) a[i] = normal(bits);
    }
    const auto find = [&](flib::screening use) {
        benchmark::DoNotOptimize(
            flib::largest_of_product({a.data(), n, terms}, {b.data(), terms, n}, use));
    };
    bench::compare(
        state, [&] { find(flib::screening::where_possible); },
        [&] { find(flib::screening::never); });
}
BENCHMARK_CAPTURE(largest_of_product, random, elements::random)->UseManualTime();
BENCHMARK_CAPTURE(largest_of_product, equal, elements::equal)->UseManualTime();
BENCHMARK_CAPTURE(largest_of_product, equal_at_the_end, elements::equal_at_the_end)
    ->UseManualTime();

}  // namespace
