#include "sgn/checkpoint/detail/checkpoint_sections.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "flib/io/fixed_field.h"
#include "flib/io/number.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/text/fixed_text.h"

namespace sgn {
namespace {

constexpr std::size_t label_width = 40;
constexpr std::size_t type_column = 43;  // from 0
constexpr std::size_t mark_column = 47;
constexpr std::size_t value_column = 49;
constexpr int integer_width = 12;
constexpr int real_width = 16;
constexpr int scalar_real_width = 22;

/// Values in a line of an array.
std::optional<std::int64_t> values_per_line(char type) {
    switch (type) {
        case 'I':
            return 6;
        case 'R':
        case 'C':
            return 5;
        case 'L':
            return 72;
        case 'H':
            return 9;
        default:
            return std::nullopt;
    }
}

std::string head_of(std::string_view label, char type, std::string_view mark) {
    std::string text(label);
    text.resize(type_column, ' ');
    text += type;
    text.resize(mark_column, ' ');
    return text.append(mark);
}

template <class Value, class Field>
section array_section(std::string_view label, char type, std::span<const Value> values,
                      Field field) {
    section result{std::string(label), type, true, static_cast<std::int64_t>(values.size()), {}};
    result.head = head_of(label, type, "N=") + flib::integer_field(result.count, integer_width);
    const auto in_line = static_cast<std::size_t>(*values_per_line(type));
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i % in_line == 0) result.data.emplace_back();
        result.data.back() += field(values[i]);
    }
    return result;
}

/// The number in columns of a line, whose end may be cut off.
template <class Value>
bool parse(std::string_view line, std::size_t from, std::size_t width, Value& value) {
    if (from >= line.size()) return false;
    const std::string_view field = flib::trim(line.substr(from, width));
    if constexpr (std::is_same_v<Value, double>) {
        return flib::parse_real(field, value) == flib::number_error::none && std::isfinite(value);
    } else {
        return flib::parse_integer(field, value) == flib::number_error::none;
    }
}

/// The head of a section, or nothing if the line is none.
std::optional<section> parse_head(std::string_view line) {
    if (line.size() <= type_column) return std::nullopt;
    section result;
    result.label = std::string(flib::trim(line.substr(0, label_width)));
    result.type = line[type_column];
    result.head = std::string(line);
    if (result.label.empty() || line[0] == ' ' || !values_per_line(result.type)) {
        return std::nullopt;
    }
    result.array = line.size() > mark_column && line.substr(mark_column, 2) == "N=";
    if (result.array) {
        std::int32_t count = 0;
        if (!parse(line, value_column, integer_width, count) || count < 0) return std::nullopt;
        result.count = count;
    }
    return result;
}

/// Reads the lines of a file one by one.
class lines_of {
  public:
    explicit lines_of(const std::string& file) : file_(file), fid_(file) {}

    bool next(std::string& line) {
        // No line of a checkpoint is longer than 81 characters.
        flib::fixed_text<256> buffer;
        if (!flib::read_record(fid_, buffer)) return false;
        ++number_;
        if (buffer.padded().back() != ' ') fail("no line of a formatted checkpoint is so long");
        line = std::string(buffer.trimmed());
        return true;
    }
    std::int64_t number() const { return number_; }
    [[noreturn]] void fail(std::string_view message) const {
        throw flib::io_error(file_, number_, message);
    }

  private:
    const std::string& file_;
    flib::input_unit fid_;
    std::int64_t number_ = 0;
};

template <class Value>
std::vector<Value> values_of(const sections& from, const section& of, char type, int width,
                             std::size_t count) {
    const auto fail = [&](std::int64_t line, const std::string& message) {
        throw flib::io_error(from.file, line, "'" + of.label + "' " + message);
    };
    if (of.type != type || !of.array) {
        fail(of.line, std::string("is no array of ") + (type == 'I' ? "integers" : "reals"));
    }
    if (static_cast<std::size_t>(of.count) != count) {
        fail(of.line,
             "has " + std::to_string(of.count) + " values instead of " + std::to_string(count));
    }
    const auto in_line = static_cast<std::size_t>(*values_per_line(type));
    std::vector<Value> values(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = i % in_line * static_cast<std::size_t>(width);
        if (!parse(of.data[i / in_line], at, static_cast<std::size_t>(width), values[i])) {
            fail(of.line + 1 + static_cast<std::int64_t>(i / in_line),
                 "has no number as its value " + std::to_string(i + 1));
        }
    }
    return values;
}

}  // namespace

section integer_section(std::string_view label, std::int32_t value) {
    return {std::string(label), 'I', false, 0,
            head_of(label, 'I', "  ") + flib::integer_field(value, integer_width)};
}

section integer_section(std::string_view label, std::span<const std::int32_t> values) {
    return array_section(label, 'I', values, [](std::int32_t value) {
        return flib::integer_field(value, integer_width);
    });
}

section real_section(std::string_view label, std::span<const double> values) {
    return array_section(label, 'R', values, [](double value) {
        // An exponent of three digits would leave no blank before it.
        constexpr double smallest = 1e-99;
        return flib::scientific_field(std::abs(value) < smallest ? 0 : value, real_width, 8);
    });
}

std::string text_of(const section& of) {
    std::string text = of.head + '\n';
    for (const std::string& line : of.data) text += line + '\n';
    return text;
}

const section* sections::find(std::string_view label) const {
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const section& each) { return each.label == label; });
    return found == all.end() ? nullptr : &*found;
}

const section& sections::require(std::string_view label) const {
    if (const section* found = find(label)) return *found;
    throw flib::io_error(file, 0, "holds no '" + std::string(label) + "'");
}

std::int32_t sections::integer(std::string_view label) const {
    const section& of = require(label);
    std::int32_t value = 0;
    if (of.type != 'I' || of.array || !parse(of.head, value_column, integer_width, value)) {
        throw flib::io_error(file, of.line, "'" + of.label + "' is no integer");
    }
    return value;
}

double sections::real(std::string_view label) const {
    const section& of = require(label);
    double value = 0;
    if (of.type != 'R' || of.array || !parse(of.head, value_column, scalar_real_width, value)) {
        throw flib::io_error(file, of.line, "'" + of.label + "' is no real number");
    }
    return value;
}

std::vector<std::int32_t> sections::integers(std::string_view label, std::size_t count) const {
    return values_of<std::int32_t>(*this, require(label), 'I', integer_width, count);
}

std::vector<double> sections::reals(std::string_view label, std::size_t count) const {
    return values_of<double>(*this, require(label), 'R', real_width, count);
}

sections read_sections(const std::string& file) {
    sections result;
    result.file = file;
    lines_of lines(file);
    for (std::string& title : result.titles) {
        if (!lines.next(title)) lines.fail("is no formatted checkpoint: it ends in its titles");
    }
    std::string line;
    while (lines.next(line)) {
        std::optional<section> head = parse_head(line);
        if (!head) {
            if (line.empty()) continue;
            lines.fail("is no formatted checkpoint: expected the label of a section");
        }
        head->line = lines.number();
        const std::int64_t in_line = *values_per_line(head->type);
        for (std::int64_t left = head->count; left > 0; left -= in_line) {
            if (!lines.next(line)) {
                lines.fail("the file ends within the section '" + head->label + "'");
            }
            head->data.push_back(line);
        }
        result.all.push_back(std::move(*head));
    }
    return result;
}

}  // namespace sgn
