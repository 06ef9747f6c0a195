// Tables for people.
#pragma once

#include <string>
#include <vector>

#include "common/terminal.h"

namespace tools {

struct table_column {
    std::string heading;
    bool right = false;  ///< aligned to the right
    /// Where a terminal is too narrow, columns are left out, that of the highest number first;
    /// those of number 0 stay.
    int expendable = 0;
};

struct table_cell {
    std::string text;
    paint colour = paint::none;
};

/// Rows have a cell per column. The last column holds words, which may be wrapped.
struct table {
    std::vector<table_column> columns;
    std::vector<std::vector<table_cell>> rows;
};

/// The table, headings first. On a terminal no line is wider than that: columns are left out, the
/// words of the last one wrapped, and, if even that is not enough, they stand below the row.
std::string table_text(const table& what, const terminal& on);

}  // namespace tools
