// Units: integers that name open text files, read by records or written as a whole.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "flib/io/stop_run.h"
#include "flib/text/fixed_text.h"
#include "flib/text/line_test.h"

namespace flib {

// A record is a line without its newline; a carriage return before the newline is dropped; a last
// line without a newline is a record; an empty file has none.
//
// A read past the last record fails, leaves its buffer unchanged and the unit after an end mark.
// Stepping back from there only passes the mark, so that the next read fails again. Stepping back
// at the start stays there, without an error.
//
// All of these throw run_error when the unit is not open, and io_error when its file can no longer
// be read.
//
// Each thread has units of its own: what one thread opens the others do not see, and the numbers of
// one say nothing about those of another. Nothing else is kept between calls, so the readers may
// be called from several threads at once, for one file or for many. What a thread leaves open is
// closed when it ends.

enum class open_at { start, end };

/// Hands over in `fid` the first unit from 100 upward that is not open; those below are left to
/// fixed uses.
void get_free_fid(std::int32_t& fid);

/// Opens the existing file `fname` (trailing blanks not counting) as `fid`, to be read from its
/// start or positioned at its end. Throws io_error if it cannot be opened or is not a regular
/// file, run_error if the unit is open already.
void open_old(std::int32_t fid, std::string_view fname, open_at where = open_at::start);

/// Whether `fid` names an open file.
bool unit_is_open(std::int32_t fid);

/// Closes `fid`; nothing happens if it is not open. What was written to an output unit and not
/// committed is dropped.
void close_unit(std::int32_t fid);

/// Reads the next record into `line`, cut or blank-padded to its length. False at the end of the
/// file, with `line` as it was.
[[nodiscard]] bool read_record(std::int32_t fid, text_span line);

/// Reads the next record into `line`, as read_record does; throws io_error at the end of the file.
void require_record(std::int32_t fid, text_span line);

/// Passes over `count` records, whatever they hold; throws io_error at the end of the file.
void skip_records(std::int32_t fid, std::int32_t count);

/// Passes over one record. False at the end of the file.
[[nodiscard]] bool skip_record(std::int32_t fid);

/// Steps back one record.
void step_back(std::int32_t fid);

/// Goes back to the first record.
void rewind_unit(std::int32_t fid);

/// Goes to the end of the file, from where searches backwards begin.
void go_to_end(std::int32_t fid);

/// Whether an input unit has been read past its last record.
bool is_past_end(std::int32_t fid);

/// An error to be thrown, which names the file of `fid` and the line of the record read last.
io_error error_at_last_record(std::int32_t fid, std::string_view message);

// Searches. Each reads records as read_record does, but looks at them where they lie in the file's
// window and fills `line` once, when it stops: with the record that `test` accepts or, without
// one, with the last record read.

inline constexpr std::int64_t no_limit = INT64_MAX;

/// Reads on to the first record accepted, of at most `most` records. Without one, the unit stands
/// after the last record read or, at the end of the file, after the end mark.
[[nodiscard]] bool find_forward(std::int32_t fid, const line_test& test, text_span line,
                                std::int64_t most = no_limit);

/// Tests the record read last, then earlier ones up to the first of the file, and leaves the unit
/// just after the record accepted. Without one, it stands just after the first record. After an
/// end mark the search fails at once.
[[nodiscard]] bool find_backward(std::int32_t fid, const line_test& test, text_span line);

/// Finds the last record of the whole file that is accepted, wherever the unit stands, and leaves
/// the unit just after it. Without one, the unit stands after the end mark.
[[nodiscard]] bool find_last(std::int32_t fid, const line_test& test, text_span line);

// Output. Records gather in memory; nothing reaches the disk before commit_unit().

/// Opens `fname` as `fid` for writing a new file that is to replace it.
void open_replace(std::int32_t fid, std::string_view fname);

/// Adds one record to an output unit.
void write_record(std::int32_t fid, std::string_view record);

/// Puts what was written in the place of the file, whole or, on any failure, not at all (then
/// io_error, and the earlier file is what it was), and closes the unit.
void commit_unit(std::int32_t fid);

/// An existing file opened for reading on the next free unit, and closed when this goes.
class input_unit {
  public:
    explicit input_unit(std::string_view fname, open_at where = open_at::start);
    ~input_unit();
    input_unit(const input_unit&) = delete;
    input_unit& operator=(const input_unit&) = delete;

    operator std::int32_t() const { return fid_; }

  private:
    std::int32_t fid_ = 0;
};

}  // namespace flib
