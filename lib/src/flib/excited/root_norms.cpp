#include "flib/excited/root_norms.h"

#include <cmath>
#include <cstddef>

namespace flib {
namespace {

double product(std::span<const double> a, std::span<const double> b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
    return sum;
}

root_spin spin_of(std::span<const double> alpha, std::span<const double> beta) {
    // Dumps of the program itself agree to better than 1e-10, printed digits to 1e-7.
    constexpr double tolerance = 1e-3;
    double difference = 0;
    double sum = 0;
    for (std::size_t i = 0; i < alpha.size(); ++i) {
        difference += (alpha[i] - beta[i]) * (alpha[i] - beta[i]);
        sum += (alpha[i] + beta[i]) * (alpha[i] + beta[i]);
    }
    const double all = difference + sum;  // twice the squares of both
    if (!(all > 0)) return root_spin::neither;
    if (difference <= tolerance * tolerance * all) return root_spin::singlet;
    if (sum <= tolerance * tolerance * all) return root_spin::triplet;
    return root_spin::neither;
}

}  // namespace

std::string_view name_of(root_spin spin) {
    switch (spin) {
        case root_spin::singlet:
            return "singlet";
        case root_spin::triplet:
            return "triplet";
        case root_spin::neither:
            break;
    }
    return "neither";
}

bool root_norms::are_of_amplitudes() const {
    const auto fits = [&](double sum) {
        return has_minus ? std::abs(sum - 0.5) < 0.5e-3 : sum >= 0.1 && sum <= 5;
    };
    return fits(alpha) && fits(beta);
}

root_norms norms_of(std::span<const double> plus, std::span<const double> minus) {
    const std::size_t n = plus.size() / 2;
    const auto alpha = plus.first(n);
    const auto beta = plus.subspan(n);
    if (minus.empty()) {
        return {product(alpha, alpha), product(beta, beta), spin_of(alpha, beta), false};
    }
    return {product(alpha, minus.first(n)), product(beta, minus.subspan(n)), spin_of(alpha, beta),
            true};
}

}  // namespace flib
