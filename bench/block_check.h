// Checks of the reader of numbers in fixed columns.
#pragma once

#include <cstdint>

/// Reads `count` random and hard numbers of each shape of lines, with vectors and without, and
/// every change of one character of a block; prints what was done. False if any number has other
/// bits than std::from_chars gives, or a change is judged wrongly.
bool check_blocks(std::int64_t count);
