// How often the verdict on a set is right, and how well uncertainties tell errors: sets of made-up
// molecules, whose dipoles are known without rounding, noise and steps.
//
//     sign_simulation [sets]
//
// Prints three tables: right sets (false alarms, the mean square of the residues), derivatives
// (how many are off by less than one and two of their uncertainties), and sets with wrong signs.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "flib/util/units.h"
#include "sgn/check/report.h"
#include "sgn/set/from_arrays.h"

namespace {

using sgn::vec3;
using geometry = std::vector<vec3>;

std::mt19937_64 dice(20261122);

double uniform(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(dice);
}

double gaussian() {
    return std::normal_distribution<double>()(dice);
}

/// A dipole that moves and turns with its molecule: pairs of atoms that exchange charge, the more
/// the nearer they are, and as third atoms let them. What third atoms do is as curved as what the
/// pair does: in sums the errors of steps cancel then to about a half, as those of water do.
struct molecule {
    geometry x;                     // Angstrom, six decimals
    std::vector<double> exchange;   // of pairs, au
    std::vector<double> range;      // of pairs, 1/Bohr
    std::vector<double> neighbour;  // of pairs: what a third atom changes
    std::vector<double> reach;      // of pairs, as those third atoms: 1/Bohr
    std::vector<double> phase;      // of pairs, as those third atoms
    std::vector<double> constant;   // of pairs

    std::size_t size() const { return x.size(); }
};

vec3 dipole(const molecule& of, const geometry& x) {
    const std::size_t n = x.size();
    vec3 total{};
    std::vector<double> distance(n * n);
    std::vector<double> near(n * n);
    for (std::size_t a = 0; a < n; ++a) {
        for (std::size_t b = 0; b < a; ++b) {
            const std::size_t pair = a * n + b;
            const double r = sgn::length(sgn::difference(x[a], x[b])) / flib::bohr_radius;
            distance[pair] = r;
            near[pair] = near[b * n + a] =
                std::exp(-r / 3) * (1 + std::cos(of.reach[pair] * (r - 2) + of.phase[pair]));
        }
    }
    for (std::size_t a = 0; a < n; ++a) {
        for (std::size_t b = 0; b < a; ++b) {
            const std::size_t pair = a * n + b;
            const double r = distance[pair];
            double crowd = 0;
            for (std::size_t c = 0; c < n; ++c) crowd += near[a * n + c] * near[b * n + c];
            crowd = 1 + 3 * of.neighbour[pair] * crowd;
            const double charge = of.constant[pair] + of.exchange[pair] * std::exp(-r / 2) *
                                                          std::cos(of.range[pair] * (r - 2)) *
                                                          crowd;
            for (std::size_t k = 0; k < 3; ++k) {
                total[k] += charge * (x[a][k] - x[b][k]) / flib::bohr_radius;
            }
        }
    }
    return total;
}

/// Charges that do not change, by which the dipole vanishes but for `left` of it.
void darken(molecule& of, double left) {
    const std::size_t n = of.size();
    vec3 rest = sgn::scaled(-(1 - left), dipole(of, of.x));
    // Steepest descent with exact steps; each pair takes what it is along.
    for (int sweep = 0; sweep < 2000 && sgn::length(rest) > 1e-14; ++sweep) {
        std::vector<double> parts(n * n);
        vec3 made{};
        for (std::size_t a = 0; a < n; ++a) {
            for (std::size_t b = 0; b < a; ++b) {
                const vec3 arm =
                    sgn::scaled(1 / flib::bohr_radius, sgn::difference(of.x[a], of.x[b]));
                double& part = parts[a * n + b];
                for (std::size_t k = 0; k < 3; ++k) part += arm[k] * rest[k];
                made = sgn::sum(made, sgn::scaled(part, arm));
            }
        }
        double up = 0;
        double down = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            up += made[k] * rest[k];
            down += made[k] * made[k];
        }
        const double step = down > 0 ? up / down : 0;
        for (std::size_t i = 0; i < parts.size(); ++i) of.constant[i] += step * parts[i];
        rest = sgn::difference(rest, sgn::scaled(step, made));
    }
}

