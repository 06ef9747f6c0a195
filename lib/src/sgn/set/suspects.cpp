#include "sgn/set/suspects.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "sgn/set/decimals.h"
#include "sgn/set/detail/rigid_motions.h"

namespace sgn {
namespace {

using residues = Eigen::Matrix<double, 18, 1>;
using signs = std::vector<bool>;  // of every job: whether it is reversed

/// What a further reversed sign costs a guess, in units of chi-squared: one sign in a hundred is
/// wrong, or fewer.
constexpr double cost_per_sign = 9;

/// Second derivatives of a dipole up to some 5 au are nothing special.
constexpr double usual_curvature = 5;

/// The signs of a pair are in doubt if d(+) + d(-) - 2 d(0) is beyond 6 of its uncertainties, and
/// others make it a third or less.
constexpr double doubtful_pair = 36;
constexpr double better_pair = 9;

/// Guesses that are followed further, and how far.
constexpr std::size_t guesses = 64;
constexpr int deepest = 4;

/// A pair of opposite displacements, and how little its second difference is to be believed for
/// each choice of signs.
struct sign_pair {
    std::size_t plus = 0;
    std::size_t minus = 0;
    std::array<double, 4> cost{};  ///< against the reference: none, plus, minus, both reversed

    std::size_t choice(const signs& reversed) const {
        const bool all = reversed[0];
        return (reversed[plus] != all ? 1U : 0U) + (reversed[minus] != all ? 2U : 0U);
    }
    std::size_t best() const {
        return static_cast<std::size_t>(std::min_element(cost.begin(), cost.end()) - cost.begin());
    }
    bool doubtful(const signs& reversed) const {
        const double now = cost[choice(reversed)];
        return now > doubtful_pair && cost[best()] * better_pair <= now;
    }
};

struct guess {
    signs reversed;
    residues left;  ///< the sums, each in units of its uncertainty
    double cost = 0;
};

class search {
  public:
    search(const displaced_set& set, const derivatives& of);

    guess as_given() const { return with(signs(set_.jobs.size(), false)); }
    guess with_best_pairs() const;
    bool has_doubtful_pair(const guess& of) const;

    /// Follows the best guesses from `start` until some mend everything, and adds those to `found`.
    void mend(const guess& start, std::vector<guess>& found) const;

    std::vector<std::size_t> jobs_of(const guess& of) const;

  private:
    guess with(signs reversed) const;
    double cost(const signs& reversed, const residues& left) const;
    bool mends(const guess& candidate) const;
    std::vector<guess> next(const std::vector<guess>& from) const;

