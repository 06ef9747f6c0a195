#include "flib/io/fixed_field.h"

#include <array>
#include <charconv>

namespace flib {
namespace {

std::string field(std::string_view text, int width) {
    if (width == 0) return std::string(text);
    const auto columns = static_cast<std::size_t>(width);
    if (text.size() > columns) return std::string(columns, '*');
    return std::string(columns - text.size(), ' ').append(text);
}

/// Room for the longest fixed-point double with the decimals in use here.
using number_text = std::array<char, 400>;

std::string_view converted(number_text& text, double value, std::chars_format format,
                           int decimals) {
    const auto result =
        std::to_chars(text.data(), text.data() + text.size(), value, format, decimals);
    return {text.data(), static_cast<std::size_t>(result.ptr - text.data())};
}

}  // namespace

std::string text_field(std::string_view text, int width) {
    return field(text, width);
}

std::string integer_field(std::int64_t value, int width) {
    return field(std::to_string(value), width);
}

std::string fixed_field(double value, int width, int decimals) {
    number_text text;
    return field(converted(text, value, std::chars_format::fixed, decimals), width);
}

std::string scientific_field(double value, int width, int decimals) {
    number_text text;
    std::string upper(converted(text, value, std::chars_format::scientific, decimals));
    for (char& c : upper) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return field(upper, width);
}

std::string shortest_real(double value) {
    number_text text;
    const auto written = std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), written.ptr};
}

std::string significant(double value, int digits) {
    number_text text;
    return std::string(converted(text, value, std::chars_format::general, digits));
}

std::string hexadecimal(std::uint64_t value, int digits) {
    constexpr std::string_view all = "0123456789ABCDEF";
    std::string text;
    for (; value != 0 || text.size() < static_cast<std::size_t>(digits); value /= 16) {
        text.insert(text.begin(), all[value % 16]);
    }
    return text;
}

std::string decimal(double value, int decimals) {
    constexpr int widest = 24;
    std::string text = fixed_field(value, widest, decimals);
    text.erase(0, text.find_first_not_of(' '));
    if (text.starts_with('-') && text.find_first_not_of("-0.") == std::string::npos) {
        text.erase(0, 1);
    }
    return text;
}

}  // namespace flib
