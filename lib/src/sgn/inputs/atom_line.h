// Lines of the molecule section of a Gaussian input.
//
//     O                 0.000000   0.000000   0.118000
//     C-CT--0.25(PDBName=CA,ResName=ALA)  -1  1.5  0.0  0.2  L  H-HC  3
//     8,0,0.0,0.0,0.118
#pragma once

#include <string_view>
#include <vector>

#include "sgn/inputs/input.h"

namespace sgn::inputs {

/// What stands between blanks, tabs, commas and slashes; parentheses are not parted.
std::vector<std::string_view> items_of(std::string_view line);

/// The atom of `line`, with places counted from its begin: an element, a code for frozen atoms (0
/// or negative) or none, three coordinates, and in an ONIOM job the layer and perhaps a link atom.
/// Throws flib::run_error if it is none.
atom parse_atom(std::string_view line, bool oniom);

}  // namespace sgn::inputs
