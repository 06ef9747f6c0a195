// How much of what is left of sums their errors explain: rounding, noise, and the size of the step.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace sgn {

/// The variance of a sum: what the rounding of the values makes it, and the size of the steps.
struct residue_variance {
    double rounding = 0;
    double step = 0;
};

/// By how much noise (standard deviation, au) makes the variance by rounding to so many decimals
/// larger.
double noise_factor(double noise, int decimals);

/// What explains residues.
struct explanation {
    double noise = 1;  ///< factor of the variances by rounding: rounding and noise together
    double step = 1;   ///< factor of those by the size of the steps
};

/// Residues are Gaussian with variance (noise x rounding + step x size of the steps), and the two
/// factors are not known but for their bounds: jobs that converged less than their digits promise
/// add noise, which goes into every sum as rounding does; third derivatives may be larger than they
/// usually are.
class residue_errors {
  public:
    residue_errors(std::vector<residue_variance> variances, double largest_noise_factor);

    /// -2 log(likelihood) less a constant of residues that are as many as the variances, with the
    /// best of some explanations.
    double cost(std::span<const double> residues) const;

    /// The best explanation of all. What chance explains needs no other: 1 and 1 then.
    explanation explain(std::span<const double> residues) const;

  private:
    struct attempt {
        explanation by;
        std::vector<double> weights;  // 1 / variance
        double logarithms = 0;        // their sum over the variances
    };
    attempt with(const explanation& by) const;

    std::vector<residue_variance> variances_;
    std::vector<attempt> attempts_;  // the first without noise and with steps as they usually are
};

/// What the errors of the steps are as a part of those estimated, more or less, as the residues
/// tell that `by` explains.
double step_scale_of(std::span<const residue_variance> variances, std::span<const double> residues,
                     const explanation& by);

}  // namespace sgn
