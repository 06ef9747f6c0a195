#include "flib/io/detail/record_file.h"

#include <algorithm>
#include <cstring>

#include "flib/io/unit.h"

namespace flib {
namespace {

constexpr std::size_t npos = std::string_view::npos;

/// A text to be found many times. Both directions look for its rarest character first: that is one
/// memchr() or memrchr() per occurrence of a rare byte.
class anchor_finder {
  public:
    explicit anchor_finder(std::string_view anchor)
        : anchor_(anchor), rarest_(anchor.empty() ? 0 : rarest_character(anchor)) {}

    bool empty() const { return anchor_.empty(); }

    std::size_t first_in(std::string_view text) const {
        for (std::size_t from = rarest_; from < text.size();) {
            const void* hit = std::memchr(text.data() + from, anchor_[rarest_], text.size() - from);
            if (hit == nullptr) return npos;
            const std::size_t at = offset(text, hit);
            if (stands_at(text, at)) return at - rarest_;
            from = at + 1;
        }
        return npos;
    }

    std::size_t last_in(std::string_view text) const {
        for (std::size_t length = text.size(); length > rarest_;) {
            const void* hit = memrchr(text.data(), anchor_[rarest_], length);
            if (hit == nullptr) return npos;
            const std::size_t at = offset(text, hit);
            if (at >= rarest_ && stands_at(text, at)) return at - rarest_;
            length = at;
        }
        return npos;
    }

  private:
    static std::size_t offset(std::string_view text, const void* hit) {
        return static_cast<std::size_t>(static_cast<const char*>(hit) - text.data());
    }
    bool stands_at(std::string_view text, std::size_t rarest_at) const {
        return text.substr(rarest_at - rarest_, anchor_.size()) == anchor_;
    }

