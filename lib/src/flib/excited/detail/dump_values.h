// The values of a dump by their number, without reading those between.
#pragma once

#include <cstddef>
#include <cstdint>

#include "flib/io/detail/record_file.h"
#include "flib/io/free_format.h"

#pragma GCC visibility push(hidden)
namespace flib {

/// As many values as a dump's heading tells of, five or so to a line. Where all lines look alike,
/// which their lengths show, a value's place is known; else all before it are read.
class dump_values {
  public:
    /// `fid` stands below the heading, of which `count` is the number of values. Throws io_error
    /// if there are fewer or more than that, or if a second dump stands behind them.
    dump_values(std::int32_t fid, std::size_t count);

    /// A reader that takes value `first` (from 0 on) next, of `count` reals. They must be there.
    item_reader from(std::size_t first, std::size_t count) const;

  private:
    bool go_to_line(std::size_t line) const;
    bool find_lines();
    void check_lines();
    void check_behind() const;

    std::int32_t fid_;
    record_file& file_;
    std::size_t count_;
    std::int64_t begin_;            // of the first line
    std::int64_t line_length_ = 0;  // with its newline; 0 if lines differ
    std::size_t per_line_ = 0;
};

}  // namespace flib
#pragma GCC visibility pop
