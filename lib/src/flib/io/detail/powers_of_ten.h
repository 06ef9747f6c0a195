// Powers of ten in 128 bits, from which the tables of those that read numbers are made.
#pragma once

#include <cstdint>

#pragma GCC visibility push(hidden)
namespace flib {

__extension__ using uint128 = unsigned __int128;

/// Calls take(q, value, exponent) for q = 0, `step`, 2 `step`, ... `last`, where `step` is 1 or -1
/// and 10^q is `value` x 2^`exponent`, the highest bit of `value` set. Each of some three hundred
/// steps loses less than 2^-124 of the value.
template <class Take>
constexpr void for_powers_of_ten(int last, int step, Take take) {
    uint128 value = uint128{1} << 127;
    int exponent = -127;
    for (int q = 0;; q += step) {
        take(q, value, exponent);
        if (q == last) return;
        if (step > 0) {
            value = (value >> 4) * 10;
            exponent += 4;
        } else {
            value /= 10;
        }
        for (; value >> 127 == 0; --exponent) value <<= 1;
    }
}

}  // namespace flib
#pragma GCC visibility pop
