#include "flib/excited/detail/dump_values.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "flib/excited/detail/amplitude_dump.h"
#include "flib/io/number.h"
#include "flib/io/unit.h"
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

bool is_blank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

std::size_t count_items(std::string_view line) {
    std::size_t count = 0;
    bool inside = false;
    for (const char c : line) {
        if (!is_blank(c) && !inside) ++count;
        inside = !is_blank(c);
    }
    return count;
}

/// The columns of a line up to the end of its item number `n`, from 1 on.
std::size_t end_of_item(std::string_view line, std::size_t n) {
    std::size_t at = 0;
    for (; n > 0; --n) {
        while (at < line.size() && is_blank(line[at])) ++at;
        while (at < line.size() && !is_blank(line[at])) ++at;
    }
    return at;
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

/// Goes to where line `line` (from 0 on) begins if all have one length. False if none begins there,
/// or one with another number of values.
bool dump_values::go_to_line(std::size_t line) const {
    const std::int64_t offset = static_cast<std::int64_t>(line) * line_length_;
    file_.go_to(begin_);
    if (line_length_ == 0 || offset > file_.bytes_left()) return false;
    file_.go_to(begin_ + offset - 1);
    std::string_view text = file_.peek(longest_line);
    if (!text.starts_with('\n')) return false;
    file_.go_to(begin_ + offset);
    text.remove_prefix(1);
    const std::size_t items = std::min(per_line_, count_ - line * per_line_);
    return count_items(text.substr(0, text.find('\n'))) == items;
}

/// Sees from the first line and the place where the last one has to be whether all have one length.
/// If so, the unit stands behind the last.
bool dump_values::find_lines() {
    const std::string first_line(whole_line(file_.peek(longest_line)));
    per_line_ = count_items(first_line);
    line_length_ = static_cast<std::int64_t>(first_line.size());
    const std::size_t last = per_line_ == 0 ? 0 : (count_ - 1) / per_line_;
    if (per_line_ != 0 && go_to_line(last)) {
        // A number that is cut short is still one.
        const std::size_t columns = end_of_item(first_line, count_ - last * per_line_);
        const std::string_view text = file_.peek(longest_line);
        if (text.size() < columns && !text.ends_with('\n')) {
            throw file_.error_here("the file ends within the last of the " + told(count_));
        }
        return skip_record(fid_);
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
        if (!find_dump_heading(fid_, line)) return;
        throw error_at_last_record(fid_, "a second dump begins here: which of them is meant?");
    }
}

item_reader dump_values::from(std::size_t first, std::size_t count) const {
    // Behind a line of another length than the others', all values are read.
    const std::size_t line = line_length_ == 0 ? 0 : first / per_line_;
    const std::size_t passed_over = go_to_line(line) ? line * per_line_ : 0;
    if (passed_over == 0) file_.go_to(begin_);
    item_reader values(fid_);
    values.begin_reals(first + count, passed_over);
    values.check_part(first - passed_over);
    return values;
}

}  // namespace flib
