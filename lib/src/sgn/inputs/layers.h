// The layers of an ONIOM job as people read them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace sgn::inputs {

/// "3 of 5 atoms in the high layer".
inline std::string high_layer_in_words(std::size_t high, std::size_t all) {
    return std::to_string(high) + " of " + std::to_string(all) + " atoms in the high layer";
}

/// The same with the atoms: "3 of 5 atoms in the high layer: 2 3 4".
inline std::string high_layer_in_words(std::span<const std::int32_t> high, std::size_t all) {
    std::string text = high_layer_in_words(high.size(), all).append(":");
    for (const std::int32_t atom : high) text.append(" ").append(std::to_string(atom));
    return text;
}

}  // namespace sgn::inputs
