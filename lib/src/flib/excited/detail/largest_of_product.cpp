#include "flib/excited/detail/largest_of_product.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <optional>
#include <span>
#include <vector>

#include "flib/util/matrix_product.h"

#ifdef __x86_64__
#include <immintrin.h>
#endif

namespace flib {
namespace {

#ifdef __x86_64__

// Rows of `a` and columns of `b` are multiplied as integers of 16 bits. A row r of K numbers, of
// norm |r|, becomes x with r = |r|/Q (x + d), where each |d| <= 1/2; a column s likewise y, with
// e. Neither a number nor a sum of products then leaves its 16 or 32 bits, since |x.y| <= |x||y|
// is about Q^2 = 2^30. From
//     r.s = |r||s|/Q^2 (x.y + x.e + d.y + d.e)   and   |d|, |e| <= sqrt(K)/2
// follows that r.s, and as well the running sum of doubles, is at most |r||s|/Q^2 (|x.y| + E) in
// magnitude, E = sqrt(K) (Q + sqrt(K)) + 2. If that is less than the largest element known, the
// element is not the largest; if not, its running sum is computed.

constexpr double quantum = 32766;             // Q
constexpr std::int32_t most_terms = 1 << 16;  // that the bounds above allow for
/// Norms outside could make squares, or products of their bounds, leave the range of doubles.
constexpr double least_norm = 0x1p-400;
constexpr double largest_norm = 0x1p400;
/// A row that is shorter than this, relative to the longest, is treated as if it were so long.
constexpr double least_part = 0x1p-60;
/// For the rounding of the few operations on bounds, most of them in floats.
constexpr double margin = 1 - 0x1p-20;
constexpr double above_all = 0x1p40;  // more than such a bound can be

constexpr std::int32_t tile_rows = 16;
constexpr std::int32_t tile_columns = 4;

/// Nearest integer; all are within 16 bits.
std::int16_t rounded(double x) {
    return static_cast<std::int16_t>(static_cast<std::int32_t>(x + std::copysign(0.5, x)));
}

/// The running sum that is element (i, j) of the product.
double running_sum(matrix_view<const double> a, matrix_view<const double> b, std::int32_t i,
                   std::int32_t j) {
    double sum = 0;
    for (std::int32_t k = 1; k <= a.columns(); ++k) sum += a(i, k) * b(k, j);
    return sum;
}

/// Pairs of neighbouring terms of a panel's rows.
struct alignas(64) row_pairs {
    std::int16_t values[2 * tile_rows];
};

/// The rows of a tile whose elements may be the largest, as bits, for each column.
using tile_hits = std::array<std::uint32_t, tile_columns>;

/// Multiplies a panel of rows and one of columns. An element whose integers have the product s may
/// be the largest if (|s| + error) x the row's scale >= the column's `least`.
[[gnu::target("avx2")]] tile_hits screen_tile(const row_pairs* rows, const std::int16_t* columns,
                                              std::ptrdiff_t pairs, const float* scales,
                                              float error, const float* least) {
    __m256i sums[tile_columns][2] = {};
    for (std::ptrdiff_t k = 0; k < pairs; ++k) {
        const auto* const row = reinterpret_cast<const __m256i*>(rows[k].values);
        for (std::ptrdiff_t j = 0; j < tile_columns; ++j) {
            std::int32_t pair = 0;
            std::memcpy(&pair, columns + (k * tile_columns + j) * 2, sizeof pair);
            const __m256i column = _mm256_set1_epi32(pair);
            for (std::ptrdiff_t v = 0; v < 2; ++v) {
                sums[j][v] = _mm256_add_epi32(sums[j][v], _mm256_madd_epi16(row[v], column));
            }
        }
    }
    tile_hits hits{};
    for (std::size_t j = 0; j < tile_columns; ++j) {
        for (std::ptrdiff_t v = 0; v < 2; ++v) {
            const __m256 magnitudes = _mm256_cvtepi32_ps(_mm256_abs_epi32(sums[j][v]));
            const __m256 bounds = _mm256_mul_ps(_mm256_add_ps(magnitudes, _mm256_set1_ps(error)),
                                                _mm256_loadu_ps(scales + v * 8));
            const __m256 may_be = _mm256_cmp_ps(bounds, _mm256_set1_ps(least[j]), _CMP_GE_OQ);
            hits[j] |= static_cast<std::uint32_t>(_mm256_movemask_ps(may_be)) << (v * 8);
        }
    }
    return hits;
}

/// The rows of `a`, ready to be multiplied with blocks of columns.
class screen {
  public:
    /// Nothing if the processor or the numbers are not fit for it.
    static std::optional<screen> of(matrix_view<const double> a) {
        if (!__builtin_cpu_supports("avx2") || a.columns() > most_terms) return {};
        screen made(a);
        if (!made.pack_rows()) return {};
        return made;
    }

