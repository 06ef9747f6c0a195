#include "sgn/set/detail/residue_errors.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "sgn/set/decimals.h"
#include "sgn/set/sum_rules.h"

namespace sgn {
namespace {

/// Noise is believed beyond two standard deviations of what chance does, larger errors of the steps
/// only if noise explains much less: where they were measured, sums had always less of them than
/// was estimated.
constexpr double cost_of_noise = 4;
constexpr double cost_of_steps = 12;

/// Steps of the factors that are tried: the logarithms of their ratios.
constexpr double between_factors = 1.4;

/// From 1 to `largest`, as many as that takes.
std::vector<double> factors_to(double largest, double between) {
    const double growth = std::log(std::max(1.0, largest));
    const int steps = static_cast<int>(std::ceil(growth / between));
    std::vector<double> factors{1};
    for (int i = 1; i <= steps; ++i) factors.push_back(std::exp(growth * i / steps));
    return factors;
}

template <class Weights>
double cost_of(std::span<const double> residues, const Weights& weights, double logarithms) {
    double cost = logarithms;
    for (std::size_t i = 0; i < residues.size(); ++i) {
        cost += residues[i] * residues[i] * weights[i];
    }
    return cost;
}

}  // namespace

double noise_factor(double noise, int decimals) {
    return 1 + std::pow(noise / rounding_error(decimals), 2);
}

residue_errors::residue_errors(std::vector<residue_variance> variances, double largest_noise_factor)
    : variances_(std::move(variances)) {
    for (const double noise : factors_to(largest_noise_factor, between_factors)) {
        for (const double step : factors_to(largest_step_scale * largest_step_scale, 1.7)) {
            attempts_.push_back(with({noise, step}));
        }
    }
}

residue_errors::attempt residue_errors::with(const explanation& by) const {
    attempt made{by, {}, 0};
    for (const residue_variance& each : variances_) {
        const double variance = by.noise * each.rounding + by.step * each.step;
        made.weights.push_back(1 / variance);
        made.logarithms += std::log(variance);
    }
    return made;
}

double residue_errors::cost(std::span<const double> residues) const {
    double least = std::numeric_limits<double>::infinity();
    for (const attempt& each : attempts_) {
        least = std::min(least, cost_of(residues, each.weights, each.logarithms));
    }
    return least;
}

explanation residue_errors::explain(std::span<const double> residues) const {
    const auto believed = [&](const attempt& of) {
        double cost = cost_of(residues, of.weights, of.logarithms);
        if (of.by.noise > 1) cost += cost_of_noise;
        if (of.by.step > 1) cost += cost_of_steps;
        return cost;
    };
    const attempt* best = &attempts_.front();
    double least = believed(*best);
    for (const attempt& each : attempts_) {
        const double cost = believed(each);
        if (cost >= least) continue;
        least = cost;
        best = &each;
    }
    // What is not 1 is found more closely, in ever smaller steps to both sides.
    explanation found = best->by;
    const double most_noise = attempts_.back().by.noise;
    const double most_step = attempts_.back().by.step;
    double between = 2 * between_factors;
    constexpr int halvings = 11;
    for (int i = 0; i < halvings; ++i) {
        between /= 2;
        for (double explanation::*factor : {&explanation::noise, &explanation::step}) {
            if (!(found.*factor > 1)) continue;
            const double middle = found.*factor;
            const double largest = factor == &explanation::noise ? most_noise : most_step;
            for (const double side : {-between, between}) {
                explanation next = found;
                next.*factor = std::clamp(middle * std::exp(side), 1.0, largest);
                const double cost = believed(with(next));
                if (cost >= least) continue;
                least = cost;
                found = next;
            }
        }
    }
    return found;
}

double step_scale_of(std::span<const residue_variance> variances, std::span<const double> residues,
                     const explanation& by) {
    // Errors of the steps are neither Gaussian nor independent: all residues tell what so many of
    // them would if they were.
    constexpr double weight = 0.2;
    // Molecules differ by a factor of two about this.
    constexpr double usual = 0.6;
    constexpr double spread = 0.7;
    const double smallest = std::log(0.02);
    const double largest = std::log(largest_step_scale);
    constexpr int attempts = 60;
    std::vector<double> scales;
    std::vector<double> costs;
    for (int i = 0; i <= attempts; ++i) {
        const double logarithm = smallest + (largest - smallest) * i / attempts;
        const double scale = std::exp(logarithm);
        double cost = 0;
        for (std::size_t r = 0; r < residues.size(); ++r) {
            const double variance =
                by.noise * variances[r].rounding + scale * scale * variances[r].step;
            cost += residues[r] * residues[r] / variance + std::log(variance);
        }
        scales.push_back(scale);
        costs.push_back(weight * cost + std::pow((logarithm - std::log(usual)) / spread, 2));
    }
    // The mean of its square over all that is likely.
    const double least = *std::ranges::min_element(costs);
    double total = 0;
    double squares = 0;
    for (std::size_t i = 0; i < costs.size(); ++i) {
        const double likelihood = std::exp((least - costs[i]) / 2);
        total += likelihood;
        squares += likelihood * scales[i] * scales[i];
    }
    const double scale = std::sqrt(squares / total);
    if (!std::isfinite(scale)) return 1;
    return by.step > 1 ? std::max(scale, std::sqrt(by.step)) : scale;
}

}  // namespace sgn