    const displaced_set& set_;
    const derivatives& of_;
    residues given_;
    std::vector<residues> change_;  // of the sums, by reversing each job
    std::vector<sign_pair> pairs_;
    std::vector<std::vector<std::size_t>> moves_;  // jobs to be reversed together
};

/// How far the sums of a set whose signs are right may be off (standard deviations).
residues uncertainty(const displaced_set& set, const derivatives& of,
                     const rigid_motions& motions) {
    // A wrong sign makes the derivatives around it huge; the median knows nothing of it.
    std::vector<double> largest(of.dipole.rows);
    for (std::size_t c = 0; c < largest.size(); ++c) {
        largest[c] = std::abs(
            *std::max_element(of.dipole.row(c).begin(), of.dipole.row(c).end(),
                              [](double a, double b) { return std::abs(a) < std::abs(b); }));
    }
    const auto middle = largest.begin() + static_cast<std::ptrdiff_t>(largest.size() / 2);
    std::nth_element(largest.begin(), middle, largest.end());
    const double step =
        std::pow(relative_step_error(set.largest_step / flib::bohr_radius) * *middle, 2);
    const double rounding = std::pow(rounding_error(set.dipole_decimals), 2);
    const Eigen::Vector3d moved = variance_of_sums(motions.translation, of.weights) * rounding;
    const Eigen::Vector3d turned = variance_of_sums(motions.rotation, of.weights) * rounding;
    residues result;
    for (Eigen::Index l = 0; l < 3; ++l) {
        const double move = motions.translation.col(l).squaredNorm();
        const double turn = motions.rotation.col(l).squaredNorm();
        result.segment<3>(3 * l).setConstant(std::sqrt(moved[l] + move * step));
        // The dipole itself, which turns along, is rounded too.
        result.segment<3>(9 + 3 * l).setConstant(std::sqrt(turned[l] + rounding + turn * step));
    }
    return result;
}

search::search(const displaced_set& set, const derivatives& of) : set_(set), of_(of) {
    const rigid_motions motions(set.atoms);
    const residues scale = uncertainty(set, of, motions).cwiseInverse();
    given_.setZero();
    for (std::size_t j = 0; j < set.jobs.size(); ++j) {
        const Eigen::Vector3d dipole = vector(set.jobs[j].dipole);
        // What the derivatives owe to this job, and the dipole that turns along.
        const Eigen::MatrixXd owed = view(of.weights).col(index(j)) * dipole.transpose();
        const motion_sums sums(motions, owed, j == 0 ? dipole : Eigen::Vector3d::Zero());
        residues share = residues::Zero();
        for (Eigen::Index l = 0; l < 3; ++l) {
            share.segment<3>(3 * l) = sums.translation.row(l);
            if (motions.turns(l)) share.segment<3>(9 + 3 * l) = sums.rotation.row(l);
        }
        share = share.cwiseProduct(scale);
        given_ += share;
        change_.emplace_back(-2 * share);
    }

    const vec3& reference = set.jobs.front().dipole;
    const double rounding = std::pow(rounding_error(set.dipole_decimals), 2);
    moves_.push_back({0});
    for (std::size_t j = 1; j < set.jobs.size(); ++j) {
        const displaced_job& plus = set.jobs[j];
        if (plus.is != role::paired) continue;
        moves_.push_back({j});
        if (plus.other < j) continue;
        const displaced_job& minus = set.jobs[plus.other];
        moves_.push_back({j, plus.other});
        const double h = plus.moved.distance / flib::bohr_radius;
        const double variance = 6 * rounding + std::pow(usual_curvature * h * h, 2);
        sign_pair pair{j, plus.other, {}};
        for (std::size_t i = 0; i < pair.cost.size(); ++i) {
            const vec3 total = sum(scaled((i & 1U) != 0 ? -1 : 1, plus.dipole),
                                   scaled((i & 2U) != 0 ? -1 : 1, minus.dipole));
            pair.cost[i] = std::pow(length(difference(total, scaled(2, reference))), 2) / variance;
        }
        pairs_.push_back(pair);
    }
}

double search::cost(const signs& reversed, const residues& left) const {
    double total = left.squaredNorm();
    for (const sign_pair& pair : pairs_) total += pair.cost[pair.choice(reversed)];
    const auto count = static_cast<double>(std::count(reversed.begin(), reversed.end(), true));
    // All signs reversed are as good as none.
    const auto all = static_cast<double>(2 * pairs_.size() + 1);
    total += cost_per_sign * std::min(count, all - count);
    return std::isnan(total) ? std::numeric_limits<double>::infinity() : total;
}

guess search::with(signs reversed) const {
    guess result{std::move(reversed), given_, 0};
    for (std::size_t j = 0; j < result.reversed.size(); ++j) {
        if (result.reversed[j]) result.left += change_[j];
    }
    result.cost = cost(result.reversed, result.left);
    return result;
}

guess search::with_best_pairs() const {
    signs reversed(set_.jobs.size(), false);
    for (const sign_pair& pair : pairs_) {
        if (!pair.doubtful(reversed)) continue;
        reversed[pair.plus] = (pair.best() & 1U) != 0;
        reversed[pair.minus] = (pair.best() & 2U) != 0;
    }
    return with(reversed);
}

bool search::has_doubtful_pair(const guess& of) const {
    return std::any_of(pairs_.begin(), pairs_.end(),
                       [&](const sign_pair& pair) { return pair.doubtful(of.reversed); });
}

std::vector<std::size_t> search::jobs_of(const guess& of) const {
    std::vector<std::size_t> jobs;
    std::vector<std::size_t> others;
    for (std::size_t j = 0; j < set_.jobs.size(); ++j) {
        const role is = set_.jobs[j].is;
        if (is != role::reference && is != role::paired) continue;
        (of.reversed[j] ? jobs : others).push_back(j);
    }
    return jobs.size() <= others.size() ? jobs : others;
}

bool search::mends(const guess& candidate) const {
    return !has_doubtful_pair(candidate) && dipole_rules(set_, of_, jobs_of(candidate)).satisfied;
}

std::vector<guess> search::next(const std::vector<guess>& from) const {
    struct step {
        const guess* base;
        const std::vector<std::size_t>* move;
        double cost;
    };
    std::vector<step> steps;
    for (const guess& base : from) {
        signs reversed = base.reversed;
        for (const std::vector<std::size_t>& move : moves_) {
            residues left = base.left;
            for (const std::size_t j : move) {
                left += (reversed[j] ? -1.0 : 1.0) * change_[j];
                reversed[j].flip();
            }
            steps.push_back({&base, &move, cost(reversed, left)});
            for (const std::size_t j : move) reversed[j].flip();
        }
    }
    const std::size_t kept = std::min(4 * guesses, steps.size());
    std::partial_sort(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(kept), steps.end(),
                      [](const step& a, const step& b) { return a.cost < b.cost; });
    std::vector<guess> result;
    for (std::size_t i = 0; i < kept && result.size() < guesses; ++i) {
        signs reversed = steps[i].base->reversed;
        for (const std::size_t j : *steps[i].move) reversed[j].flip();
        const bool known = std::any_of(result.begin(), result.end(), [&](const guess& earlier) {
            return earlier.reversed == reversed;
        });
        if (!known) result.push_back(with(std::move(reversed)));
    }
    return result;
}

void search::mend(const guess& start, std::vector<guess>& found) const {
    std::vector<guess> at{start};
    for (int depth = 0; depth <= deepest && !at.empty(); ++depth) {
        const std::size_t before = found.size();
        for (const guess& candidate : at) {
            if (mends(candidate)) found.push_back(candidate);
        }
        if (found.size() > before) return;
        if (depth < deepest) at = next(at);
    }
}

}  // namespace

suspects find_suspects(const displaced_set& set, const derivatives& of, const sum_rules& dipole) {
    suspects result;
    if (!dipole.judged) return result;
    const search among(set, of);
    const guess given = among.as_given();
    if (dipole.satisfied && !among.has_doubtful_pair(given)) return result;
    std::vector<guess> found;
    among.mend(given, found);
    among.mend(among.with_best_pairs(), found);
    std::sort(found.begin(), found.end(),
              [](const guess& a, const guess& b) { return a.cost < b.cost; });
    for (const guess& each : found) {
        if (each.cost > found.front().cost + cost_per_sign) break;
        std::vector<std::size_t> jobs = among.jobs_of(each);
        if (std::find(result.flips.begin(), result.flips.end(), jobs) == result.flips.end()) {
            result.flips.push_back(std::move(jobs));
        }
    }
    if (result.flips.empty()) {
        result.unsound = true;
    } else {
        result.mended = dipole_rules(set, of, result.flips.front());
    }
    return result;
}

}  // namespace sgn
