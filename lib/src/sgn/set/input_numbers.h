// The numbers that atoms have in the input of their job.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "sgn/set/displaced_set.h"

namespace sgn {

/// Those of the `count` atoms of the result file `name`, as the log or else the checkpoint beside
/// it tells: of an ONIOM job the high layer. Empty where they are the places in the result file, or
/// where nothing tells.
std::vector<std::int32_t> input_numbers_beside(const std::string& name, std::size_t count);

/// "4 O (2 of the high layer)" for the second atom of a result file, the fourth of the input; "2 O"
/// where these are the same.
std::string name_of(const atom& of, std::size_t place);

/// The first part of that: its number in the input or, where that is not told, its place from 1 on.
std::int32_t number_of(const atom& of, std::size_t place);

/// The last part of it, " (2 of the high layer)", or nothing.
std::string place_text(const atom& of, std::size_t place);

}  // namespace sgn
