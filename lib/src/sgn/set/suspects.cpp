#include "sgn/set/suspects.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <span>
#include <utility>

#include "sgn/set/decimals.h"
#include "sgn/set/detail/residue_errors.h"
#include "sgn/set/detail/rigid_motions.h"

namespace sgn {
namespace {

/// 18 sums, or fewer of a molecule on a line.
using residues = Eigen::Matrix<double, Eigen::Dynamic, 1, 0, 18, 1>;
using signs = std::vector<bool>;  // of every job: whether it is reversed

/// What a reversed sign costs a guess, in units of chi-squared: of 19 files one sign in a hundred
/// is wrong, or fewer. Among more files more look wrong by chance.
double cost_per_sign(std::size_t jobs) {
    return 9 + 2 * std::log(std::max(1.0, static_cast<double>(jobs) / 19));
}

/// Second derivatives of a dipole up to some 5 au are nothing special.
constexpr double usual_curvature = 5;

/// The signs of a pair are in doubt if d(+) + d(-) - 2 d(0) is beyond 6 of its uncertainties, and
/// others make it a third or less.
constexpr double doubtful_pair = 36;
constexpr double better_pair = 9;

/// Where sums and pairs hold, other signs have to fit so much better (chi-squared) to be believed:
/// in symmetric molecules many values are rounded alike, and sums are off by more than chance.
constexpr double much_better = 25;

/// Other choices of signs that fit so little worse (chi-squared) fit as well.
constexpr double as_good = 9;

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
    /// Whether the second difference leaves more than one choice.
    bool is_open() const {
        const double least = cost[best()];
        return std::ranges::count_if(cost,
                                     [&](double each) { return each < least + doubtful_pair; }) > 1;
    }
};

struct guess {
    signs reversed;
    residues left;    ///< the sums, au
    double cost = 0;  ///< -2 log(likelihood) less a constant
    double fit = 0;   ///< the part of it that does not count signs
};

/// Jobs whose signs are reversed together.
using move = std::vector<std::size_t>;

class search {
  public:
    search(const displaced_set& set, const derivatives& of);

    guess as_given() const { return with(signs(set_.jobs.size(), false)); }
    guess with_best_pairs() const;
    bool has_doubtful_pair(const guess& of) const;
    /// Whether second differences leave more than one choice anywhere.
    bool is_open() const { return open_.size() > 1; }

    /// Follows the best guesses from `start` until some that cost less than `limit` mend
    /// everything, and adds those to `found`.
    void mend(const guess& start, double limit, std::vector<guess>& found) const;

    /// Guesses with many more signs that fit as well as `best`.
    std::vector<guess> equals_of(const guess& best, const std::vector<std::size_t>& unseen) const;

    /// Jobs whose reversal would not be seen.
    std::vector<std::size_t> unseen_beside(const guess& best) const;

    std::vector<std::size_t> jobs_of(const guess& of) const;
    double cost_of_sign() const { return cost_of_sign_; }

  private:
    void see_pairs();
    std::vector<move> whole_directions() const;
    /// Not only in signs of dipoles that vanish.
    bool differ(const guess& a, const guess& b) const;
    guess with(signs reversed) const;
    double of_sums(const residues& left) const;
    double of_pairs(const signs& reversed) const;
    double of_signs(const signs& reversed) const;
    bool mends(const guess& candidate) const;
    std::vector<guess> next(const std::vector<guess>& from, const std::vector<move>& moves,
                            double guess::*by) const;

