#include "flib/util/matrix_product.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "flib/util/detail/product_variants.h"

namespace flib {
namespace {

// The product is built from tiles of `c` that stay in the vector registers while the sum runs.
// Vectors hold neighbouring rows of one column, so every element keeps a running sum of its own.
// `a` and `b` are first copied, block by block, into panels in the order in which the tiles read
// them. The summed index is cut into blocks as well; between two of them the running sums rest in
// `c`, which changes no bit of them.

/// Terms of the sum taken in one go: a panel of `b` stays in the first-level cache.
constexpr std::ptrdiff_t depth_block = 256;
/// Rows of `a` copied at once (512 KiB: the second-level cache); a multiple of every tile's rows.
constexpr std::ptrdiff_t row_block = 240;
/// Columns of `b` copied at once (6 MiB); a multiple of every tile's columns.
constexpr std::ptrdiff_t column_block = 3072;

/// The unit of the panels' memory, so that no vector straddles two of them.
struct alignas(64) cache_line {
    double values[8];
};

/// A block of a matrix, 0-based.
template <class T>
struct block {
    T* first;
    std::ptrdiff_t stride;  // between columns
    std::ptrdiff_t rows;
    std::ptrdiff_t columns;

    T* at(std::ptrdiff_t i, std::ptrdiff_t j) const { return first + i + j * stride; }
    block part(std::ptrdiff_t i, std::ptrdiff_t j, std::ptrdiff_t most_rows,
               std::ptrdiff_t most_columns) const {
        return {at(i, j), stride, std::min(most_rows, rows - i),
                std::min(most_columns, columns - j)};
    }
};

template <class T>
block<T> whole(matrix_view<T> m) {
    const auto extent = [](std::int32_t n) { return std::max<std::ptrdiff_t>(n, 0); };
    return {m.data(), extent(m.rows()), extent(m.rows()), extent(m.columns())};
}

/// Copies `b` in panels of `width` columns, row by row; a last panel is filled with zeros.
void pack_columns(block<const double> b, std::ptrdiff_t width, double* to) {
    for (std::ptrdiff_t j = 0; j < b.columns; j += width, to += width * b.rows) {
        for (std::ptrdiff_t in_panel = 0; in_panel < width; ++in_panel) {
            const bool inside = j + in_panel < b.columns;
            const double* const from = inside ? b.at(0, j + in_panel) : nullptr;
            for (std::ptrdiff_t k = 0; k < b.rows; ++k) {
                to[k * width + in_panel] = inside ? from[k] : 0.0;
            }
        }
    }
}

/// Packed panels of `a` and `b`, `depth` terms long.
struct panels {
    const double* a;
    const double* b;
    std::ptrdiff_t depth;
};

/// The work on tiles of `vectors` vectors of `bytes` bytes by `width` columns. All of it is inlined
/// into a function that is compiled for vectors of that size.
template <std::size_t bytes, std::ptrdiff_t vectors, std::ptrdiff_t width_>
struct kernel {
    using vector [[gnu::vector_size(bytes)]] = double;
    using vector_in_memory [[gnu::aligned(alignof(double)), gnu::may_alias]] = vector;
    static constexpr std::ptrdiff_t lanes = bytes / sizeof(double);
    static constexpr std::ptrdiff_t height = vectors * lanes;
    static constexpr std::ptrdiff_t width = width_;
    static_assert(row_block % height == 0 && column_block % width == 0);

    /// Copies `a` in panels of its tiles' rows, column by column; a last panel is filled with
    /// zeros.
    [[gnu::always_inline]] static inline void pack_rows(block<const double> a, double* panels) {
        for (std::ptrdiff_t k = 0; k < a.columns; ++k) {
            for (std::ptrdiff_t i = 0; i < a.rows; i += height) {
                const double* const from = a.at(i, k);
                double* const to = panels + i * a.columns + k * height;
                if (i + height <= a.rows) {
                    for (std::ptrdiff_t v = 0; v < height; v += lanes) {
                        *reinterpret_cast<vector_in_memory*>(to + v) =
                            *reinterpret_cast<const vector_in_memory*>(from + v);
                    }
                } else {
                    std::fill(std::copy_n(from, a.rows - i, to), to + height, 0.0);
                }
            }
        }
    }

