#include "flib/excited/detail/dump_values.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "flib/excited/detail/amplitude_dump.h"
#include "flib/io/number.h"
#include "flib/io/unit.h"
#include "flib/search/search_word.h"
#include "flib/text/line_test.h"

namespace flib {
namespace {

/// More than any line of a dump is long.
constexpr std::size_t longest_line = 4096;

/// The first line of `text` with its newline; empty without one.
std::string_view whole_line(std::string_view text) {
    text = text.substr(0, longest_line);
    return text.substr(0, text.find('\n') + 1);
}

std::size_t count_items(std::string_view line) {
    std::size_t count = 0;
    bool inside = false;
    for (const char c : line) {
        const bool blank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
        if (!blank && !inside) ++count;
        inside = !blank;
    }
    return count;
}

std::string told(std::size_t count) {
    return std::to_string(count) + " values that its 'Dump of file' line tells of";
}

}  // namespace

dump_values::dump_values(std::int32_t fid, std::size_t count)
    : fid_(fid), file_(input_of(fid)), count_(count), begin_(file_.position()) {
    if (!find_lines()) check_lines();
    check_behind();
}

std::int64_t dump_values::line_at(std::size_t line) const {
    return begin_ + static_cast<std::int64_t>(line) * line_length_;
}

/// Sees from the first line and the place where the last one has to be whether all have one length.
/// If so, the unit stands behind the last.
bool dump_values::find_lines() {
    const std::string_view first = whole_line(file_.peek(longest_line));
    per_line_ = count_items(first);
    line_length_ = static_cast<std::int64_t>(first.size());
    if (per_line_ == 0 || count_ <= per_line_) {
        line_length_ = 0;
        return false;
    }
    const std::size_t before_last = (count_ - 1) / per_line_;
    const std::int64_t last = line_at(before_last);
    if (last - begin_ <= file_.bytes_left()) {
        file_.go_to(last - 1);
        std::string_view text = file_.peek(longest_line);
        if (text.starts_with('\n')) {
            text.remove_prefix(1);
            const std::string_view line = text.substr(0, text.find('\n'));
            if (count_items(line) == count_ - before_last * per_line_) {
                file_.go_to(last);
                return skip_record(fid_);
            }
        }
    }
    line_length_ = 0;
    file_.go_to(begin_);
    return false;
}

/// Reads all values. The unit then stands behind the last.
void dump_values::check_lines() {
    constexpr std::size_t least_bytes = 2;  // a digit and what ends it
    if (count_ > static_cast<std::size_t>(file_.bytes_left() + 1) / least_bytes) {
        throw file_.error_here("the " + std::to_string(file_.bytes_left()) +
                               " bytes from here on are too few for the " + told(count_));
    }
    item_reader values(fid_);
    values.begin_reals(count_);
    values.check_part(count_);
    const bool ends_line = values.ends_record();
    values.finish();
    if (ends_line) return;
    step_back(fid_);
    throw file_.error_here("there are more than the " + told(count_));
}

void dump_values::check_behind() const {
    line_buffer line;
    while (read_record(fid_, line)) {
        const line_buffer first{first_token(line.padded())};
        if (first.trimmed().empty()) continue;
        double value = 0;
        if (parse_real(first.trimmed(), value) == number_error::none) {
            throw error_at_last_record(fid_, "there are more than the " + told(count_));
        }
        step_back(fid_);
        if (!search_word(fid_, heading_columns.first, heading_columns.last, dump_heading, line)) {
            return;
        }
        throw error_at_last_record(fid_, "a second dump begins here: which of them is meant?");
    }
}

item_reader dump_values::from(std::size_t first, std::size_t count) const {
    std::size_t done = 0;
    file_.go_to(begin_);
    if (line_length_ != 0) {
        const std::size_t line = first / per_line_;
        const std::int64_t at = line_at(line);
        const auto length = static_cast<std::size_t>(line_length_);
        file_.go_to(at == begin_ ? at : at - 1);
        std::string_view text = file_.peek(length + 1);
        const bool follows = at == begin_ || text.starts_with('\n');
        if (at != begin_ && follows) text.remove_prefix(1);
        const std::string_view found = text.substr(0, text.find('\n') + 1);
        const bool is_last = line == (count_ - 1) / per_line_;
        // A line of another length before it: then all are read.
        const bool known =
            follows && (is_last || (found.size() == length && count_items(found) == per_line_));
        file_.go_to(known ? at : begin_);
        if (known) done = line * per_line_;
    }
    item_reader values(fid_);
    values.begin_reals(first + count, done);
    values.check_part(first - done);
    return values;
}

}  // namespace flib
