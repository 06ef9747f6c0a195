#include "flib/io/stop_run.h"

#include <cstring>
#include <utility>

#include "flib/io/fixed_field.h"
#include "flib/text/detail/utf8.h"
#include "flib/text/fixed_text.h"

namespace flib {
namespace {

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        const std::string_view words = trim(line);
        if (!text.empty() && !words.empty()) text += ' ';
        text += words;
    }
    return text;
}

}  // namespace

ending::ending(int status, std::vector<std::string> lines, std::string in_one_line,
               std::string hint, details more)
    : how_(std::make_shared<const contents>(contents{
          status, std::move(lines), std::move(in_one_line), std::move(hint), std::move(more)})) {}

stop_run::stop_run(int status, const std::vector<std::string>& lines, const std::string& hint)
    : ending(status, lines, joined(lines) + (hint.empty() ? "" : ": " + hint), hint, {}) {}

stop_run::stop_run(int status, const std::vector<std::string>& lines, details more)
    : ending(status, lines, joined(lines), {}, std::move(more)) {}

missing_keyword::missing_keyword(std::string_view keyword)
    : stop_run(exit_status::stopped,
               {"Can not find keyword " + std::string(trim_right(keyword)) + " stop!"},
               details{.keyword = std::string(trim_right(keyword))}) {}

namespace {

std::string at_line(std::int64_t line, std::string_view reason) {
    return (line > 0 ? "line " + std::to_string(line) + ": " : "").append(reason);
}

}  // namespace

io_error::io_error(std::string_view file, std::int64_t line, std::string_view reason)
    : run_error((file.empty() ? "''" : printable(file)) + ": " + at_line(line, reason),
                {.file = std::string(file), .line = line, .reason = std::string(reason)}) {}

std::string io_error::without_file() const {
    return at_line(line(), reason());
}

namespace {

/// Whether the two-byte sequence at the start of `text` is one of U+0080 to U+009F.
bool is_control_character(std::string_view text) {
    return text[0] == '\xC2' && static_cast<unsigned char>(text[1]) < 0xA0;
}

}  // namespace

std::string printable(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        const char c = text.front();
        std::size_t taken = 1;
        if (c >= ' ' && c <= '~') {
            shown += c;
        } else if (c == '\n') {
            shown += "\\n";
        } else if (c == '\t') {
            shown += "\\t";
        } else if (const std::size_t length = utf8_length(text);
                   length > 1 && !is_control_character(text)) {
            shown += text.substr(0, length);
            taken = length;
        } else {
            shown.append("\\x").append(hexadecimal(static_cast<unsigned char>(c), 2));
        }
        text.remove_prefix(taken);
    }
    return shown;
}

std::string quoted(std::string_view text) {
    return std::string("'").append(printable(text)).append("'");
}

std::string errno_text(int error_number) {
    // Nobody calls setlocale(), so this is always the C locale's text.
    return std::strerror(error_number);
}

void miss_keyword(std::string_view keyword) {
    throw missing_keyword(keyword);
}

void stop_not_implemented() {
    throw stop_run{exit_status::stopped, {"  The method has not been implemented, stop!"}};
}

}  // namespace flib