molecule made_up(std::size_t atoms, bool flat, double left) {
    molecule result;
    const double side = 1.1 * std::pow(static_cast<double>(atoms), flat ? 0.5 : 1.0 / 3) + 0.7;
    while (result.x.size() < atoms) {
        vec3 place{};
        for (std::size_t k = 0; k < (flat ? 2U : 3U); ++k) {
            place[k] = std::round(uniform(0, side) * 1e6) / 1e6;
        }
        const bool free = std::ranges::all_of(result.x, [&](const vec3& other) {
            return sgn::length(sgn::difference(place, other)) > 0.9;
        });
        if (free) result.x.push_back(place);
    }
    const double sharpness = std::exp(uniform(std::log(1.2), std::log(5)));
    for (std::size_t i = 0; i < atoms * atoms; ++i) {
        result.exchange.push_back(gaussian());
        result.range.push_back(sharpness * uniform(0.5, 1.2));
        result.neighbour.push_back(uniform(-2, 2));
        result.reach.push_back(sharpness * uniform(0.5, 1.2));
        result.phase.push_back(uniform(-3, 3));
        result.constant.push_back(0);
    }
    // Derivatives of some tenths are usual.
    geometry moved = result.x;
    moved[0][0] += 0.001;
    const double slope =
        sgn::length(sgn::difference(dipole(result, moved), dipole(result, result.x))) /
        (0.001 / flib::bohr_radius);
    for (double& each : result.exchange) each *= uniform(0.2, 0.8) / std::max(slope, 1e-3);
    darken(result, left);
    return result;
}

/// How values are printed and how well jobs converged.
struct precision {
    int decimals = 4;
    double noise = 0;  // au
};

sgn::job_arrays job(const molecule& of, const std::string& name, const geometry& x,
                    const precision& how) {
    sgn::job_arrays result{x, dipole(of, x), {}, name};
    const double unit = std::pow(10, how.decimals);
    for (double& value : result.dipole) {
        value = std::round((value + how.noise * gaussian()) * unit) / unit;
    }
    return result;
}

using jobs_of_set = std::vector<sgn::job_arrays>;  // the reference first

enum class kind { pairs, two_steps, one_sided, oblique };

jobs_of_set displaced(const molecule& of, kind what, const precision& how, double step = 0.01) {
    jobs_of_set jobs{job(of, "ref", of.x, how)};
    const std::size_t coordinates = 3 * of.size() + (what == kind::oblique ? of.size() : 0);
    for (std::size_t c = 0; c < coordinates; ++c) {
        geometry shift(of.size());
        if (what == kind::oblique) {
            for (vec3& each : shift) {
                for (double& s : each) s = std::round(uniform(-1, 1) * step * 1e6) / 1e6;
            }
        } else {
            shift[c / 3][c % 3] = step;
        }
        for (const int factor : {1, -1, 2, -2}) {
            if (std::abs(factor) == 2 && what != kind::two_steps) continue;
            if (factor < 0 && what == kind::one_sided) continue;
            geometry x = of.x;
            for (std::size_t a = 0; a < x.size(); ++a) {
                x[a] = sgn::sum(x[a], sgn::scaled(factor, shift[a]));
                for (double& each : x[a]) each = std::round(each * 1e6) / 1e6;
            }
            std::string name = std::to_string(c / 3 + 1);
            name += sgn::axis_names[c % 3];
            jobs.push_back(job(of, name + std::to_string(factor), x, how));
        }
    }
    return jobs;
}

sgn::displaced_set set_of(const jobs_of_set& jobs, const precision& how) {
    const std::vector<std::string> symbols(jobs.front().x.size(), "C");
    sgn::array_facts facts;
    facts.dipole_decimals = how.decimals;
    facts.coordinate_decimals = 6;
    return sgn::set_of_arrays(symbols, jobs.front(), std::span(jobs).subspan(1), facts);
}

sgn::report judged(const jobs_of_set& jobs, const precision& how) {
    return sgn::analyse(set_of(jobs, how));
}

