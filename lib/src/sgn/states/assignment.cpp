#include "sgn/states/assignment.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace sgn {

// The Hungarian method, in the form that adds one row after the other along a shortest path: every
// row and column has a price, the prices of a row and a column never exceed the cost of their pair,
// and equal it where they are assigned to each other.
std::vector<std::optional<std::size_t>> assign(const overlap_rows& rows) {
    const std::size_t roots = rows.empty() ? 0 : rows.front().size();
    // Places without a root, for the states that are left over, cost as much as an overlap of 0.
    const std::size_t places = std::max(rows.size(), roots);
    const auto cost = [&](std::size_t row, std::size_t place) {
        const double magnitude = place < roots ? std::abs(rows[row][place]) : 0;
        return std::isfinite(magnitude) ? -magnitude : 0;
    };
    constexpr std::size_t nobody = std::numeric_limits<std::size_t>::max();
    // The last place is where the path of a new row begins.
    std::vector<std::size_t> holder(places + 1, nobody);
    std::vector<double> row_price(rows.size(), 0);
    std::vector<double> place_price(places + 1, 0);
    for (std::size_t row = 0; row < rows.size(); ++row) {
        std::vector<double> distance(places, std::numeric_limits<double>::infinity());
        std::vector<std::size_t> before(places, places);
        std::vector<bool> done(places + 1, false);
        std::size_t at = places;
        holder[at] = row;
        while (holder[at] != nobody) {
            done[at] = true;
            std::size_t next = places;
            for (std::size_t place = 0; place < places; ++place) {
                if (done[place]) continue;
                const double reduced =
                    cost(holder[at], place) - row_price[holder[at]] - place_price[place];
                if (reduced < distance[place]) {
                    distance[place] = reduced;
                    before[place] = at;
                }
                if (next == places || distance[place] < distance[next]) next = place;
            }
            const double step = distance[next];
            for (std::size_t place = 0; place <= places; ++place) {
                if (done[place]) {
                    row_price[holder[place]] += step;
                    place_price[place] -= step;
                } else {
                    distance[place] -= step;
                }
            }
            at = next;
        }
        while (at != places) {
            holder[at] = holder[before[at]];
            at = before[at];
        }
    }
    std::vector<std::optional<std::size_t>> assigned(rows.size());
    for (std::size_t root = 0; root < roots; ++root) {
        if (holder[root] != nobody) assigned[holder[root]] = root;
    }
    return assigned;
}

}  // namespace sgn
