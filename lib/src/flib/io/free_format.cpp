#include "flib/io/free_format.h"

#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include "flib/io/detail/columns.h"
#include "flib/io/detail/record_file.h"
#include "flib/io/number.h"

namespace flib {
namespace {

constexpr const char* an_item = "an item";
constexpr const char* an_integer = "an integer";
constexpr const char* a_real = "a real number";

/// Most characters of an item that are looked at; a number has far fewer.
constexpr std::size_t longest_item = text_file::window_size / 2;

constexpr bool is_blank(char c) {
    return c == ' ' || c == '\t';
}
constexpr bool ends_item(char c) {
    return is_blank(c) || c == '\n' || c == ',';
}

/// The first character that is neither a blank nor a newline. Blanks are passed over eight at once:
/// how many there are before a number depends on its sign, which nobody can predict.
const char* first_not_blank(const char* p, const char* end) {
    constexpr std::uint64_t blanks = 0x2020202020202020;
    while (end - p >= 8) {
        std::uint64_t text = 0;
        std::memcpy(&text, p, sizeof text);
        text ^= blanks;
        constexpr bool little_endian = std::endian::native == std::endian::little;
        p += (little_endian ? std::countr_zero(text) : std::countl_zero(text)) / 8;
        if (text == 0) continue;
        if (*p != '\n' && *p != '\t') return p;
        ++p;
    }
    while (p != end && (is_blank(*p) || *p == '\n')) ++p;
    return p;
}

/// What a reader's header does not show, so that it is seen in the library alone.
record_file& input(void* file) {
    return *static_cast<record_file*>(file);
}

/// An item as a diagnostic shows it.
std::string shown(std::string_view item) {
    constexpr std::size_t most_shown = 40;
    if (item.empty()) return "nothing between two commas";
    std::string text = quoted(item.substr(0, most_shown));
    if (item.size() > most_shown) text.insert(text.size() - 1, "...");
    return text;
}

}  // namespace

item_reader::item_reader(std::int32_t fid) : source_(source::file), file_(&input_of(fid)) {
    if (input(file_).past_end()) fail("the file ended before this read");
}

item_reader::item_reader(const held_record& record)
    : source_(source::text),
      file_(&input_of(record.fid)),
      at_(record.text.data()),
      end_(record.text.data() + record.text.size()) {}

item_reader::item_reader(const held_text& text)
    : source_(source::text),
      origin_name_(text.file),
      origin_line_(text.line),
      at_(text.text.data()),
      end_(text.text.data() + text.text.size()) {}

item_reader::item_reader(standard_input)
    : source_(source::standard_input), origin_name_("standard input") {}

void item_reader::fail(const std::string& message) {
    if (file_ == nullptr) throw io_error(origin_name_, origin_line_, message);
    if (source_ == source::text) throw input(file_).error_at_last_record(message);
    synchronise();
    throw input(file_).error_here(message);
}

/// Brings the file's position up to the characters taken.
void item_reader::synchronise() {
    if (source_ != source::file) return;
    input(file_).advance(static_cast<std::size_t>(at_ - behind_));
    behind_ = at_;
}

bool item_reader::ends_record() {
    for (;;) {
        at_ = std::find_if_not(at_, end_, [](char c) { return is_blank(c) || c == '\r'; });
        if (at_ != end_) return *at_ == '\n';
        if (!refill()) return true;
    }
}

void item_reader::finish() {
    if (source_ != source::file) return;
    synchronise();
    input(file_).finish_record();
}

/// Gets at least one character more than those at hand, which stay. At the end of the input all
/// stays as it is, and it is false.
bool item_reader::refill() {
    switch (source_) {
        case source::text:
            return false;
        case source::standard_input:
            return refill_from_standard_input();
        case source::file:
            break;
    }
    synchronise();
    const auto kept = static_cast<std::size_t>(end_ - at_);
    const std::string_view bytes = input(file_).peek(kept + 1);
    at_ = behind_ = bytes.data();
    end_ = at_ + bytes.size();
    return bytes.size() > kept;
}

bool item_reader::refill_from_standard_input() {
    std::string more;
    // Byte by byte, so that what stands behind the line is left for whoever reads on.
    char c = 0;
    while (c != '\n' && more.size() < longest_item) {
        const ssize_t got = read(STDIN_FILENO, &c, 1);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) fail("cannot be read: " + errno_text(errno));
        if (got == 0) break;
        more += c;
    }
    if (more.empty()) return false;
    ++origin_line_;
    more.insert(more.begin(), at_, end_);
    input_line_ = std::move(more);
    at_ = input_line_.data();
    end_ = at_ + input_line_.size();
    return true;
}

/// Passes over blanks and the ends of records; false at the end of the input.
bool item_reader::skip_blanks() {
    for (;;) {
        at_ = first_not_blank(at_, end_);
        // A carriage return belongs to the end of a record only before a newline.
        if (end_ - at_ >= 2) {
            if (at_[0] != '\r' || at_[1] != '\n') return true;
            at_ += 2;
        } else if ((at_ == end_ || *at_ == '\r') && refill()) {
            continue;
        } else {
            return at_ != end_;
        }
    }
}

