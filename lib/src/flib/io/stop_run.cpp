#include "flib/io/stop_run.h"

#include <cstdio>
#include <cstring>

#include "flib/text/fixed_text.h"

namespace flib {
namespace {

/// Length of the well-formed UTF-8 sequence of two or more bytes at the start of `text`, else 0.
std::size_t multibyte_length(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const std::size_t length = byte(0) >= 0xF0 ? 4U : byte(0) >= 0xE0 ? 3U : 2U;
    if (byte(0) < 0xC2 || byte(0) > 0xF4 || text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U) return 0;
    }
    // U+0080 to U+009F are control characters too.
    return byte(0) == 0xC2 && byte(1) < 0xA0 ? 0 : length;
}

}  // namespace

io_error::io_error(std::string_view file, std::int64_t line, std::string_view message)
    : run_error(printable(file) + (line > 0 ? ": line " + std::to_string(line) : "") + ": " +
                std::string(message)) {}

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
        } else if (const std::size_t length = multibyte_length(text); length > 0) {
            shown += text.substr(0, length);
            taken = length;
        } else {
            char escape[5];
            std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned char>(c));
            shown += escape;
        }
        text.remove_prefix(taken);
    }
    return shown;
}

std::string errno_text(int error_number) {
    // Nobody calls setlocale(), so this is always the C locale's text.
    return std::strerror(error_number);
}

void miss_keyword(std::string_view keyword) {
    throw stop_run{exit_status::stopped,
                   {"Can not find keyword " + std::string(trim_right(keyword)) + " stop!"}};
}

void stop_not_implemented() {
    throw stop_run{exit_status::stopped, {"  The method has not been implemented, stop!"}};
}

}  // namespace flib
