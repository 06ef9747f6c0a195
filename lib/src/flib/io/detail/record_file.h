// A text file as a sequence of records, with a position among them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "flib/io/detail/text_file.h"
#include "flib/io/stop_run.h"
#include "flib/text/fixed_text.h"
#include "flib/text/line_test.h"

#pragma GCC visibility push(hidden)
namespace flib {

/// What stands behind an input unit; unit.h tells the rules of records, end mark and searches.
class record_file {
  public:
    explicit record_file(std::string path) : file_(std::move(path)) {}

    const std::string& path() const { return file_.path(); }

    bool read(text_span line);
    void step_back();
    void rewind();
    void go_to_end();
    bool past_end() const { return past_end_; }

    bool find_forward(const line_test& test, text_span line, std::int64_t most);
    bool find_backward(const line_test& test, text_span line);
    bool find_last(const line_test& test, text_span line);

    // For free-format reads, which take items across records.

    /// The bytes from the current position on, newlines and all: at least `least` of them (up to
    /// text_file::window_size), or all there are.
    std::string_view peek(std::size_t least) { return file_.from(next_, least); }
    /// Moves on by `count` bytes.
    void advance(std::size_t count) { next_ += static_cast<std::int64_t>(count); }
    /// Moves on to just after the record at hand.
    void finish_record();
    /// Sets the end mark.
    void mark_end();
    /// Bytes between the current position and the end of the file.
    std::int64_t bytes_left() const { return file_.size() - next_; }

    /// The current position, and the way back to it: the offset at which a record begins.
    std::int64_t position() const { return next_; }
    void go_to(std::int64_t position);

    /// An error at the record read last.
    io_error error_at_last_record(std::string_view message);
    /// An error at the current position.
    io_error error_here(std::string_view message);

  private:
    /// A record's place in the file; `end` is the offset of its newline or of the file's end.
    struct extent {
        std::int64_t begin;
        std::int64_t end;
    };

    extent record_at(std::int64_t begin);
    extent record_before(std::int64_t end);
    std::string_view head(const extent& record, std::size_t columns);
    std::int64_t after(const extent& record) const;
    void stop_at(const extent& record, text_span line);
    bool accepts(const line_test& test, const extent& record);
    bool search_up(const line_test& test, std::int64_t end, extent& found);

    text_file file_;
    std::int64_t next_ = 0;  // where the next record begins
    std::int64_t last_ = 0;  // where the record read last begins
    bool past_end_ = false;  // after the end mark
};

/// The file behind an input unit; throws run_error when `fid` is not one.
record_file& input_of(std::int32_t fid);

}  // namespace flib
#pragma GCC visibility pop
