// Which root continues which state.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "sgn/states/overlap.h"

namespace sgn {

/// For each row the column assigned to it, from 0 on, so that no column is taken twice and the sum
/// of the magnitudes is the largest possible; nullopt for rows that are left over where there are
/// more rows than columns. All rows are equally long; what is not a finite number counts as 0.
std::vector<std::optional<std::size_t>> assign(const overlap_rows& rows);

}  // namespace sgn