/// The derivatives of the dipole without errors, 3N rows.
std::vector<vec3> true_derivatives(const molecule& of) {
    std::vector<vec3> rows;
    const double h = 0.0015;
    for (std::size_t c = 0; c < 3 * of.size(); ++c) {
        const auto at = [&](double factor) {
            geometry x = of.x;
            x[c / 3][c % 3] += factor * h * flib::bohr_radius;
            return dipole(of, x);
        };
        const vec3 near = sgn::difference(at(1), at(-1));
        const vec3 far = sgn::difference(at(2), at(-2));
        rows.push_back(sgn::scaled(1 / (12 * h), sgn::difference(sgn::scaled(8, near), far)));
    }
    return rows;
}

std::size_t drawn_size() {
    // As many small molecules as large ones.
    return static_cast<std::size_t>(std::round(3 * std::exp(uniform(0, 1) * std::log(100.0 / 3))));
}

struct tally {
    std::vector<double> values;
    void add(double value) { values.push_back(value); }
    double part(double share) {
        if (values.empty()) return 0;
        std::ranges::sort(values);
        return values[std::min(values.size() - 1, static_cast<std::size_t>(
                                                      share * static_cast<double>(values.size())))];
    }
    double below(double limit) const {
        const auto n = std::ranges::count_if(values, [&](double v) { return v < limit; });
        return 100.0 * static_cast<double>(n) /
               static_cast<double>(std::max<std::size_t>(1, values.size()));
    }
    double mean() const {
        double sum = 0;
        for (const double v : values) sum += v;
        return sum / static_cast<double>(std::max<std::size_t>(1, values.size()));
    }
};

/// Right sets, of up to so many atoms.
struct row_of_right_sets {
    const char* name;
    kind what;
    precision how;
    std::size_t most;
};

void right_sets_and_coverage(int sets) {
    const row_of_right_sets rows[] = {
        {"4 decimals", kind::pairs, {4, 0}, 100},
        {"9 decimals", kind::pairs, {9, 0}, 100},
        {"9, two steps", kind::two_steps, {9, 0}, 30},
        {"9, noise 1e-6", kind::pairs, {9, 1e-6}, 100},
        {"9, noise 1e-5", kind::pairs, {9, 1e-5}, 100},
        {"9, two steps, noise 1e-6", kind::two_steps, {9, 1e-6}, 30},
        {"9, two steps, noise 1e-5", kind::two_steps, {9, 1e-5}, 30},
        {"4, oblique", kind::oblique, {4, 0}, 20},
        {"9, oblique", kind::oblique, {9, 0}, 20},
        {"4, one-sided", kind::one_sided, {4, 0}, 30},
        {"9, one-sided", kind::one_sided, {9, 0}, 30},
    };
    std::printf("%-26s %5s %7s %7s %7s | %8s %8s %8s\n", "right sets", "sets", "alarms", "mean",
                "99 %", "within 1", "within 2", "within 3");
    for (const row_of_right_sets& each : rows) {
        int alarms = 0;
        tally mean_square;
        tally off;
        for (int i = 0; i < sets; ++i) {
            const std::size_t atoms = std::min(each.most, drawn_size());
            const molecule of = made_up(atoms, i % 5 == 0, i % 3 == 0 ? 0.001 : 1);
            const sgn::report found = judged(displaced(of, each.what, each.how), each.how);
            if (found.dipole_rules.judged) {
                mean_square.add(found.dipole_rules.chi2 /
                                static_cast<double>(found.dipole_rules.sums));
                if (!found.dipole_rules.satisfied || !found.suspects.flips.empty() ||
                    found.suspects.unsound) {
                    ++alarms;
                }
            }
            const std::vector<vec3> right = true_derivatives(of);
            for (std::size_t c = 0; c < right.size(); ++c) {
                for (std::size_t k = 0; k < 3; ++k) {
                    off.add(std::abs(found.derivatives.dipole(c, k) - right[c][k]) /
                            found.uncertainties.total(c, k));
                }
            }
        }
        std::printf("%-26s %5d %7d %7.2f %7.2f | %8.1f %8.1f %8.1f\n", each.name, sets, alarms,
                    mean_square.mean(), mean_square.part(0.99), off.below(1), off.below(2),
                    off.below(3));
    }
}

