// The element of largest magnitude of a matrix that is seen in parts.
#pragma once

#include <cstdint>

#include "flib/util/math.h"
#include "flib/util/matrix.h"

namespace flib {

/// The element that mat_abs_maxval_d() chooses, of the elements seen so far.
struct extremum {
    element_location at{0, 0};
    double value = 0;

    /// Looks at columns `first` and up of the matrix.
    void look_at(matrix_view<const double> columns, std::int32_t first);
    /// Looks at one element.
    void look_at(double element, const element_location& location);
};

}  // namespace flib
