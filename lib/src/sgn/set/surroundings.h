// What is around the atoms of a set and stays in its place when they are moved.
#pragma once

#include <string>
#include <vector>

namespace sgn {

/// Of the job that the result file `name` is of, as the files beside it tell: the route in the log
/// ("electronic embedding", "point charges", "an outer field"), the checkpoint ("point charges",
/// "an outer field", "link atoms"). With any of them the sum rules need not hold. Empty where there
/// is none, and where neither file is there or can be read.
std::vector<std::string> surroundings_beside(const std::string& name);

}  // namespace sgn