    /// Adds the terms of one panel of `a` and one of `b` to the sums of one tile.
    [[gnu::always_inline]] static inline void add_to_tile(panels p, double* c,
                                                          std::ptrdiff_t stride) {
        vector sums[width][vectors];
        for (std::ptrdiff_t j = 0; j < width; ++j) {
            const vector_in_memory* from =
                reinterpret_cast<const vector_in_memory*>(c + j * stride);
            for (std::ptrdiff_t v = 0; v < vectors; ++v) sums[j][v] = from[v];
        }
        for (std::ptrdiff_t k = 0; k < p.depth; ++k) {
            const vector_in_memory* a = reinterpret_cast<const vector_in_memory*>(p.a + k * height);
            const double* const b = p.b + k * width;
            for (std::ptrdiff_t j = 0; j < width; ++j) {
                for (std::ptrdiff_t v = 0; v < vectors; ++v) sums[j][v] += a[v] * b[j];
            }
        }
        for (std::ptrdiff_t j = 0; j < width; ++j) {
            vector_in_memory* to = reinterpret_cast<vector_in_memory*>(c + j * stride);
            for (std::ptrdiff_t v = 0; v < vectors; ++v) to[v] = sums[j][v];
        }
    }

    /// The same for a tile at the edge, of which only a part belongs to `c`.
    [[gnu::always_inline]] static inline void add_to_partial_tile(panels p, block<double> c) {
        double tile[width * height] = {};
        for (std::ptrdiff_t j = 0; j < c.columns; ++j) {
            std::copy_n(c.at(0, j), c.rows, tile + j * height);
        }
        add_to_tile(p, tile, height);
        for (std::ptrdiff_t j = 0; j < c.columns; ++j) {
            std::copy_n(tile + j * height, c.rows, c.at(0, j));
        }
    }

