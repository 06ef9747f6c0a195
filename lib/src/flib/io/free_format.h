// Free-format reads: items taken from a file's records or from a text, wherever they stand.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "flib/text/fixed_text.h"

namespace flib {

// Items are separated by blanks, tabs or one comma with any blanks around it. Records that hold no
// item are passed over, and a read that needs more items goes on with the next record; when it has
// them all, the rest of the current record is dropped. A read from a text does not go on: running
// out of items is an error. Nothing between two commas is an empty item: blank as a text, an error
// where a number is expected. Quotes, slashes and asterisks mean nothing special.
//
// A read from a file sees each line whole, however long it is.

/// A record that was read from `fid` last and is held in a buffer.
struct held_record {
    std::int32_t fid;
    std::string_view text;
};

/// A text that was read from line `line` of `file` some time before.
struct held_text {
    std::string_view file;
    std::int64_t line;
    std::string_view text;
};

/// The program's standard input, read no further than the line in which the last item stands.
struct standard_input {};

/// Items that are read and thrown away.
struct discard {
    std::int32_t count;
};

/// One read: takes its items in turn, then drops the rest of the record. Every take throws
/// io_error, which names the file, the line, the item as found and what was expected.
class item_reader {
  public:
    explicit item_reader(std::int32_t fid);
    explicit item_reader(const held_record& record);
    explicit item_reader(const held_text& text);
    explicit item_reader(standard_input);

    void take(discard items);
    void take(text_span text);
    void take(std::int32_t& value);
    void take(double& value);
    /// Whole arrays, in storage order.
    void take(std::span<std::int32_t> values);
    void take(std::span<double> values);

    /// Begins an array of `count` reals, of which the first `done` were passed over, that is taken
    /// in parts: each by take_part(), into memory, or by check_part(), which only makes sure that
    /// they are numbers.
    void begin_reals(std::size_t count, std::size_t done = 0);
    void take_part(std::span<double> values);
    void check_part(std::size_t count);

    /// Whether nothing but blanks stands behind the last item in its record.
    bool ends_record();

    /// Drops the rest of the record in which the last item stands.
    void finish();

  private:
    std::string_view next_item(const char* expected);
    void start_item(const char* expected);
    bool skip_blanks();
    const char* item_end() const;
    void pass_over(std::string_view item);
    bool refill();
    bool refill_from_standard_input();
    void synchronise();
    template <class Value, class Parse>
    void take_number(Value& value, Parse parse, const char* expected);
    void begin_array(std::size_t count, std::size_t done, const char* expected);
    void take_reals(double* values, std::size_t count);
    std::string count_of_array() const;
    [[noreturn]] void fail(const std::string& message);

    enum class source { file, text, standard_input };

    source source_;
    void* file_ = nullptr;            // the record_file read from, or where the text was read from
    std::string_view origin_name_{};  // of a text without such a file
    std::int64_t origin_line_ = 0;
    std::string input_line_{};  // of standard input

    const char* at_ = nullptr;      // the next character
    const char* end_ = nullptr;     // the end of those at hand
    const char* behind_ = nullptr;  // the character at which file_ stands, at or before at_
    bool first_ = true;             // no item has been taken yet
    std::size_t done_ = 0;          // of the array at hand
    std::size_t wanted_ = 0;
};

/// One free-format read of the given items: `read_items(fid, discard{3}, x, y, z)` takes six items
/// from the next record on. `source` is a unit, a held_record, a held_text or standard_input.
template <class Source, class... Items>
void read_items(const Source& source, Items&&... items) {
    item_reader reader(source);
    (reader.take(items), ...);
    reader.finish();
}

/// Item number `n` of a text, cut or padded to a line buffer.
template <class Source>
line_buffer item_of(const Source& source, std::int32_t n) {
    line_buffer item;
    read_items(source, discard{n - 1}, item);
    return item;
}

}  // namespace flib
