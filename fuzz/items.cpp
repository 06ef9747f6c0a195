// Free-format items: numbers against an independent conversion, and reads from a file against the
// same reads from a text and from standard input.
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <optional>
#include <vector>

#include "flib/io/detail/columns.h"
#include "flib/io/detail/text_file.h"
#include "flib/io/free_format.h"
#include "flib/io/number.h"
#include "flib/io/unit.h"
#include "support.h"

namespace {

using flib::number_error;

/// The real that the whole of `item` is, in the C library's opinion.
number_error convert(std::string_view item, double& value) {
    std::size_t at = item.find_first_not_of("0123456789.", item.find_first_of("+-") == 0 ? 1 : 0);
    std::string normal(item);
    if (at != std::string::npos && at > 0 && normal.find_first_of("0123456789") < at) {
        if (std::strchr("eEdDqQ", normal[at]) != nullptr && normal[at] != '\0') {
            normal[at] = 'e';
        } else if (normal[at] == '+' || normal[at] == '-') {
            normal.insert(at, "e");
        }
    }
    // What strtod() takes beyond decimal numbers, and blanks in front.
    if (normal.find_first_of(std::string_view("xXpP( \t\n\v\f\r\0", 12)) != std::string::npos) {
        return number_error::not_a_number;
    }
    char* end = nullptr;
    errno = 0;
    const double parsed = std::strtod(normal.c_str(), &end);
    if (normal.empty() || end != normal.c_str() + normal.size()) return number_error::not_a_number;
    if (errno == ERANGE && std::isinf(parsed)) return number_error::too_large;
    value = parsed;
    return number_error::none;
}

number_error convert(std::string_view item, std::int32_t& value) {
    const std::string_view digits = item.substr(item.find_first_of("+-") == 0 ? 1 : 0);
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string_view::npos) {
        return number_error::not_a_number;
    }
    errno = 0;
    const long long parsed = std::strtoll(std::string(item).c_str(), nullptr, 10);
    if (errno == ERANGE || parsed < INT32_MIN || parsed > INT32_MAX) return number_error::too_large;
    value = static_cast<std::int32_t>(parsed);
    return number_error::none;
}

