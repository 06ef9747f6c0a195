// What amplitudes that were read say of their root: whether they can be amplitudes, and its spin.
#pragma once

#include <span>
#include <string_view>

namespace flib {

/// Of a closed-shell job's root: its beta amplitudes equal the alpha ones, or their negatives.
enum class root_spin { singlet, triplet, neither };

/// "singlet", "triplet" or "neither".
std::string_view name_of(root_spin spin);

struct root_norms {
    /// Sums of (X+Y)(X-Y) over the amplitudes of one spin, 1/2 each; without X-Y, of (X+Y)^2.
    double alpha = 0;
    double beta = 0;
    root_spin spin = root_spin::neither;
    bool has_minus = false;

    /// Whether the sums are those of amplitudes: 1/2 to three decimals or, without X-Y, between 0.1
    /// and 5. False where one is not a number.
    bool are_of_amplitudes() const;
};

/// The norms of a root, of which `plus` and `minus` hold X+Y and X-Y, alpha before beta, equally
/// many; `minus` is empty if it is not known.
root_norms norms_of(std::span<const double> plus, std::span<const double> minus);

}  // namespace flib
