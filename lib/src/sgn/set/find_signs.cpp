#include "sgn/set/find_signs.h"

#include <Eigen/Cholesky>
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "flib/io/stop_run.h"
#include "sgn/set/decimals.h"
#include "sgn/set/derivatives.h"
#include "sgn/set/detail/balance.h"
#include "sgn/set/detail/direction.h"
#include "sgn/set/detail/rigid_motions.h"
#include "sgn/set/detail/shape.h"
#include "sgn/set/listed.h"

namespace sgn {
namespace {

/// Standard deviations of the first to fifth derivatives of a dipole along a displacement (au), if
/// the first ones are as large as 1 in the mean; of weaker states they are less.
constexpr std::array usual_derivatives{5.0, 5.0, 20.0, 130.0, 1000.0};

/// The same of the third to fifth, as multiples of the first derivatives nearby.
constexpr std::array further_derivatives{18.0, 130.0, 1000.0};

/// Jobs are seldom converged better (au).
constexpr double converged = 1e-6;

/// How much worse, in units of chi-squared, other choices have to fit: they would by chance if
/// errors were ten times larger than they are taken to be.
constexpr double convincing = 100;

/// Sums fit whose mean square is no more than this, in units of their uncertainties.
constexpr double fitting = 6;

/// A choice that fits is believed if the chance that a wrong one does is below one in a thousand.
constexpr double small_chance = -10;
constexpr double chance_radius = 2.5;

constexpr std::size_t most_kept = 4096;
constexpr std::size_t most_alternatives = 16;
constexpr std::size_t most_names = 6;

/// Jobs whose geometries lie on one line through that of the reference.
struct line {
    std::vector<std::size_t> jobs;  // the smallest step first
    std::vector<double> steps;      // Bohr, of all coordinates together
};

std::vector<line> lines_of(const displaced_set& set) {
    struct places {
        direction along;
        std::vector<std::pair<double, std::size_t>> jobs;  // step, place
    };
    std::vector<places> directions;
    for (std::size_t j = 1; j < set.jobs.size(); ++j) {
        direction now(set.jobs[j].moved.shift);
        const auto same = std::ranges::find_if(
            directions, [&](const places& of) { return of.along.is_along(now); });
        if (same == directions.end()) {
            const double step = now.length;
            directions.push_back({std::move(now), {{step, j}}});
        } else {
            same->jobs.emplace_back(same->along.d.dot(now.d) / same->along.length, j);
        }
    }
    std::vector<line> lines;
    for (places& each : directions) {
        std::ranges::stable_sort(each.jobs, {}, [](const auto& of) { return std::abs(of.first); });
        line made;
        for (const auto& [step, job] : each.jobs) {
            made.steps.push_back(step);
            made.jobs.push_back(job);
        }
        lines.push_back(std::move(made));
    }
    return lines;
}

/// Jobs whose signs mean nothing: dipoles that round to zero.
std::vector<bool> dark_jobs(const displaced_set& set) {
    const double zero = std::max(0.5 * std::pow(10, -set.dipole_decimals), converged);
    std::vector<bool> dark;
    for (const displaced_job& each : set.jobs) {
        dark.push_back(
            std::ranges::all_of(each.dipole, [&](double value) { return std::abs(value) < zero; }));
    }
    return dark;
}

/// What of a set decides on its signs.
class evidence {
  public:
    explicit evidence(const displaced_set& set);

    found_signs find() const;

  private:
    double noise() const { return std::hypot(rounding_error(set_.dipole_decimals), converged); }
    double place_error() const {
        return rounding_error(set_.coordinate_decimals) / flib::bohr_radius;
    }
    Eigen::Vector3d dipole(std::size_t job) const { return vector(set_.jobs[job].dipole); }

    void see_smoothness();
    void see_sums();
    double slope(std::size_t l) const;
    double mean_slope() const;
    std::vector<int> signs_of(const choices& of) const;
    std::vector<std::size_t> differing(const std::vector<int>& a, const std::vector<int>& b) const;
    double change(const std::vector<int>& a, const std::vector<int>& b) const;
    std::string names_of(const std::vector<std::size_t>& jobs) const;

