// Which of the files of a set is its reference.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

#include "sgn/set/displaced_set.h"

namespace sgn {

/// The file, counted from 0, that fits as the reference where the one given does not: the mean of
/// all geometries is nearer to it, and around it more than half of the other files lie in pairs of
/// opposite displacements, around the one given fewer. nullopt if there is none, and if something
/// is wrong with the files.
std::optional<std::size_t> better_reference(const result_file& reference,
                                            std::span<const result_file> files);

/// The same in words, which name both files; empty if there is none.
std::string better_reference_text(const result_file& reference, std::span<const result_file> files);

}  // namespace sgn