    const displaced_set& set_;
    const derivatives& of_;
    double cost_of_sign_;
    std::optional<residue_errors> errors_;
    residues given_;
    std::vector<residues> change_;  // of the sums, by reversing each job
    std::vector<sign_pair> pairs_;
    std::vector<std::size_t> pair_of_;  // paired job: its place in pairs_
    std::vector<move> moves_;
    std::vector<move> open_;  // those that second differences do not decide
};

/// The median of the errors of the steps: a wrong sign makes the derivatives around it huge, of
/// which the median knows nothing.
double usual_step_error(const derivatives& of) {
    std::vector<double> largest(of.dipole_step.rows);
    for (std::size_t c = 0; c < largest.size(); ++c) {
        largest[c] = std::ranges::max(of.dipole_step.row(c));
    }
    const auto middle = largest.begin() + static_cast<std::ptrdiff_t>(largest.size() / 2);
    std::nth_element(largest.begin(), middle, largest.end());
    return *middle;
}

search::search(const displaced_set& set, const derivatives& of)
    : set_(set), of_(of), cost_of_sign_(cost_per_sign(set.jobs.size())) {
    const sums_of_jobs sums(rigid_motions(set.atoms), of.weights);
    const double step = std::pow(step_error_in_sums * usual_step_error(of), 2);
    const double rounding = std::pow(rounding_error(set.dipole_decimals), 2);
    const Eigen::VectorXd by_rounding = sums.variance() * rounding;
    const Eigen::VectorXd by_step = sums.motion.rowwise().squaredNorm() * step;
    std::vector<residue_variance> variances;
    for (Eigen::Index l = 0; l < by_rounding.size(); ++l) {
        variances.insert(variances.end(), 3, {by_rounding[l], by_step[l]});
    }
    given_ = residues::Zero(index(variances.size()));
    errors_.emplace(std::move(variances), noise_factor(largest_noise, set.dipole_decimals));
    for (std::size_t j = 0; j < set.jobs.size(); ++j) {
        const residues share = sums.share(j, vector(set.jobs[j].dipole)).reshaped();
        given_ += share;
        change_.emplace_back(-2 * share);
    }
    see_pairs();
}

void search::see_pairs() {
    const vec3& reference = set_.jobs.front().dipole;
    const double rounding = std::pow(rounding_error(set_.dipole_decimals), 2);
    moves_.push_back({0});
    open_.push_back({0});
    pair_of_.resize(set_.jobs.size());
    for (std::size_t j = 1; j < set_.jobs.size(); ++j) {
        const displaced_job& plus = set_.jobs[j];
        if (plus.is != role::paired) continue;
        if (plus.other < j) {
            pair_of_[j] = pair_of_[plus.other];
            continue;
        }
        pair_of_[j] = pairs_.size();
        const displaced_job& minus = set_.jobs[plus.other];
        double step = 0;  // squared, Bohr
        for (const vec3& shift : plus.moved.shift) {
            step += std::pow(length(shift) / flib::bohr_radius, 2);
        }
        const double variance = 6 * rounding + std::pow(usual_curvature * step, 2);
        sign_pair pair{j, plus.other, {}};
        for (std::size_t i = 0; i < pair.cost.size(); ++i) {
            const vec3 total = sum(scaled((i & 1U) != 0 ? -1 : 1, plus.dipole),
                                   scaled((i & 2U) != 0 ? -1 : 1, minus.dipole));
            pair.cost[i] = std::pow(length(difference(total, scaled(2, reference))), 2) / variance;
        }
        const std::array<move, 3> moves{move{pair.plus}, {pair.minus}, {pair.plus, pair.minus}};
        moves_.insert(moves_.end(), moves.begin(), moves.end());
        if (pair.is_open()) open_.insert(open_.end(), moves.begin(), moves.end());
        pairs_.push_back(pair);
    }
}

double search::of_sums(const residues& left) const {
    const double cost = errors_->cost({left.data(), static_cast<std::size_t>(left.size())});
    return std::isnan(cost) ? std::numeric_limits<double>::infinity() : cost;
}

double search::of_pairs(const signs& reversed) const {
    double total = 0;
    for (const sign_pair& pair : pairs_) total += pair.cost[pair.choice(reversed)];
    return std::isnan(total) ? std::numeric_limits<double>::infinity() : total;
}

double search::of_signs(const signs& reversed) const {
    const auto count = static_cast<double>(std::count(reversed.begin(), reversed.end(), true));
    // All signs reversed are as good as none.
    const auto all = static_cast<double>(2 * pairs_.size() + 1);
    return cost_of_sign_ * std::min(count, all - count);
}

guess search::with(signs reversed) const {
    guess result{std::move(reversed), given_, 0, 0};
    for (std::size_t j = 0; j < result.reversed.size(); ++j) {
        if (result.reversed[j]) result.left += change_[j];
    }
    result.fit = of_sums(result.left) + of_pairs(result.reversed);
    result.cost = result.fit + of_signs(result.reversed);
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

std::vector<guess> search::next(const std::vector<guess>& from, const std::vector<move>& moves,
                                double guess::*by) const {
    struct step {
        const guess* base;
        const move* made;
        double cost;
    };
    std::vector<step> steps;
    steps.reserve(from.size() * moves.size());
    for (const guess& base : from) {
        signs reversed = base.reversed;
        const double pairs = of_pairs(reversed);
        for (const move& made : moves) {
            const auto flip = [&] {
                for (const std::size_t j : made) reversed[j].flip();
            };
            residues left = base.left;
            for (const std::size_t j : made) left += (reversed[j] ? -1.0 : 1.0) * change_[j];
            // Of a single pair only what it costs itself changes.
            const sign_pair* one =
                made.front() != 0 && made.size() <= 2 ? &pairs_[pair_of_[made.front()]] : nullptr;
            const double before = one == nullptr ? pairs : one->cost[one->choice(reversed)];
            flip();
            const double after =
                one == nullptr ? of_pairs(reversed) : one->cost[one->choice(reversed)];
            double cost = of_sums(left) + pairs - before + after;
            if (by == &guess::cost) cost += of_signs(reversed);
            if (std::isnan(cost)) cost = std::numeric_limits<double>::infinity();
            steps.push_back({&base, &made, cost});
            flip();
        }
    }
    const std::size_t kept = std::min(4 * guesses, steps.size());
    std::partial_sort(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(kept), steps.end(),
                      [](const step& a, const step& b) { return a.cost < b.cost; });
    std::vector<guess> result;
    for (std::size_t i = 0; i < kept && result.size() < guesses; ++i) {
        signs reversed = steps[i].base->reversed;
        for (const std::size_t j : *steps[i].made) reversed[j].flip();
        const bool known = std::any_of(result.begin(), result.end(), [&](const guess& earlier) {
            return earlier.reversed == reversed;
        });
        if (!known) result.push_back(with(std::move(reversed)));
    }
    return result;
}

void search::mend(const guess& start, double limit, std::vector<guess>& found) const {
    std::vector<guess> at{start};
    for (int depth = 0; depth <= deepest && !at.empty(); ++depth) {
        const std::size_t before = found.size();
        for (const guess& candidate : at) {
            if (candidate.cost < limit && mends(candidate)) found.push_back(candidate);
        }
        if (found.size() > before) return;
        if (depth < deepest) at = next(at, moves_, &guess::cost);
    }
}

std::vector<move> search::whole_directions() const {
    // All that moves along one axis: where the sums of the others need nothing of it, its signs
    // are not in them.
    std::vector<move> moves;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        move plus;
        move minus;
        for (const sign_pair& pair : pairs_) {
            const displacement& moved = set_.jobs[pair.plus].moved;
            const vec3& shift = moved.shift[moved.farthest];
            if (std::abs(shift[axis]) < 0.9 * length(shift)) continue;
            plus.push_back(shift[axis] > 0 ? pair.plus : pair.minus);
            minus.push_back(shift[axis] > 0 ? pair.minus : pair.plus);
        }
        if (plus.size() < 2) continue;
        move both = plus;
        both.insert(both.end(), minus.begin(), minus.end());
        moves.insert(moves.end(), {std::move(plus), std::move(minus), std::move(both)});
    }
    return moves;
}

bool search::differ(const guess& a, const guess& b) const {
    for (std::size_t j = 0; j < set_.jobs.size(); ++j) {
        if (a.reversed[j] != b.reversed[j] && length(set_.jobs[j].dipole) > 0) return true;
    }
    return false;
}

std::vector<guess> search::equals_of(const guess& best,
                                     const std::vector<std::size_t>& unseen) const {
    std::vector<move> moves = whole_directions();
    for (const move& each : open_) {
        const bool seen = std::ranges::none_of(each, [&](std::size_t j) {
            return length(set_.jobs[j].dipole) == 0 || std::ranges::find(unseen, j) != unseen.end();
        });
        if (seen) moves.push_back(each);
    }
    std::vector<guess> found;
    std::vector<guess> at{best};
    for (int depth = 0; depth < deepest; ++depth) {
        at = next(at, moves, &guess::fit);
        for (const guess& candidate : at) {
            if (candidate.fit < best.fit + as_good && differ(candidate, best) &&
                !has_doubtful_pair(candidate)) {
                found.push_back(candidate);
            }
        }
        if (!found.empty()) break;
    }
    return found;
}

std::vector<std::size_t> search::unseen_beside(const guess& best) const {
    std::vector<std::size_t> jobs;
    for (std::size_t j = 0; j < set_.jobs.size(); ++j) {
        const role is = set_.jobs[j].is;
        if ((is != role::reference && is != role::paired) || length(set_.jobs[j].dipole) == 0) {
            continue;
        }
        signs reversed = best.reversed;
        reversed[j].flip();
        if (with(std::move(reversed)).fit < best.fit + std::max(much_better, cost_of_sign_)) {
            jobs.push_back(j);
        }
    }
    return jobs;
}

/// Of guesses that are as likely but for rounding, as in symmetric molecules, the one whose jobs
/// come first.
bool likelier(const guess& a, const guess& b) {
    const double costs[]{std::round(1e6 * a.cost), std::round(1e6 * b.cost)};
    return costs[0] != costs[1] ? costs[0] < costs[1] : a.reversed > b.reversed;
}

}  // namespace

