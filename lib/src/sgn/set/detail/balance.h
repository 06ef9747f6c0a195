// Choices, one of every list, whose vectors add up to nearly nothing.
#pragma once

#include <Eigen/Core>
#include <cstddef>
#include <optional>
#include <vector>

namespace sgn {

struct option {
    double cost = 0;
    Eigen::VectorXd share;
};
using options = std::vector<option>;

/// One of every list, by their places.
struct choices {
    std::vector<std::size_t> of;
    double cost = 0;  ///< the sum of theirs, and the square of the sum of their vectors and `base`
};

/// The logarithm (of 2) of how many choices there are.
double log2_of_choices(const std::vector<options>& lists);

/// The logarithm (of 2) of how many choices are expected to add up to `radius` or less along every
/// axis by chance.
double log2_of_chance(const std::vector<options>& lists, double radius);

/// The choices that cost no more than `limit`, the cheapest first, at most `most` of them. All of
/// them are tried, half of the lists at a time; nothing if they are too many for that.
std::optional<std::vector<choices>> balance(const std::vector<options>& lists,
                                            const Eigen::VectorXd& base, double limit,
                                            std::size_t most);

}  // namespace sgn