/// 1 to 6 of the signs are wrong.
void wrong_sets(int sets) {
    struct row {
        const char* name;
        precision how;
        double left;  // of the dipole at the reference
    };
    const row rows[] = {{"4 decimals, bright", {4, 0}, 1}, {"4 decimals, dim", {4, 0}, 0.01},
                        {"4 decimals, dark", {4, 0}, 0},   {"9 decimals, bright", {9, 0}, 1},
                        {"9 decimals, dark", {9, 0}, 0},   {"9, noise 1e-5, dark", {9, 1e-5}, 0}};
    std::printf("%-22s %5s %7s %7s %7s %7s %7s %7s\n", "1 to 6 wrong signs", "sets", "right",
                "among", "unsound", "wrong", "missed", "flatly");
    for (const row& each : rows) {
        int right = 0;
        int among = 0;
        int unsound = 0;
        int wrong = 0;
        int missed = 0;
        int flatly = 0;
        for (int i = 0; i < sets; ++i) {
            const molecule of = made_up(drawn_size(), i % 5 == 0, each.left);
            jobs_of_set jobs = displaced(of, kind::pairs, each.how);
            const auto count = static_cast<std::size_t>(1 + i % 6);
            std::set<std::size_t> reversed;
            while (reversed.size() < std::min(count, jobs.size() / 3)) {
                reversed.insert(1 + dice() % (jobs.size() - 1));
            }
            for (const std::size_t job : reversed) {
                jobs[job].dipole = sgn::scaled(-1, jobs[job].dipole);
            }
            const sgn::report found = judged(jobs, each.how);
            // Wrong signs that are told not to be seen, and those that change nothing, are
            // none.
            const auto matters = [&](std::size_t job) {
                const auto& unseen = found.suspects.unseen;
                return std::ranges::find(unseen, job) == unseen.end() &&
                       sgn::length(jobs[job].dipole) > 0;
            };
            const auto seen = [&](const auto& those) {
                std::set<std::size_t> result;
                for (const std::size_t job : those) {
                    if (matters(job)) result.insert(job);
                }
                return result;
            };
            const std::set<std::size_t> truth = seen(reversed);
            const auto& flips = found.suspects.flips;
            const auto is_among = [&](const auto& guesses) {
                return std::ranges::any_of(guesses,
                                           [&](const auto& guess) { return seen(guess) == truth; });
            };
            if (found.suspects.unsound) {
                ++unsound;
            } else if (flips.empty() ? truth.empty() : seen(flips.front()) == truth) {
                ++right;
            } else if (is_among(flips) || is_among(found.suspects.as_good)) {
                ++among;
            } else if (!flips.empty()) {
                ++wrong;
                if (found.suspects.flips.size() + found.signs.as_good.size() == 1) ++flatly;
            } else {
                ++missed;
                if (found.signs.complete()) ++flatly;
            }
        }
        std::printf("%-22s %5d %7d %7d %7d %7d %7d %7d\n", each.name, sets, right, among, unsound,
                    wrong, missed, flatly);
    }
}

/// The other moments of a molecule: vectors that move and turn with it as the dipole does, the
/// magnetic one of them about the centroid, and six numbers about it.
struct moment_model {
    molecule velocity;
    molecule about_centroid;
    molecule quadrupole[2];

    explicit moment_model(const molecule& of)
        : velocity(other(of)), about_centroid(other(of)), quadrupole{other(of), other(of)} {}

    /// As large, of other numbers.
    static molecule other(molecule of) {
        std::ranges::shuffle(of.exchange, dice);
        std::ranges::shuffle(of.neighbour, dice);
        std::ranges::fill(of.constant, 0);
        return of;
    }

    /// Velocity dipole, magnetic dipole, quadrupole; jobs that converged less are off in all of
    /// them, also by what moving the origin makes of the velocity dipole.
    std::vector<double> at(const geometry& x, double noise = 0) const {
        const auto off = [&](vec3 of) {
            if (noise > 0) {
                for (double& each : of) each += noise * gaussian();
            }
            return of;
        };
        const vec3 v = off(dipole(velocity, x));
        const vec3 m = off(dipole(about_centroid, x));
        vec3 centre{};
        for (const vec3& each : x) {
            centre = sgn::sum(centre, sgn::scaled(1 / flib::bohr_radius, each));
        }
        centre = sgn::scaled(1 / static_cast<double>(x.size()), centre);
        std::vector<double> all(v.begin(), v.end());
        for (std::size_t k = 0; k < 3; ++k) {
            const std::size_t l = (k + 1) % 3;
            const std::size_t n = (k + 2) % 3;
            all.push_back(m[k] + centre[l] * v[n] - centre[n] * v[l]);
        }
        const vec3 diagonal = off(off(dipole(quadrupole[0], x)));
        const vec3 others = off(dipole(quadrupole[1], x));
        for (std::size_t k = 0; k < 3; ++k) all.push_back(diagonal[k] + 2 * centre[k] * v[k]);
        for (std::size_t k = 0; k < 3; ++k) {
            const std::size_t l = k == 2 ? 1 : 0;
            const std::size_t n = k == 0 ? 1 : 2;
            all.push_back(others[k] + centre[l] * v[n] + centre[n] * v[l]);
        }
        return all;
    }
};

