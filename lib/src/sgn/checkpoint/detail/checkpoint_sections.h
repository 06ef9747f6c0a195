// The sections of a formatted checkpoint: two lines of titles, then per section a line with its
// label in columns 1 to 40 and its type in column 44, and the values of an array below.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "flib/qm_file/fchk_label.h"

namespace sgn {

namespace section_name = flib::fchk_label;

/// A section as it stands in a file.
struct section {
    std::string label;
    char type = ' ';  ///< I, R, C, L or H
    bool array = false;
    std::int64_t count = 0;           ///< values of an array
    std::string head;                 ///< the line with the label
    std::vector<std::string> data{};  ///< the lines below
    std::int64_t line = 0;            ///< the number of the head in its file
};

section integer_section(std::string_view label, std::int32_t value);
section integer_section(std::string_view label, std::span<const std::int32_t> values);
section real_section(std::string_view label, std::span<const double> values);

/// The lines of a section, a newline after each.
std::string text_of(const section& of);

/// A formatted checkpoint, taken apart.
struct sections {
    std::string file;
    std::array<std::string, 2> titles;
    std::vector<section> all;

    /// The section with this label, or null.
    const section* find(std::string_view label) const;

    /// Its values. They throw flib::io_error, which names file, line and section, if there is no
    /// such section (`require`d), it is of another type, has not `count` values, or holds something
    /// else than numbers.
    const section& require(std::string_view label) const;
    std::int32_t integer(std::string_view label) const;
    double real(std::string_view label) const;
    std::vector<std::int32_t> integers(std::string_view label, std::size_t count) const;
    std::vector<double> reals(std::string_view label, std::size_t count) const;
};

/// Takes the checkpoint `file` apart. Throws flib::io_error if it cannot be read, or is no whole
/// formatted checkpoint.
sections read_sections(const std::string& file);

}  // namespace sgn
