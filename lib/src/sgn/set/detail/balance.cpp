#include "sgn/set/detail/balance.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <numbers>
#include <utility>

#include "sgn/set/detail/decompositions.h"

namespace sgn {
namespace {

/// Beyond so many choices of half of the lists, and so many pairs of halves that are looked at,
/// it takes too long.
constexpr double largest_half = 17;
constexpr std::int64_t most_looked_at = 200'000'000;

double size_of(const options& list) {
    return std::log2(static_cast<double>(list.size()));
}

/// How the vectors are spread over all choices, along the axes on which that is independent.
eigen_system spread_of(const std::vector<options>& lists, Eigen::Index dimension) {
    Eigen::MatrixXd total = Eigen::MatrixXd::Zero(dimension, dimension);
    for (const options& list : lists) {
        const auto count = static_cast<double>(list.size());
        Eigen::VectorXd mean = Eigen::VectorXd::Zero(dimension);
        for (const option& each : list) mean += each.share / count;
        for (const option& each : list) {
            const Eigen::VectorXd deviation = each.share - mean;
            total += deviation * deviation.transpose() / count;
        }
    }
    return eigen_system_of(total);
}

/// All choices of some of the lists.
struct half {
    std::vector<std::size_t> lists;  // places
    double size = 0;                 // logarithm
    Eigen::MatrixXd sums;            // a column for each choice
    std::vector<double> costs;

    void enumerate(const std::vector<options>& all, const Eigen::MatrixXd& axes) {
        sums = Eigen::MatrixXd::Zero(axes.cols(), 1);
        costs = {0};
        for (const std::size_t l : lists) {
            const Eigen::Index before = sums.cols();
            Eigen::MatrixXd further(sums.rows(), before * static_cast<Eigen::Index>(all[l].size()));
            std::vector<double> further_costs;
            for (std::size_t o = 0; o < all[l].size(); ++o) {
                const Eigen::VectorXd share = axes.transpose() * all[l][o].share;
                further.middleCols(before * static_cast<Eigen::Index>(o), before) =
                    sums.colwise() + share;
                for (const double cost : costs) further_costs.push_back(cost + all[l][o].cost);
            }
            sums = std::move(further);
            costs = std::move(further_costs);
        }
    }

    void tell(std::size_t column, const std::vector<options>& all,
              std::vector<std::size_t>& places) const {
        for (const std::size_t l : lists) {
            places[l] = column % all[l].size();
            column /= all[l].size();
        }
    }
};

/// Space along its first axes, cut into cubes.
constexpr std::size_t cut_axes = 4;
using cube = std::array<std::int64_t, cut_axes>;

cube cube_of(const Eigen::Ref<const Eigen::VectorXd>& place, double edge) {
    cube result{};
    const auto count = std::min<std::size_t>(cut_axes, static_cast<std::size_t>(place.size()));
    for (std::size_t a = 0; a < count; ++a) {
        const double at = std::floor(place[static_cast<Eigen::Index>(a)] / edge);
        result[a] = static_cast<std::int64_t>(std::clamp(at, -1e15, 1e15));
    }
    return result;
}

struct match {
    double cost = 0;
    std::size_t first = 0;  // columns of the halves
    std::size_t second = 0;
};

void keep_cheapest(std::vector<match>& matches, std::size_t most) {
    const auto cheaper = [](const match& a, const match& b) { return a.cost < b.cost; };
    if (matches.size() > most) {
        const auto last = matches.begin() + static_cast<std::ptrdiff_t>(most);
        std::nth_element(matches.begin(), last, matches.end(), cheaper);
        matches.erase(last, matches.end());
    }
    std::ranges::stable_sort(matches, cheaper);
}

}  // namespace

double log2_of_choices(const std::vector<options>& lists) {
    double total = 0;
    for (const options& list : lists) total += size_of(list);
    return total;
}

double log2_of_chance(const std::vector<options>& lists, double radius) {
    double total = log2_of_choices(lists);
    if (lists.empty()) return total;
    for (const double variance : spread_of(lists, lists.front().front().share.size()).values) {
        // The middle of a normal distribution.
        const double part = radius * std::sqrt(2 / std::numbers::pi / std::max(variance, 1e-99));
        if (part < 1) total += std::log2(part);
    }
    return total;
}

std::optional<std::vector<choices>> balance(const std::vector<options>& lists,
                                            const Eigen::VectorXd& base, double limit,
                                            std::size_t most) {
    std::vector<std::size_t> by_size(lists.size());
    for (std::size_t l = 0; l < lists.size(); ++l) by_size[l] = l;
    std::ranges::stable_sort(by_size, std::greater{},
                             [&](std::size_t l) { return lists[l].size(); });
    half first;
    half second;
    for (const std::size_t l : by_size) {
        half& smaller = first.size <= second.size ? first : second;
        smaller.lists.push_back(l);
        smaller.size += size_of(lists[l]);
    }
    if (std::max(first.size, second.size) > largest_half) return std::nullopt;
    // The axes along which most is to be seen first.
    const Eigen::MatrixXd axes = spread_of(lists, base.size()).vectors.rowwise().reverse();
    first.enumerate(lists, axes);
    second.enumerate(lists, axes);
    const Eigen::VectorXd rest = axes.transpose() * base;

    const double least =
        *std::ranges::min_element(first.costs) + *std::ranges::min_element(second.costs);
    const double edge = std::sqrt(std::max(limit - least, 1.0));
    std::vector<std::pair<cube, std::size_t>> cubes;
    for (std::size_t s = 0; s < second.costs.size(); ++s) {
        cubes.emplace_back(cube_of(second.sums.col(static_cast<Eigen::Index>(s)), edge), s);
    }
    std::ranges::sort(cubes);

    std::vector<match> matches;
    std::int64_t looked_at = 0;
    for (std::size_t f = 0; f < first.costs.size(); ++f) {
        const Eigen::VectorXd wanted = -rest - first.sums.col(static_cast<Eigen::Index>(f));
        const cube middle = cube_of(wanted, edge);
        // The last axis of a row of neighbours goes on where they are stored.
        for (int neighbour = 0; neighbour < 27; ++neighbour) {
            cube low = middle;
            low[0] += neighbour % 3 - 1;
            low[1] += neighbour / 3 % 3 - 1;
            low[2] += neighbour / 9 - 1;
            cube high = low;
            low[3] -= 1;
            high[3] += 1;
            for (auto at = std::ranges::lower_bound(cubes, std::pair(low, std::size_t{0}));
                 at != cubes.end() && at->first <= high; ++at) {
                if (++looked_at > most_looked_at) return std::nullopt;
                const std::size_t s = at->second;
                const double cost =
                    first.costs[f] + second.costs[s] +
                    (wanted - second.sums.col(static_cast<Eigen::Index>(s))).squaredNorm();
                if (!(cost <= limit)) continue;
                matches.push_back({cost, f, s});
                if (matches.size() < 4 * most) continue;
                keep_cheapest(matches, most);
                limit = matches.back().cost;
            }
        }
    }
    keep_cheapest(matches, most);
    std::vector<choices> result;
    for (const match& each : matches) {
        choices made{std::vector<std::size_t>(lists.size()), each.cost};
        first.tell(each.first, lists, made.of);
        second.tell(each.second, lists, made.of);
        result.push_back(std::move(made));
    }
    return result;
}

}  // namespace sgn