/// How far the derivatives of the other moments are off, in their uncertainties.
void moments_coverage(int sets) {
    const row_of_right_sets rows[] = {
        {"9 decimals", kind::pairs, {9, 0}, 100},
        {"9, noise 1e-5", kind::pairs, {9, 1e-5}, 100},
        {"9, two steps, noise 1e-6", kind::two_steps, {9, 1e-6}, 30},
        {"9, two steps, noise 1e-5", kind::two_steps, {9, 1e-5}, 30},
        {"9, oblique", kind::oblique, {9, 0}, 20},
    };
    std::printf("%-26s %5s %7s | %20s | %20s | %20s\n", "other moments", "sets", "alarms",
                "velocity 1, 2, 3", "magnetic 1, 2, 3", "quadrupole 1, 2, 3");
    for (const row_of_right_sets& each : rows) {
        int alarms = 0;
        tally off[3];
        for (int i = 0; i < sets; ++i) {
            const molecule of =
                made_up(std::min(each.most, drawn_size()), i % 5 == 0, i % 3 == 0 ? 0.001 : 1);
            const moment_model model(of);
            const jobs_of_set jobs = displaced(of, each.what, each.how);
            sgn::displaced_set set = set_of(jobs, each.how);
            for (std::size_t j = 0; j < jobs.size(); ++j) {
                std::vector<double> all = model.at(jobs[j].x, each.how.noise);
                for (double& value : all) value = std::round(value * 1e9) / 1e9;
                sgn::other_moments& moments = set.jobs[j].moments.emplace();
                std::copy_n(all.begin(), 3, moments.velocity_dipole.begin());
                std::copy_n(all.begin() + 3, 3, moments.magnetic_dipole.begin());
                std::copy_n(all.begin() + 6, 6, moments.velocity_quadrupole.begin());
            }
            set.has_moments = true;
            set.moment_decimals = {9, 9, 9};
            const sgn::report found = sgn::analyse(set);
            alarms += !found.velocity_rules.satisfied || !found.magnetic_rules.satisfied;
            const double h = 0.0015;  // Bohr
            for (std::size_t c = 0; c < 3 * of.size(); ++c) {
                const auto at = [&](double factor) {
                    geometry x = of.x;
                    x[c / 3][c % 3] += factor * h * flib::bohr_radius;
                    return model.at(x);
                };
                const auto far_back = at(-2), back = at(-1), on = at(1), far_on = at(2);
                std::size_t first = 0;
                std::size_t moment = 0;
                for (const auto& [name, made] : sgn::other_derivatives(found.derivatives)) {
                    for (std::size_t k = 0; k < made->values.columns; ++k) {
                        const std::size_t j = first + k;
                        const double right =
                            (8 * (on[j] - back[j]) - (far_on[j] - far_back[j])) / (12 * h);
                        off[moment].add(std::abs(made->values(c, k) - right) /
                                        made->uncertainty(c, k));
                    }
                    first += made->values.columns;
                    ++moment;
                }
            }
        }
        std::printf("%-26s %5d %7d |", each.name, sets, alarms);
        for (const tally& one : off) {
            std::printf(" %6.1f %6.1f %6.1f |", one.below(1), one.below(2), one.below(3));
        }
        std::printf("\n");
    }
}

}  // namespace

int main(int argc, char** argv) {
    const int sets = argc > 1 ? std::atoi(argv[1]) : 100;
    right_sets_and_coverage(sets);
    wrong_sets(sets);
    moments_coverage(sets);
    return 0;
}