    std::string_view anchor_;
    std::size_t rarest_;
};

}  // namespace

std::int64_t record_file::after(const extent& record) const {
    return record.end < file_.size() ? record.end + 1 : record.end;
}

record_file::extent record_file::record_at(std::int64_t begin) {
    for (std::int64_t at = begin;;) {
        std::string_view bytes = file_.from(at, 1);
        std::size_t newline = bytes.find('\n');
        if (newline == npos && at == begin) {
            // It goes beyond the window: let the window begin with it.
            bytes = file_.from(at, text_file::window_size);
            newline = bytes.find('\n');
        }
        if (newline != npos) return {begin, at + static_cast<std::int64_t>(newline)};
        if (bytes.empty()) return {begin, at};
        at += static_cast<std::int64_t>(bytes.size());
    }
}

record_file::extent record_file::record_before(std::int64_t end) {
    std::string_view bytes = file_.before(end, 1);
    if (bytes.empty()) return {0, 0};
    if (bytes.back() == '\n') {
        --end;
        bytes.remove_suffix(1);
    }
    for (std::int64_t at = end;;) {
        std::size_t newline = bytes.rfind('\n');
        if (newline == npos && at == end) {
            // It goes beyond the window: let the window end with it.
            bytes = file_.before(end, text_file::window_size);
            newline = bytes.rfind('\n');
        }
        at -= static_cast<std::int64_t>(bytes.size());
        if (newline != npos) return {at + static_cast<std::int64_t>(newline) + 1, end};
        if (at == 0) return {0, end};
        bytes = file_.before(at, 1);
    }
}

std::string_view record_file::head(const extent& record, std::size_t columns) {
    const auto length = static_cast<std::size_t>(record.end - record.begin);
    const std::size_t taken = std::min({length, columns, text_file::window_size});
    std::string_view text = file_.from(record.begin, taken).substr(0, taken);
    const bool before_newline = taken == length && record.end < file_.size();
    if (before_newline && !text.empty() && text.back() == '\r') text.remove_suffix(1);
    return text;
}

void record_file::stop_at(const extent& record, text_span line) {
    last_ = record.begin;
    next_ = after(record);
    past_end_ = false;
    assign_text(line, head(record, line.size()));
}

bool record_file::accepts(const line_test& test, const extent& record) {
    return test.accepts(head(record, test.width()));
}

void record_file::go_to(std::int64_t position) {
    next_ = last_ = position;
    past_end_ = false;
}

void record_file::mark_end() {
    next_ = file_.size();
    past_end_ = true;
}

bool record_file::read(text_span line) {
    if (past_end_ || next_ >= file_.size()) {
        mark_end();
        return false;
    }
    stop_at(record_at(next_), line);
    return true;
}

void record_file::step_back() {
    if (past_end_) {
        past_end_ = false;
    } else {
        next_ = record_before(next_).begin;
    }
}

void record_file::rewind() {
    next_ = 0;
    past_end_ = false;
}

void record_file::go_to_end() {
    next_ = file_.size();
    past_end_ = false;
}

void record_file::finish_record() {
    next_ = after(record_at(next_));
}

bool record_file::find_forward(const line_test& test, text_span line, std::int64_t most) {
    if (past_end_) return false;
    const anchor_finder anchor(most == no_limit ? test.anchor() : std::string_view{});
    const std::int64_t start = next_;
    for (; most > 0; --most) {
        if (!anchor.empty()) {
            // On to the record with the next anchor in the window, or over all whole records of
            // the window that follow.
            const std::string_view bytes = file_.from(next_, 1);
            const std::size_t hit = anchor.first_in(bytes);
            const std::size_t newline = bytes.substr(0, hit).rfind('\n');
            if (newline != npos) next_ += static_cast<std::int64_t>(newline) + 1;
        }
        if (next_ >= file_.size()) {
            past_end_ = true;
            break;
        }
        const extent record = record_at(next_);
        if (accepts(test, record)) {
            stop_at(record, line);
            return true;
        }
        next_ = after(record);
    }
    if (next_ != start) {
        const extent record = record_before(next_);
        last_ = record.begin;
        assign_text(line, head(record, line.size()));
    }
    return false;
}

/// Finds the last record accepted among those that end before `end`.
bool record_file::search_up(const line_test& test, std::int64_t end, extent& found) {
    const anchor_finder anchor(test.anchor());
    while (end > 0) {
        if (!anchor.empty()) {
            // Up to the record with the last anchor in the window, or over all whole records of
            // the window.
            const std::string_view bytes = file_.before(end, 1);
            const std::size_t hit = anchor.last_in(bytes);
            const bool at_start = static_cast<std::int64_t>(bytes.size()) == end;
            if (hit == npos && at_start) return false;
            const std::size_t newline = bytes.find('\n', hit == npos ? 0 : hit);
            if (newline != npos) {
                end -= static_cast<std::int64_t>(bytes.size() - newline) - 1;
            }
        }
        found = record_before(end);
        if (accepts(test, found)) return true;
        end = found.begin;
    }
    return false;
}

bool record_file::find_backward(const line_test& test, text_span line) {
    if (past_end_ || file_.size() == 0) {
        mark_end();
        return false;
    }
    extent record{};
    const bool found = search_up(test, next_ > 0 ? next_ : after(record_at(0)), record);
    stop_at(found ? record : record_at(0), line);
    return found;
}

bool record_file::find_last(const line_test& test, text_span line) {
    extent record{};
    if (search_up(test, file_.size(), record)) {
        stop_at(record, line);
        return true;
    }
    if (file_.size() > 0) stop_at(record_before(file_.size()), line);
    mark_end();
    return false;
}

io_error record_file::error_at_last_record(std::string_view message) {
    return {path(), file_.line_number(last_), message};
}

io_error record_file::error_here(std::string_view message) {
    if (file_.size() == 0) return {path(), 0, std::string(message) + " (the file is empty)"};
    return {path(), file_.line_number(std::min(next_, file_.size() - 1)), message};
}

}  // namespace flib