bool same(double a, double b) {
    if (std::isnan(a) && std::isnan(b)) return std::signbit(a) == std::signbit(b);
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

void check_numbers(std::string_view item) {
    double real = 4.5;
    double expected_real = 4.5;
    const number_error error = flib::parse_real(item, real);
    fuzz::require(error == convert(item, expected_real), "a real is judged differently");
    fuzz::require(same(real, expected_real), "a real is converted differently");

    double usual = 0;
    const char* const end = flib::scan_usual_real(item.data(), item.data() + item.size(), usual);
    if (end == item.data() + item.size()) {
        fuzz::require(error == number_error::none && same(usual, real),
                      "the short way differs from the long one");
    }

    std::int32_t integer = 45;
    std::int32_t expected_integer = 45;
    fuzz::require(flib::parse_integer(item, integer) == convert(item, expected_integer),
                  "an integer is judged differently");
    fuzz::require(integer == expected_integer, "an integer is converted differently");
}

/// What a sequence of takes gives, and how it ends.
struct taken {
    std::vector<std::string> texts;
    std::vector<std::int32_t> integers;
    std::vector<double> reals;
    fuzz::ending end = fuzz::ending::returned;
    std::string message;
};

/// Takes items of the kinds that the bits of `kinds` choose, up to `most`.
template <class Source>
taken take(const Source& source, std::uint32_t kinds, int most) {
    taken result;
    result.end = fuzz::ending_of([&] {
        try {
            flib::item_reader reader(source);
            for (int i = 0; i < most; ++i) {
                const std::uint32_t kind = kinds >> (2 * (i % 16)) & 3U;
                if (kind == 0) {
                    flib::fixed_text<8> text;
                    reader.take(text);
                    result.texts.emplace_back(text.padded());
                } else if (kind == 1) {
                    std::int32_t value = 0;
                    reader.take(value);
                    result.integers.push_back(value);
                } else if (kind == 2) {
                    double value = 0;
                    reader.take(value);
                    result.reals.push_back(value);
                } else {
                    reader.take(flib::discard{1});
                }
            }
            reader.finish();
        } catch (const flib::io_error& error) {
            // From the message on: the place and the file's end are named differently.
            const std::string& reason = error.reason();
            const std::size_t quote = reason.find('\'');
            result.message = quote == std::string::npos ? "" : reason.substr(quote);
            throw;
        }
    });
    return result;
}

void compare(const taken& a, const taken& b) {
    fuzz::require(a.end == b.end && a.texts == b.texts && a.integers == b.integers &&
                      a.reals.size() == b.reals.size() && a.message == b.message,
                  "a file's or the input's items differ from the text's");
    for (std::size_t i = 0; i < a.reals.size(); ++i) {
        fuzz::require(same(a.reals[i], b.reals[i]),
                      "a file's or the input's real differs from the text's");
    }
}

void check_sequence(std::string_view text, std::uint32_t kinds, int most) {
    static fuzz::memory_file plain;
    // The window's end falls among the items; such a file is slow, so it is seldom looked at.
    static fuzz::memory_file shifted(std::string(flib::text_file::window_size - 20, ' ') + "\n");
    const taken expected = take(flib::held_text{"text", 1, text}, kinds, most);
    for (fuzz::memory_file* const file : {&plain, &shifted}) {
        if (file == &shifted && (most != 32 || text.size() % 16 != 0)) continue;
        file->fill(text);
        const flib::input_unit fid(file->path());
        compare(take(static_cast<std::int32_t>(fid), kinds, most), expected);
    }
    // Standard input is read byte by byte.
    static const bool redirected = dup2(plain.descriptor(), STDIN_FILENO) == STDIN_FILENO;
    fuzz::require(redirected && lseek(STDIN_FILENO, 0, SEEK_SET) == 0, "no standard input");
    compare(take(flib::standard_input{}, kinds, most), expected);
}

/// The reals of a text as one array: their bytes, and the message if there is one.
template <class Source>
std::string take_array(const Source& source, std::size_t count, bool with_vectors) {
    flib::allow_scan_columns(with_vectors);
    std::vector<double> values(count);
    std::string message;
    fuzz::ending_of([&] {
        try {
            flib::item_reader reader(source);
            reader.take(std::span(values));
        } catch (const flib::io_error& error) {
            message = error.what();
            throw;
        }
    });
    flib::allow_scan_columns(true);
    return message.append(reinterpret_cast<const char*>(values.data()), count * sizeof(double));
}

/// Numbers in columns, many at a time, against the same one by one.
void check_array(std::string_view text, std::size_t more, bool in_file) {
    // Vectors take four lines at once, behind the end of another.
    if (std::count(text.begin(), text.end(), '\n') < 5) return;
    const auto ends = [](char c) { return c == ' ' || c == '\n' || c == ','; };
    std::size_t count = more;
    for (std::size_t i = 0; i < text.size(); ++i) {
        count += !ends(text[i]) && (i + 1 == text.size() || ends(text[i + 1])) ? 1 : 0;
    }
    const flib::held_text held{"text", 1, text};
    const std::string taken_one_by_one = take_array(held, count, false);
    fuzz::require(take_array(held, count, true) == taken_one_by_one,
                  "numbers in columns differ from single ones");
    std::string message;
    fuzz::ending_of([&] {
        try {
            flib::item_reader reader(held);
            reader.begin_reals(count);
            reader.check_part(count);
        } catch (const flib::io_error& error) {
            message = error.what();
            throw;
        }
    });
    fuzz::require(taken_one_by_one.starts_with(message) &&
                      taken_one_by_one.size() == message.size() + count * sizeof(double),
                  "numbers that are only looked at are judged differently");
    if (!in_file) return;
    // The window's end falls among the numbers.
    static fuzz::memory_file file(std::string(flib::text_file::window_size - 300, ' ') + "\n");
    file.fill(text);
    const auto taken = [&](bool with_vectors) {
        const flib::input_unit fid(file.path());
        return take_array(static_cast<std::int32_t>(fid), count, with_vectors);
    };
    fuzz::require(taken(true) == taken(false), "numbers in a file's columns differ");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 5) return 0;
    std::uint32_t kinds = 0;
    std::memcpy(&kinds, data, sizeof kinds);
    const int most = 1 + data[4] % 32;
    const std::string_view text(reinterpret_cast<const char*>(data) + 5, size - 5);
    check_numbers(text);
    check_numbers(text.substr(0, text.find_first_of(" ,\n")));
    check_array(text, data[0] % 2, data[4] < 16 && text.size() > 400);
    // Files are slow, so most inputs are numbers only.
    if (data[4] < 64) check_sequence(text, kinds, most);
    return 0;
}
