// Where the atoms of a job are, against the reference.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "sgn/set/geometry.h"

namespace sgn {

struct displacement {
    std::vector<vec3> shift;   ///< of every atom, Angstrom
    std::size_t moved = 0;     ///< atoms that moved
    std::size_t farthest = 0;  ///< the one that moved most, from 0
    double distance = 0;       ///< of that one, Angstrom

    /// "none", "1 O +x 0.0100", or "3 atoms, 2 H +y 0.0100" with the farthest, whose name_of() it
    /// is.
    std::string text(const std::string& name) const;
};

/// Of `x` against `reference` (Angstrom). Throws flib::run_error unless they are as many.
displacement displacement_of(std::span<const vec3> x, std::span<const vec3> reference);

/// Whether two displacements of the same atoms are the same, or opposite to each other, as exactly
/// as result files give places. What holds of all that pair or repeat geometries.
bool are_same(const displacement& a, const displacement& b);
bool are_opposite(const displacement& a, const displacement& b);

}  // namespace sgn
