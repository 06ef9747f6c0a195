// Symmetric matrices as files hold them.
#pragma once

#include <vector>

#include "sgn/set/table.h"

namespace sgn {

/// The lower triangle of a symmetric matrix with its diagonal, row by row.
inline std::vector<double> lower_triangle(const table& of) {
    std::vector<double> result;
    for (std::size_t i = 0; i < of.rows; ++i) {
        const auto row = of.row(i).first(i + 1);
        result.insert(result.end(), row.begin(), row.end());
    }
    return result;
}

}  // namespace sgn