    /// Looks at the columns of the product that belong to those of `b`, number `first` and up.
    /// False, with some of them perhaps not looked at, if the numbers are not fit for it or if too
    /// many elements may be the largest.
    bool look_at(matrix_view<const double> b, std::int32_t first, extremum& largest) {
        if (!pack_columns(b)) return false;
        for (std::int32_t i = 0; i < a_.rows(); i += tile_rows) {
            for (std::int32_t j = 0; j < b.columns(); j += tile_columns) {
                look_at_tile(b, i, j, first, largest);
                // A sum takes as long as some hundred elements in tiles.
                if (++tiles_ * tile_rows * tile_columns / 4096 + 1000 < sums_) return false;
            }
        }
        return true;
    }

  private:
    explicit screen(matrix_view<const double> a) : a_(a), pairs_((a.columns() + 1) / 2) {
        const double root = std::sqrt(static_cast<double>(a.columns()));
        error_ = static_cast<float>(root * (quantum + root) + 2);
    }

    /// False if a norm is out of range.
    bool pack_rows() {
        const std::int32_t panels = (a_.rows() + tile_rows - 1) / tile_rows;
        std::vector<double> norms(static_cast<std::size_t>(panels) * tile_rows);
        for (std::int32_t k = 1; k <= a_.columns(); ++k) {
            const std::span<const double> column = a_.column(k);
            for (std::size_t i = 0; i < column.size(); ++i) norms[i] += column[i] * column[i];
        }
        for (double& norm : norms) {
            norm = std::sqrt(norm);
            if (!(norm <= largest_norm)) return false;
            longest_ = std::max(longest_, norm);
        }
        if (longest_ < least_norm) return false;
        for (double& norm : norms) {
            norm = std::max(norm, least_part * longest_);
            scales_.push_back(static_cast<float>(norm / longest_));
            norm = quantum / norm;
        }
        rows_.resize(static_cast<std::size_t>(panels * pairs_));
        for (std::int32_t k = 0; k < a_.columns(); ++k) {
            const std::span<const double> column = a_.column(k + 1);
            for (std::int32_t i = 0; i < a_.rows(); i += tile_rows) {
                std::int16_t* const to = panel_of_rows(i)[k / 2].values + k % 2;
                const auto at = static_cast<std::size_t>(i);
                const std::size_t rows = std::min<std::size_t>(tile_rows, column.size() - at);
                for (std::size_t row = 0; row < rows; ++row) {
                    to[2 * row] = rounded(column[at + row] * norms[at + row]);
                }
            }
        }
        return true;
    }

