// Whether what was handed in has the shape that its docstring tells. All of these throw
// flib::run_error, which names both counts, if it has not.
#pragma once

#include <cstddef>
#include <string_view>

#include "sgn/set/derivatives.h"
#include "sgn/set/displaced_set.h"
#include "sgn/set/table.h"

namespace sgn {

/// `found` of `what` are `expected` ones: "there are 2 masses instead of 3".
void require_count(std::string_view what, std::size_t found, std::size_t expected);

/// A table with so many rows and columns, and values for all of them.
void require_table(std::string_view what, const table& of, std::size_t rows, std::size_t columns);

/// A reference, and for every job a shift and a force of each atom.
void require_shape(const displaced_set& set);

/// The same of the set, and derivatives that are complete ones of it.
void require_shape(const displaced_set& set, const derivatives& of);

}  // namespace sgn
