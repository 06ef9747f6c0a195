// How many decimals printed values have.
#pragma once

#include <cstddef>
#include <set>

namespace sgn {

/// Sees in values, as a result file gives them, with how many decimals they were printed once.
class decimals_seen {
  public:
    /// At least `usual` decimals are assumed as long as there are too few values to tell.
    explicit decimals_seen(int usual) : usual_(usual) {}

    void look_at(double value);
    int decimals() const;

  private:
    int usual_;
    int needed_ = 0;
    std::set<double> magnitudes_;  // some of them
};

/// More are not looked for.
inline constexpr int most_decimals = 10;

/// The standard deviation of what rounding to so many decimals adds.
double rounding_error(int decimals);

}  // namespace sgn
