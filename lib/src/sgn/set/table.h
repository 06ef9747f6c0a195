// Numbers in rows and columns, as they cross from this room to others.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace sgn {

/// Numbers in rows and columns, indices from 0.
struct table {
    std::size_t rows = 0;
    std::size_t columns = 0;
    std::vector<double> values;  ///< row by row

    table() = default;
    /// A table of zeros.
    table(std::size_t row_count, std::size_t column_count)
        : rows(row_count), columns(column_count), values(row_count * column_count) {}

    double& operator()(std::size_t row, std::size_t column) {
        return values[row * columns + column];
    }
    double operator()(std::size_t row, std::size_t column) const {
        return values[row * columns + column];
    }
    std::span<const double> row(std::size_t index) const {
        return std::span(values).subspan(index * columns, columns);
    }
};

}  // namespace sgn