    /// Adds the terms of `a` and of packed panels of `b` to the sums of `c`.
    [[gnu::always_inline]] static inline void add_rows(block<const double> a, double* a_panels,
                                                       const double* b_panels, block<double> c) {
        pack_rows(a, a_panels);
        const panels all{a_panels, b_panels, a.columns};
        for (std::ptrdiff_t j = 0; j < c.columns; j += width) {
            for (std::ptrdiff_t i = 0; i < c.rows; i += height) {
                const panels p{all.a + i * all.depth, all.b + j * all.depth, all.depth};
                const block<double> tile = c.part(i, j, height, width);
                if (tile.rows == height && tile.columns == width) {
                    add_to_tile(p, tile.first, tile.stride);
                } else {
                    add_to_partial_tile(p, tile);
                }
            }
        }
    }
};

/// A kernel's tiles, and its work compiled for the processors that have its vectors.
struct tiling {
    std::ptrdiff_t height;
    std::ptrdiff_t width;
    void (*add_rows)(block<const double> a, double* a_panels, const double* b_panels,
                     block<double> c);
};

void add_by_tiles(const tiling& tiles, matrix_view<const double> a_view,
                  matrix_view<const double> b_view, matrix_view<double> c_view) {
    const block<const double> a = whole(a_view);
    const block<const double> b = whole(b_view);
    const block<double> c = whole(c_view);
    if (c.rows == 0 || c.columns == 0 || a.columns == 0) return;
    const auto panel_memory = [&](std::ptrdiff_t most, std::ptrdiff_t length, std::ptrdiff_t tile) {
        const std::ptrdiff_t rounded_up = (std::min(most, length) + tile - 1) / tile * tile;
        const std::ptrdiff_t count = rounded_up * std::min(depth_block, a.columns);
        return std::vector<cache_line>(static_cast<std::size_t>(count + 7) / 8);
    };
    std::vector<cache_line> a_memory = panel_memory(row_block, c.rows, tiles.height);
    std::vector<cache_line> b_memory = panel_memory(column_block, c.columns, tiles.width);
    double* const a_panels = a_memory.data()->values;
    double* const b_panels = b_memory.data()->values;
    for (std::ptrdiff_t j = 0; j < c.columns; j += column_block) {
        for (std::ptrdiff_t k = 0; k < a.columns; k += depth_block) {
            const block<const double> b_block = b.part(k, j, depth_block, column_block);
            pack_columns(b_block, tiles.width, b_panels);
            for (std::ptrdiff_t i = 0; i < c.rows; i += row_block) {
                tiles.add_rows(a.part(i, k, row_block, depth_block), a_panels, b_panels,
                               c.part(i, j, row_block, column_block));
            }
        }
    }
}

using plain_kernel = kernel<16, 2, 4>;
void add_rows_plain(block<const double> a, double* a_panels, const double* b_panels,
                    block<double> c) {
    plain_kernel::add_rows(a, a_panels, b_panels, c);
}
void multiply_add_plain(matrix_view<const double> a, matrix_view<const double> b,
                        matrix_view<double> c) {
    add_by_tiles({plain_kernel::height, plain_kernel::width, add_rows_plain}, a, b, c);
}

#ifdef __x86_64__
using avx_kernel = kernel<32, 2, 6>;
[[gnu::target("avx")]] void add_rows_avx(block<const double> a, double* a_panels,
                                         const double* b_panels, block<double> c) {
    avx_kernel::add_rows(a, a_panels, b_panels, c);
}
void multiply_add_avx(matrix_view<const double> a, matrix_view<const double> b,
                      matrix_view<double> c) {
    add_by_tiles({avx_kernel::height, avx_kernel::width, add_rows_avx}, a, b, c);
}

using avx512_kernel = kernel<64, 3, 8>;
[[gnu::target("avx512f")]] void add_rows_avx512(block<const double> a, double* a_panels,
                                                const double* b_panels, block<double> c) {
    avx512_kernel::add_rows(a, a_panels, b_panels, c);
}
void multiply_add_avx512(matrix_view<const double> a, matrix_view<const double> b,
                         matrix_view<double> c) {
    add_by_tiles({avx512_kernel::height, avx512_kernel::width, add_rows_avx512}, a, b, c);
}
#endif

constexpr product_variant variants[] = {
    {"plain", multiply_add_plain},
#ifdef __x86_64__
    {"avx", multiply_add_avx},
    {"avx512", multiply_add_avx512},
#endif
};

/// How many of the variants, each of which needs all that those before it need, can run here.
std::size_t count_supported() {
#ifdef __x86_64__
    if (__builtin_cpu_supports("avx512f")) return 3;
    if (__builtin_cpu_supports("avx")) return 2;
#endif
    return 1;
}

/// Which of the variants is fastest here.
const product_variant& fastest() {
    std::size_t count = count_supported();
#ifdef __x86_64__
    // A Zen 4 does the work of the wide vectors in two halves, and is slower for it.
    if (count == 3 && __builtin_cpu_is("amdfam19h")) count = 2;
#endif
    return variants[count - 1];
}

}  // namespace

std::span<const product_variant> product_variants() {
    return std::span(variants).first(count_supported());
}

void multiply(matrix_view<const double> a, matrix_view<const double> b, matrix_view<double> c) {
    std::ranges::fill(c.all(), 0.0);
    multiply_add(a, b, c);
}

void multiply_add(matrix_view<const double> a, matrix_view<const double> b, matrix_view<double> c) {
    fastest().multiply_add(a, b, c);
}

}  // namespace flib