    /// False if a norm is out of range.
    bool pack_columns(matrix_view<const double> b) {
        const std::int32_t panels = (b.columns() + tile_columns - 1) / tile_columns;
        columns_.assign(static_cast<std::size_t>(panels * pairs_) * 2 * tile_columns, 0);
        units_.assign(static_cast<std::size_t>(panels) * tile_columns, 0);
        for (std::int32_t j = 0; j < b.columns(); ++j) {
            const std::span<const double> column = b.column(j + 1);
            if (std::ranges::all_of(column, [](double x) { return x == 0; })) continue;
            double squares = 0;
            for (const double x : column) squares += x * x;
            const double norm = std::sqrt(squares);
            if (!(norm >= least_norm && norm <= largest_norm)) return false;
            const std::ptrdiff_t in_panel = j % tile_columns;
            std::int16_t* const to = panel_of_columns(j - j % tile_columns) + 2 * in_panel;
            for (std::size_t k = 0; k < column.size(); ++k) {
                to[k / 2 * 2 * tile_columns + k % 2] = rounded(column[k] * (quantum / norm));
            }
            units_[static_cast<std::size_t>(j)] = (longest_ / quantum) * (norm / quantum);
        }
        return true;
    }

    /// Looks at the elements of a tile that may be the largest; its first is (i, j), 0-based.
    void look_at_tile(matrix_view<const double> b, std::int32_t i, std::int32_t j,
                      std::int32_t first, extremum& largest) {
        float least[tile_columns];
        for (std::int32_t column = 0; column < tile_columns; ++column) {
            // In a column of zeros, and beyond the last, nothing may.
            const double unit =
                units_[static_cast<std::size_t>(j) + static_cast<std::size_t>(column)];
            const double bound = unit == 0 ? above_all : std::abs(largest.value) / unit * margin;
            least[column] = static_cast<float>(std::min(bound, above_all));
        }
        const tile_hits hits = screen_tile(panel_of_rows(i), panel_of_columns(j), pairs_,
                                           scales_.data() + i, error_, least);
        for (std::int32_t column = 0; column < tile_columns; ++column) {
            std::uint32_t rows = hits[static_cast<std::size_t>(column)];
            for (; rows != 0; rows &= rows - 1) {
                const std::int32_t row = i + std::countr_zero(rows);
                if (row >= a_.rows()) break;
                const double sum = running_sum(a_, b, row + 1, j + column + 1);
                largest.look_at(sum, {row + 1, first + j + column});
                ++sums_;
            }
        }
    }

    row_pairs* panel_of_rows(std::int32_t i) { return rows_.data() + i / tile_rows * pairs_; }
    std::int16_t* panel_of_columns(std::int32_t j) { return columns_.data() + j * pairs_ * 2; }

    matrix_view<const double> a_;
    std::ptrdiff_t pairs_;         // of terms
    float error_;                  // E
    double longest_ = 0;           // of the rows
    std::vector<float> scales_{};  // the rows' norms, relative to the longest
    std::vector<row_pairs> rows_{};
    std::vector<double> units_{};  // of sums of products with the longest row, by columns
    std::vector<std::int16_t> columns_{};
    std::int64_t tiles_ = 0;  // looked at
    std::int64_t sums_ = 0;   // computed as doubles
};

#endif

}  // namespace

extremum largest_of_product(matrix_view<const double> a, matrix_view<const double> b,
                            [[maybe_unused]] screening use) {
    constexpr std::int32_t elements_at_once = 1 << 19;  // 4 MiB
    extremum largest;
    if (a.rows() < 1 || b.columns() < 1) return largest;
    const std::int32_t at_once = std::clamp(elements_at_once / a.rows(), 1, b.columns());
#ifdef __x86_64__
    std::optional<screen> approximate;
    if (use == screening::where_possible) approximate = screen::of(a);
#endif
    matrix<double> product(a.rows(), at_once, "the transition density");
    for (std::int32_t done = 0; done < b.columns(); done += at_once) {
        const std::int32_t count = std::min(at_once, b.columns() - done);
        const matrix_view<const double> columns(b.column(done + 1).data(), b.rows(), count);
#ifdef __x86_64__
        if (approximate && approximate->look_at(columns, done + 1, largest)) continue;
        approximate.reset();
#endif
        const matrix_view<double> block(product.view().data(), a.rows(), count);
        multiply(a, columns, block);
        largest.look_at(block, done + 1);
    }
    return largest;
}

}  // namespace flib
