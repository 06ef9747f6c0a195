#include "states/density_element.h"

#include <cstddef>
#include <vector>

namespace states {

double density_element(const job& now, std::int32_t root, const flib::element_location& at) {
    const auto [row, column] = at;
    const std::int32_t occupied = now.counts.nfc + now.counts.mi;
    std::vector<double> virtuals;
    for (std::int32_t a = 1; a <= now.counts.ma; ++a)
        virtuals.push_back(now.moc(row, occupied + a));
    double element = 0;
    const double* amplitude = now.amplitudes(root).data();
    for (std::int32_t i = 1; i <= now.counts.mi; ++i) {
        double half = 0;
        for (const double coefficient : virtuals) half += coefficient * *amplitude++;
        element += half * now.moc(column, now.counts.nfc + i);
    }
    return element;
}

}  // namespace states
