#include "flib/excited/detail/amplitude_dump.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>

#include "flib/io/detail/record_file.h"
#include "flib/io/fixed_field.h"
#include "flib/io/number.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/type_tag.h"
#include "flib/search/search_word.h"

namespace flib {
namespace {

constexpr std::string_view heading = "Dump of file";

constexpr std::size_t word_count = 12;
/// 1 as a word, seen as a real.
constexpr double unit_word = 0x1p-1074;
/// What is below has no bits but those of 32-bit integers.
constexpr double words_end = 0x1p-1042;

bool is_word(double value) {
    return value >= 0 && value < words_end;
}

std::string number(std::int64_t n) {
    return std::to_string(n);
}

/// Whether one of the values that come next, where words would be, can only be one. No amplitude or
/// energy is so small. The file may hold anything.
bool words_are_next(std::int32_t fid) {
    try {
        item_reader items(fid);
        for (std::size_t i = 0; i < word_count; ++i) {
            line_buffer item;
            items.take(item);
            double value = 0;
            if (parse_real(item.trimmed(), value) != number_error::none) return false;
            if (value != 0 && is_word(value)) return true;
        }
    } catch (const io_error&) {
        // It ends before that.
    }
    return false;
}

/// What the words say of the `length` values from here on. Throws io_error where they contradict
/// each other or that.
dump_layout layout_of(record_file& file, const std::array<double, word_count>& words,
                      std::int32_t length) {
    const auto fail = [&file](const std::string& message) {
        throw file.error_here("the twelve words that tell the layout " + message);
    };
    std::array<std::int64_t, word_count> counts{};
    for (std::size_t i = 0; i < word_count; ++i) {
        if (!is_word(words[i])) {
            fail("hold " + std::string(trim(scientific_field(words[i], 20, 8))) + " as number " +
                 std::to_string(i + 1) + ", which is no count");
        }
        counts[i] = static_cast<std::int64_t>(words[i] / unit_word);
    }
    const std::int64_t states = counts[0];
    const std::int64_t both = counts[1];
    const std::int64_t alpha = counts[3];
    const std::int64_t beta = counts[5];
    const std::int64_t roots = counts[6];
    if (both != alpha + beta) {
        fail("tell of " + number(both) + " amplitudes per root, but of " + number(alpha) +
             " alpha and " + number(beta) + " beta ones");
    }
    if (alpha != beta) {
        fail("tell of an unrestricted job: " + number(alpha) + " alpha and " + number(beta) +
             " beta amplitudes per root");
    }
    if (alpha == 0 || roots == 0) {
        fail("tell of " + number(roots) + " roots with " + number(both) + " amplitudes each");
    }
    // Either alone may be so large that their product has no meaning.
    const std::int64_t values = length - std::int64_t{word_count};
    if (both > values || roots > values / both) {
        fail("tell of " + number(roots) + " roots with " + number(both) +
             " amplitudes each; there is no room for them in " + number(length) + " values");
    }
    return {static_cast<std::int32_t>(std::min(states, roots)), static_cast<std::int32_t>(roots),
            static_cast<std::int32_t>(alpha), roots * (2 * both + 1) == values};
}

/// Whether the dump tells its layout; the file stands where it stood.
bool tells_layout(std::int32_t fid) {
    record_file& file = input_of(fid);
    const std::int64_t begin = file.position();
    const bool told = words_are_next(fid);
    file.go_to(begin);
    return told;
}

}  // namespace

//  Dump of file   635 length         42292 (read left to right):
bool find_dump_heading(std::int32_t fid, text_span line) {
    return search_word(fid, 2, 13, heading, line);
}

void go_below_dump_heading(std::int32_t fid, text_span line) {
    require_found(find_dump_heading(fid, line), fid, heading);
}

dump_heading read_dump_heading(std::int32_t fid, std::string_view line) {
    dump_heading found;
    read_items(held_record{fid, line}, discard{3}, found.record, discard{1}, found.values);
    return found;
}

amplitude_dump::amplitude_dump(std::string_view fname, std::int32_t& info)
    : name_(trim_right(fname)), file_(fname) {
    info = file_.class_code;
    file_.require(tag::gaussian_rwf);
    line_buffer line;
    go_below_dump_heading(file_.fid, line);
    begin_ = input_of(file_.fid).position();
    if (!tells_layout(file_.fid)) return;

    step_back(file_.fid);
    require_record(file_.fid, line);
    const std::int32_t length = read_dump_heading(file_.fid, line.padded()).values;
    std::array<double, word_count> words{};
    read_items(file_.fid, std::span<double>(words));
    input_of(file_.fid).go_to(begin_);
    layout_ = layout_of(input_of(file_.fid), words, length);
    values_.emplace(file_.fid, static_cast<std::size_t>(length));
}

void amplitude_dump::require(std::int32_t ni, std::int32_t na, std::int32_t nci) const {
    if (const std::int64_t expected = std::int64_t{ni} * na; layout_->amplitudes != expected) {
        throw io_error(name_, 0,
                       "holds " + number(layout_->amplitudes) +
                           " amplitudes per root and spin where " + number(ni) +
                           " active occupied and " + number(na) + " active virtual orbitals make " +
                           number(expected) + ": is it the dump of another job?");
    }
    require_roots(nci);
}

void amplitude_dump::require_roots(std::int32_t nci) const {
    if (nci <= layout_->roots) return;
    throw io_error(
        name_, 0,
        "holds " + number(layout_->roots) + " roots where " + number(nci) + " were asked for");
}

item_reader amplitude_dump::all_values() const {
    input_of(file_.fid).go_to(begin_);
    return item_reader(file_.fid);
}

std::size_t amplitude_dump::per_root() const {
    return 2 * static_cast<std::size_t>(layout_->amplitudes);
}

item_reader amplitude_dump::plus(std::int32_t root, std::size_t count) const {
    return values_->from(word_count + (static_cast<std::size_t>(root) - 1) * per_root(), count);
}

item_reader amplitude_dump::minus(std::int32_t root, std::size_t count) const {
    return plus(layout_->roots + root, count);
}

item_reader amplitude_dump::energies(std::size_t count) const {
    return plus(2 * layout_->roots + 1, count);
}

}  // namespace flib