/// Goes to the next item, over the separator before it.
void item_reader::start_item(const char* expected) {
    bool more = skip_blanks();
    if (more && !first_ && *at_ == ',') {
        ++at_;
        more = skip_blanks();
    }
    first_ = false;
    if (more) return;
    const char* const where = source_ == source::text ? "the line ends" : "the file ends";
    const std::string message =
        std::string(where) + " where " + expected + " was expected" + count_of_array();
    if (source_ == source::file) {
        synchronise();
        input(file_).mark_end();
    }
    fail(message);
}

/// The end of the item that begins at the next character, as far as it is at hand.
const char* item_reader::item_end() const {
    const char* const end = std::find_if(at_, end_, ends_item);
    const bool at_newline = end != end_ && *end == '\n';
    return at_newline && end != at_ && end[-1] == '\r' ? end - 1 : end;
}

/// The next item, not yet passed over; of one without end, the first `longest_item` characters or
/// more.
std::string_view item_reader::next_item(const char* expected) {
    start_item(expected);
    const char* end = item_end();
    while (end == end_ && static_cast<std::size_t>(end - at_) < longest_item && refill()) {
        end = item_end();
    }
    return {at_, static_cast<std::size_t>(end - at_)};
}

void item_reader::pass_over(std::string_view item) {
    at_ += item.size();
    if (item.size() < longest_item) return;
    for (;;) {
        at_ = std::find_if(at_, end_, ends_item);
        if (at_ != end_ || !refill()) return;
    }
}

void item_reader::take(discard items) {
    for (std::int32_t i = 0; i < items.count; ++i) pass_over(next_item(an_item));
}

void item_reader::take(text_span text) {
    const std::string_view item = next_item(an_item);
    assign_text(text, item);
    pass_over(item);
}

template <class Value, class Parse>
void item_reader::take_number(Value& value, Parse parse, const char* expected) {
    const std::string_view item = next_item(expected);
    const number_error error =
        item.size() < longest_item ? parse(item, value) : number_error::not_a_number;
    if (error == number_error::too_large) {
        fail(shown(item) + " is too large for " + expected + count_of_array());
    }
    if (error == number_error::not_a_number) {
        fail(shown(item) + " stands where " + expected + " was expected" + count_of_array());
    }
    at_ += item.size();
}

void item_reader::take(std::int32_t& value) {
    take_number(value, parse_integer, an_integer);
}

void item_reader::take(double& value) {
    // A number in a usual form that is at hand as a whole; all else goes the long way.
    double usual = 0;
    const char* const end = scan_usual_real(first_not_blank(at_, end_), end_, usual);
    if (end != nullptr && end != end_ && ends_item(*end)) {
        value = usual;
        at_ = end;
        first_ = false;
        return;
    }
    take_number(value, parse_real, a_real);
}

/// Sets how many values are to come, and makes sure that a file has room for them before a caller's
/// memory of an absurd size is touched.
void item_reader::begin_array(std::size_t count, std::size_t done, const char* expected) {
    wanted_ = count;
    done_ = done;
    if (source_ != source::file) return;
    synchronise();
    const auto most = static_cast<std::size_t>(input(file_).bytes_left() + 1) / 2;
    if (wanted_ - done_ > most) {
        input(file_).mark_end();
        fail("the file is too short to hold " + std::to_string(wanted_) + " values, each " +
             expected);
    }
}

void item_reader::take(std::span<std::int32_t> values) {
    begin_array(values.size(), 0, an_integer);
    for (std::int32_t& value : values) {
        take(value);
        ++done_;
    }
    wanted_ = 0;
}

void item_reader::take(std::span<double> values) {
    begin_reals(values.size());
    take_part(values);
}

void item_reader::begin_reals(std::size_t count, std::size_t done) {
    begin_array(count, done, a_real);
}

/// Takes `count` reals of an array, into memory if `values` is not null.
void item_reader::take_reals(double* values, std::size_t count) {
    const auto at_end_of_line = [&] { return at_ != end_ && *at_ == '\n'; };
    double unused = 0;
    for (std::size_t done = 0; done < count;) {
        if (!first_ && at_end_of_line()) {
            // Whole lines of numbers in fixed columns, if such are next.
            const char* line = at_ + 1;
            double* const to = values == nullptr ? nullptr : values + done;
            const std::size_t taken = scan_columns(line, end_, to, count - done);
            if (taken > 0) {
                done += taken;
                done_ += taken;
                at_ = line - 1;  // behind the last item, as ever: its newline is still to come
                continue;
            }
        }
        do {
            take(values == nullptr ? unused : values[done]);
            ++done;
            ++done_;
        } while (done < count && !at_end_of_line());
    }
    if (done_ == wanted_) wanted_ = 0;
}

void item_reader::take_part(std::span<double> values) {
    if (!values.empty()) take_reals(values.data(), values.size());
}

void item_reader::check_part(std::size_t count) {
    take_reals(nullptr, count);
}

/// Where in an array an item stands, for a diagnostic.
std::string item_reader::count_of_array() const {
    if (wanted_ == 0) return {};
    return " (value " + std::to_string(done_ + 1) + " of " + std::to_string(wanted_) + ")";
}

}  // namespace flib