    const displaced_set& set_;
    derivatives of_;
    std::vector<bool> dark_;
    std::size_t kept_ = 0;  // the job whose sign is not looked for
    double scale_ = 1;      // of the usual derivatives
    std::vector<line> lines_;
    // Of each line the choices that are smooth, the smoothest first: signs of its jobs, and what
    // they cost and add to the sums, each sum in units of its uncertainty.
    std::vector<std::vector<std::vector<int>>> signs_;
    std::vector<options> options_;
    Eigen::VectorXd reference_share_;
    std::vector<std::size_t> rough_;  // jobs on lines without any choice: absurd numbers
};

evidence::evidence(const displaced_set& set)
    : set_(set), of_(differentiate(set)), dark_(dark_jobs(set)), lines_(lines_of(set)) {
    if (dark_[0]) {
        const auto size = [](const displaced_job& of) { return length(of.dipole); };
        kept_ = static_cast<std::size_t>(std::ranges::max_element(set.jobs, {}, size) -
                                         set.jobs.begin());
    }
    // What the choices allow of slopes tells how smooth they have to be.
    for (double before = 2 * scale_; scale_ < 0.9 * before;) {
        see_smoothness();
        before = scale_;
        scale_ = std::min(scale_, std::max(mean_slope(), dipole(0).norm()));
    }
    if (rough_.empty()) see_sums();
}

void evidence::see_smoothness() {
    signs_.clear();
    options_.clear();
    rough_.clear();
    for (const line& of : lines_) {
        // The dipole along the line is a polynomial whose coefficients have usual sizes, and that
        // of the reference is one of its values: a normal distribution of several variables.
        const Eigen::Index points = index(of.jobs.size());
        const double variance = std::pow(noise(), 2);
        const double place = std::pow(scale_ * usual_derivatives[0] * place_error(), 2);
        Eigen::MatrixXd covariance(points, points);
        for (Eigen::Index a = 0; a < points; ++a) {
            for (Eigen::Index b = 0; b < points; ++b) {
                const double square =
                    of.steps[static_cast<std::size_t>(a)] * of.steps[static_cast<std::size_t>(b)];
                covariance(a, b) = a == b ? 2 * variance + place : variance;
                double term = 1;
                for (std::size_t n = 1; n <= usual_derivatives.size(); ++n) {
                    term *= square / static_cast<double>(n * n);
                    covariance(a, b) += std::pow(scale_ * usual_derivatives[n - 1], 2) * term;
                }
            }
        }
        const Eigen::LLT<Eigen::MatrixXd> decomposed(covariance);
        const Eigen::MatrixXd factor = decomposed.matrixL();

        struct smooth {
            double cost;
            std::vector<int> signs;
        };
        std::vector<smooth> found;
        double best = std::numeric_limits<double>::infinity();
        const auto limit = [&] { return 2 * convincing + 4 * best; };
        std::vector<int> signs;
        std::vector<Eigen::Vector3d> independent;  // deviations so far
        const auto follow = [&](const auto& self, double cost) -> void {
            if (!std::isfinite(cost) || cost > limit()) return;
            const std::size_t at = signs.size();
            if (at == of.jobs.size()) {
                best = std::min(best, cost);
                found.push_back({cost, signs});
                return;
            }
            const std::size_t job = of.jobs[at];
            const auto deviation_of = [&](int sign) -> Eigen::Vector3d {
                Eigen::Vector3d deviation = sign * dipole(job) - dipole(0);
                for (std::size_t i = 0; i < at; ++i) {
                    deviation -= factor(index(at), index(i)) * independent[i];
                }
                return deviation / factor(index(at), index(at));
            };
            // The likelier sign first, which makes the limit low.
            const int likelier =
                deviation_of(-1).squaredNorm() < deviation_of(1).squaredNorm() ? -1 : 1;
            for (const int sign : {likelier, -likelier}) {
                if (sign < 0 && (dark_[job] || job == kept_)) continue;
                signs.push_back(sign);
                independent.push_back(deviation_of(sign));
                self(self, cost + independent.back().squaredNorm());
                signs.pop_back();
                independent.pop_back();
            }
        };
        if (decomposed.info() == Eigen::Success) follow(follow, 0);
        if (found.empty()) rough_.insert(rough_.end(), of.jobs.begin(), of.jobs.end());
        std::ranges::stable_sort(found, {}, &smooth::cost);
        signs_.emplace_back();
        options_.emplace_back();
        for (smooth& each : found) {
            if (each.cost > limit()) break;
            signs_.back().push_back(std::move(each.signs));
            options_.back().push_back({each.cost, {}});
        }
    }
}

/// The largest slope along a line that its choices allow.
double evidence::slope(std::size_t l) const {
    double largest = 0;
    for (const std::vector<int>& signs : signs_[l]) {
        Eigen::Vector3d product = Eigen::Vector3d::Zero();
        double square = 0;
        for (std::size_t i = 0; i < signs.size(); ++i) {
            const double h = lines_[l].steps[i];
            product += h * (signs[i] * dipole(lines_[l].jobs[i]) - dipole(0));
            square += h * h;
        }
        if (square > 0) largest = std::max(largest, product.norm() / square);
    }
    return largest;
}

double evidence::mean_slope() const {
    if (lines_.empty()) return 0;
    double squares = 0;
    for (std::size_t l = 0; l < lines_.size(); ++l) squares += std::pow(slope(l), 2);
    return std::sqrt(squares / static_cast<double>(lines_.size()));
}

void evidence::see_sums() {
    if (!of_.complete()) return;
    const sums_of_jobs sums(rigid_motions(set_.atoms), of_.weights);
    // Errors come from the digits, ...
    Eigen::VectorXd variance = sums.variance() * std::pow(noise(), 2);
    // ... from what the polynomials have behind the slope, and from the places.
    for (std::size_t l = 0; l < lines_.size(); ++l) {
        const double usual = std::max(slope(l), mean_slope());
        Eigen::MatrixXd errors =
            Eigen::MatrixXd::Zero(variance.size(), 1 + index(further_derivatives.size()));
        for (std::size_t i = 0; i < lines_[l].jobs.size(); ++i) {
            const Eigen::VectorXd of_job = sums.weight.col(index(lines_[l].jobs[i]));
            const double h = lines_[l].steps[i];
            double term = h * h / 2;
            errors.col(0) += of_job * term * usual_derivatives[1] * scale_;
            for (std::size_t n = 0; n < further_derivatives.size(); ++n) {
                term *= h / static_cast<double>(n + 3);
                errors.col(index(n + 1)) += of_job * term * further_derivatives[n] * usual;
            }
            variance += of_job.cwiseAbs2() * std::pow(usual * place_error(), 2);
        }
        variance += errors.rowwise().squaredNorm();
    }
    const auto share = [&](std::size_t job, double sign) -> Eigen::VectorXd {
        Eigen::Matrix3Xd result = sums.share(job, sign * dipole(job));
        result.array().rowwise() /= variance.transpose().array().sqrt();
        return result.reshaped();
    };
    reference_share_ = share(0, 1);
    for (std::size_t l = 0; l < lines_.size(); ++l) {
        for (std::size_t c = 0; c < options_[l].size(); ++c) {
            options_[l][c].share = Eigen::VectorXd::Zero(reference_share_.size());
            for (std::size_t i = 0; i < lines_[l].jobs.size(); ++i) {
                options_[l][c].share += share(lines_[l].jobs[i], signs_[l][c][i]);
            }
        }
    }
}

std::vector<int> evidence::signs_of(const choices& of) const {
    std::vector<int> signs(set_.jobs.size(), 1);
    for (std::size_t l = 0; l < lines_.size(); ++l) {
        for (std::size_t i = 0; i < lines_[l].jobs.size(); ++i) {
            signs[lines_[l].jobs[i]] = signs_[l][of.of[l]][i];
        }
    }
    return signs;
}

/// The jobs that have to be reversed to make one choice the other, but for the sign of all.
std::vector<std::size_t> evidence::differing(const std::vector<int>& a,
                                             const std::vector<int>& b) const {
    std::vector<std::size_t> different;
    std::vector<std::size_t> equal;
    for (std::size_t j = 0; j < a.size(); ++j) {
        if (!dark_[j]) (a[j] == b[j] ? equal : different).push_back(j);
    }
    return different.size() <= equal.size() ? different : equal;
}

double evidence::change(const std::vector<int>& a, const std::vector<int>& b) const {
    if (!of_.complete()) return 0;
    Eigen::MatrixXd sum(index(a.size()), 3);
    Eigen::MatrixXd difference = sum;
    for (std::size_t j = 0; j < a.size(); ++j) {
        sum.row(index(j)) = (a[j] + b[j]) * dipole(j);
        difference.row(index(j)) = (a[j] - b[j]) * dipole(j);
    }
    const auto largest = [&](const Eigen::MatrixXd& dipoles) {
        return (view(of_.weights) * dipoles).cwiseAbs().maxCoeff();
    };
    return std::min(largest(sum), largest(difference));
}

std::string evidence::names_of(const std::vector<std::size_t>& jobs) const {
    std::vector<std::string> names;
    for (const std::size_t job : jobs) {
        if (names.size() + 1 == most_names && jobs.size() > most_names) {
            names.push_back(std::to_string(jobs.size() - names.size()) + " more");
            break;
        }
        names.push_back(flib::printable(set_.jobs[job].name));
    }
    return (jobs.size() == 1 ? "the sign of " : "the signs of ") + listed(names) +
           (jobs.size() == 1 ? " is open" : " are open");
}

found_signs evidence::find() const {
    found_signs result;
    if (!rough_.empty()) {
        result.signs.assign(set_.jobs.size(), 1);
        result.open = rough_;
        std::ranges::sort(result.open);
        result.reason = names_of(result.open) + ": no smooth dipole fits the others";
        return result;
    }
    choices smoothest{std::vector<std::size_t>(lines_.size()), 0};
    for (const options& each : options_) smoothest.cost += each.front().cost;
    result.signs = signs_of(smoothest);
    const auto sums = static_cast<double>(reference_share_.size());
    const double fits = smoothest.cost + fitting * sums;
    // Where even the best is not as smooth as usual, others have to be worse by more.
    const double terms = 3 * static_cast<double>(set_.jobs.size()) + sums;
    const auto margin = [&](double cost) { return convincing + 3 * std::max(0.0, cost - terms); };

    std::vector<choices> found;
    bool all = true;
    if (reference_share_.size() == 0) {
        // Each line by itself.
        found.push_back(smoothest);
        for (std::size_t l = 0; l < lines_.size(); ++l) {
            for (std::size_t c = 1; c < options_[l].size(); ++c) {
                found.push_back(smoothest);
                found.back().of[l] = c;
                found.back().cost += options_[l][c].cost - options_[l].front().cost;
            }
        }
        std::ranges::stable_sort(found, {}, &choices::cost);
    } else if (auto tried = balance(options_, reference_share_, fits + margin(fits), most_kept)) {
        found = std::move(*tried);
    } else {
        all = false;
    }

    if (!all) {
        for (std::size_t l = 0; l < lines_.size(); ++l) {
            for (std::size_t i = 0; i < lines_[l].jobs.size(); ++i) {
                const auto other = [&](const auto& signs) { return signs[i] != signs_[l][0][i]; };
                if (std::ranges::any_of(signs_[l], other)) result.open.push_back(lines_[l].jobs[i]);
            }
        }
        std::ranges::sort(result.open);
        result.reason = names_of(result.open) + ": too many choices to be tried";
        return result;
    }
    if (!found.empty()) result.signs = signs_of(found.front());
    if (found.empty() || found.front().cost > fits) {
        result.reason =
            "with no choice of signs do the sums over all atoms vanish: is a job of another state "
            "among them, or a field around the molecule?";
        return result;
    }
    for (const choices& each : found) {
        if (each.cost > found.front().cost + margin(found.front().cost)) break;
        const std::vector<int> signs = signs_of(each);
        if (result.alternatives.size() < most_alternatives) {
            result.alternatives.push_back(signs);
            result.largest_change = std::max(result.largest_change, change(signs, result.signs));
        }
        for (const std::size_t job : differing(signs, result.signs)) result.open.push_back(job);
    }
    std::ranges::sort(result.open);
    result.open.erase(std::unique(result.open.begin(), result.open.end()), result.open.end());
    if (!result.open.empty()) {
        result.reason = names_of(result.open);
        if (sums == 0) {
            result.reason += ": there are no sums, since not all coordinates are displaced";
        }
    } else if (log2_of_choices(options_) > 0 &&
               log2_of_chance(options_, chance_radius) > small_chance) {
        result.reason = "one choice of signs fits, but there are so many that it may by chance";
    } else {
        result.decided = true;
        result.alternatives.clear();
    }
    return result;
}

}  // namespace

found_signs find_signs(const displaced_set& set) {
    return evidence(set).find();
}

displaced_set with_signs(displaced_set set, std::span<const int> signs) {
    require_count("signs", signs.size(), set.jobs.size());
    for (std::size_t j = 0; j < signs.size(); ++j) {
        const int sign = signs[j];
        displaced_job& job = set.jobs[j];
        if (sign != 1 && sign != -1) {
            throw flib::run_error("the sign of " + flib::printable(job.name) + " is " +
                                  std::to_string(sign) + ", not 1 or -1");
        }
        job.sign *= sign;
        job.dipole = scaled(sign, job.dipole);
        if (!job.moments) continue;
        job.moments->velocity_dipole = scaled(sign, job.moments->velocity_dipole);
        job.moments->magnetic_dipole = scaled(sign, job.moments->magnetic_dipole);
        for (double& component : job.moments->velocity_quadrupole) component *= sign;
    }
    return set;
}

}  // namespace sgn
