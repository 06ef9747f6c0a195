// The layout of a dump of record 635, known here and nowhere else.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "flib/excited/detail/dump_values.h"
#include "flib/excited/qm_file_ci_xpy.h"
#include "flib/io/free_format.h"
#include "flib/qm_file/detail/reader_steps.h"

#pragma GCC visibility push(hidden)
namespace flib {

/// Goes on to just below the next heading of a dump, which `line` then holds. False if there is
/// none.
bool find_dump_heading(std::int32_t fid, text_span line);

/// The same, but throws line_not_found if there is none.
void go_below_dump_heading(std::int32_t fid, text_span line);

/// What a heading that was read last tells.
struct dump_heading {
    std::int32_t record = 0;
    std::int32_t values = 0;
};
dump_heading read_dump_heading(std::int32_t fid, std::string_view line);

/// A dump, open. The program itself writes, for R roots with n amplitudes per spin:
///
///       0.49406565-322      0.26086666-320      0.00000000D+00      0.13043333-320 ...
///
/// twelve integers, seen as reals and so multiples of the smallest one above zero (the number of
/// states, 2 n, 0, n of alpha, 0, n of beta, R, then zeros); X+Y of every root, alpha before beta,
/// n each; X-Y likewise; R excitation energies. A dump whose first values are no such integers does
/// not tell its layout.
class amplitude_dump {
  public:
    /// `info` becomes the class code. Throws stop_run (status 1) for a file of another kind;
    /// io_error if it cannot be opened, has no heading, or tells of its layout what makes no sense
    /// or is not so.
    amplitude_dump(std::string_view fname, std::int32_t& info);

    std::string_view name() const { return name_; }
    const std::optional<dump_layout>& layout() const { return layout_; }

    /// Throws io_error, which names both numbers, if the layout is of other orbitals or has fewer
    /// than `nci` roots.
    void require(std::int32_t ni, std::int32_t na, std::int32_t nci) const;
    void require_roots(std::int32_t nci) const;

    /// A reader of the values from the first on, whatever the layout.
    item_reader all_values() const;

    // Readers of a layout that is told; of X-Y and energies only where it has them.

    /// X+Y or X-Y of the roots from `root` (from 1 on), `count` values.
    item_reader plus(std::int32_t root, std::size_t count) const;
    item_reader minus(std::int32_t root, std::size_t count) const;
    item_reader energies(std::size_t count) const;

  private:
    std::size_t per_root() const;  // of both spins

    std::string_view name_;
    recognised_file file_;
    std::int64_t begin_ = 0;  // of the values
    std::optional<dump_layout> layout_{};
    std::optional<dump_values> values_{};
};

}  // namespace flib
#pragma GCC visibility pop
