#include "sgn/inputs/atom_line.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "flib/io/number.h"
#include "flib/io/stop_run.h"
#include "flib/text/string.h"
#include "flib/util/elements.h"

namespace sgn::inputs {
namespace {

using flib::quoted;

[[noreturn]] void fail(const std::string& message) {
    throw flib::run_error(message);
}

/// Throws unless an atom's first item, "C", "6", "C1", "C-CT--0.25(Iso=13)", names an element.
void judge_element(std::string_view item) {
    const std::string_view label = item.substr(0, item.find_first_of("-("));
    const std::string shown = quoted(item);
    std::int32_t number = 0;
    if (flib::parse_integer(label, number) == flib::number_error::none) {
        if (number < 1 || number > 118) fail(shown + " is not an atomic number");
        return;
    }
    const auto letters = static_cast<std::size_t>(
        std::ranges::find_if_not(label, flib::is_ascii_letter) - label.begin());
    const std::string symbol = flib::strlowcase(label.substr(0, letters));
    const std::string type = flib::strlowcase(item.substr(label.size()));
    if (symbol == "tv") fail("a translation vector: periodic systems cannot be treated");
    if (symbol == "bq" || type.starts_with("-bq")) fail(shown + " is a ghost atom: leave it out");
    if (symbol == "x" || symbol == "xx") fail(shown + " is a dummy atom: leave it out");
    if (flib::element_number(symbol.substr(0, 2)) == 0 &&
        flib::element_number(symbol.substr(0, 1)) == 0) {
        fail("expected an atom, but " + shown + " names no element");
    }
}

coordinate parse_coordinate(std::string_view item, std::string_view line) {
    coordinate result{{}, static_cast<std::size_t>(item.data() - line.data()), item.size()};
    const decimal_error error = parse_decimal(item, result.value);
    if (error == decimal_error::too_long) {
        fail("the coordinate " + quoted(item) + " has more than 18 digits");
    }
    if (error != decimal_error::none) {
        fail("expected a coordinate, not " + quoted(item) +
             "; variables and Z-matrices cannot be treated, give Cartesian coordinates");
    }
    return result;
}

}  // namespace

std::vector<std::string_view> items_of(std::string_view line) {
    std::vector<std::string_view> items;
    constexpr std::string_view separators = " \t,/";
    for (std::size_t begin = 0;;) {
        begin = line.find_first_not_of(separators, begin);
        if (begin == std::string_view::npos) return items;
        std::size_t end = begin;
        for (int depth = 0; end < line.size(); ++end) {
            if (line[end] == '(') ++depth;
            if (line[end] == ')') --depth;
            if (depth <= 0 && separators.find(line[end]) != std::string_view::npos) break;
        }
        items.push_back(line.substr(begin, end - begin));
        begin = end;
    }
}

atom parse_atom(std::string_view line, bool oniom) {
    const std::vector<std::string_view> items = items_of(line);
    if (items.empty()) fail("expected an atom");
    judge_element(items[0]);
    // A fourth number in front of the coordinates is the code for frozen atoms.
    decimal number;
    const auto is_number = [&](std::size_t i) {
        return i < items.size() && parse_decimal(items[i], number) != decimal_error::not_a_number;
    };
    std::size_t first = 1;
    if (is_number(1) && is_number(2) && is_number(3) && is_number(4)) {
        std::int32_t code = 0;
        if (flib::parse_integer(items[1], code) != flib::number_error::none || code > 0) {
            fail(
                "four numbers, of which the first is no code for frozen atoms (0 or -1); "
                "Z-matrices cannot be treated, give Cartesian coordinates");
        }
        first = 2;
    }
    if (items.size() < first + 3) {
        fail(
            "expected three coordinates; Z-matrices cannot be treated, give Cartesian "
            "coordinates");
    }
    atom result;
    for (std::size_t k = 0; k < 3; ++k) result.x[k] = parse_coordinate(items[first + k], line);
    const std::size_t after = first + 3;
    if (!oniom) {
        if (items.size() > after) {
            fail(quoted(items[after]) + " stands behind the coordinates");
        }
        return result;
    }
    const std::string layer = items.size() > after ? flib::strlowcase(items[after]) : "";
    for (const std::string_view word : {"high", "medium", "low"}) {
        if (!layer.empty() && word.starts_with(layer)) {
            result.layer = static_cast<char>(word.front() - 'a' + 'A');
        }
    }
    if (result.layer == ' ')
        fail("expected the layer of the atom, H, M or L, behind its coordinates");
    result.link = items.size() > after + 1;
    return result;
}

}  // namespace sgn::inputs