suspects find_suspects(const displaced_set& set, const derivatives& of, const sum_rules& dipole) {
    suspects result;
    if (!dipole.judged) return result;
    const search among(set, of);
    const guess given = among.as_given();
    const bool holds = dipole.satisfied && !among.has_doubtful_pair(given);
    guess best = given;
    std::vector<guess> found;
    // Second differences of a bright state leave nothing to be sought.
    if (!holds || among.is_open()) {
        const double worse = holds ? std::max(0.0, much_better - among.cost_of_sign()) : 0;
        among.mend(given, given.cost - worse, found);
        if (!holds) among.mend(among.with_best_pairs(), given.cost, found);
    }
    std::sort(found.begin(), found.end(), likelier);
    for (const guess& each : found) {
        if (each.cost > found.front().cost + among.cost_of_sign()) break;
        std::vector<std::size_t> jobs = among.jobs_of(each);
        if (std::find(result.flips.begin(), result.flips.end(), jobs) == result.flips.end()) {
            result.flips.push_back(std::move(jobs));
        }
    }
    if (!result.flips.empty()) {
        result.mended = dipole_rules(set, of, result.flips.front());
        best = found.front();
    } else if (!holds) {
        result.unsound = true;
        return result;
    }
    if (!among.is_open()) return result;
    result.unseen = among.unseen_beside(best);
    for (const guess& each : among.equals_of(best, result.unseen)) {
        std::vector<std::size_t> jobs = among.jobs_of(each);
        const bool known = std::ranges::find(result.flips, jobs) != result.flips.end() ||
                           std::ranges::find(result.as_good, jobs) != result.as_good.end();
        if (!known && !jobs.empty()) result.as_good.push_back(std::move(jobs));
    }
    return result;
}

}  // namespace sgn
