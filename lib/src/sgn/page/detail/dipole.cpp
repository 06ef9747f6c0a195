// The dipole along the jobs.
#include <algorithm>
#include <cmath>

#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "flib/text/shown_text.h"
#include "sgn/page/detail/drawings.h"
#include "sgn/page/detail/svg.h"

namespace sgn::page {
namespace {
namespace dipole {

using flib::decimal;
using sgn::displaced_job;
using svg::point;

constexpr double width = 1000;
constexpr double left = 72;
constexpr double right = 14;
constexpr double panel = 132;  // height of the drawing of one component
constexpr double between = 40;
constexpr double top = 24;

/// The stem of a file name.
std::string stem_of(const std::string& name) {
    std::string stem = name.substr(name.rfind('/') + 1);
    if (stem.size() > 4 && stem.ends_with(".sgn")) stem.resize(stem.size() - 4);
    return stem;
}

/// As printed, before the sign was put right.
double printed(const displaced_job& of, std::size_t k) {
    return of.sign < 0 ? -of.dipole[k] : of.dipole[k];
}

/// Whether reversing the sign of a job is part of what would mend the sum rules best.
bool is_suspect(const sgn::report& of, std::size_t job) {
    const auto& flips = of.suspects.flips;
    return !flips.empty() && std::ranges::find(flips.front(), job) != flips.front().end();
}

double place_of(std::size_t i, std::size_t jobs) {
    return left +
           (width - left - right) * (static_cast<double>(i) + 0.5) / static_cast<double>(jobs);
}

std::string panel_of(const sgn::report& of, std::size_t k, double from) {
    const auto& jobs = of.set.jobs;
    const int digits = std::clamp(of.set.dipole_decimals, 1, 8);
    const auto [low, high] =
        std::ranges::minmax(jobs, {}, [k](const displaced_job& each) { return each.dipole[k]; });
    // Printed values may have the other sign; rounding is not to look like something.
    const double highest = std::max({10 * std::pow(10, -of.set.dipole_decimals),
                                     std::abs(low.dipole[k]), std::abs(high.dipole[k])});
    const svg::scale y{-1.12 * highest, 1.12 * highest, from + panel, from};

    std::string text = svg::rectangle({left, from}, width - left - right, panel, "panel");
    const std::vector<double> marks = svg::ticks(y.low, y.high, 6);
    for (const double mark : marks) {
        const bool zero = std::abs(mark) < 1e-12;
        text += svg::line({left, y(mark)}, {width - right, y(mark)}, zero ? "zero" : "grid") +
                svg::text({left - 8, y(mark) + 4}, decimal(mark, svg::decimals_of(marks)), "small",
                          "end");
    }
    text +=
        svg::text({left, from - 7}, std::string("\u03BC") + sgn::axis_names[k] + " (au)", "label") +
        svg::text({width - right, from - 7},
                  "corrected: " + decimal(low.dipole[k], digits) + " to " +
                      decimal(high.dipole[k], digits) + " au",
                  "small", "end");

    const double size =
        std::clamp(0.3 * (width - left - right) / static_cast<double>(jobs.size()), 1.1, 4.2);
    std::vector<point> before;
    std::vector<point> after;
    std::string marks_before;
    std::string marks_after;
    std::string jumps;
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        const displaced_job& each = jobs[i];
        const double x = place_of(i, jobs.size());
        const std::string hint = flib::printable(each.name) + ": printed " +
                                 decimal(printed(each, k), digits) + ", corrected " +
                                 decimal(each.dipole[k], digits);
        before.push_back({x, y(printed(each, k))});
        after.push_back({x, y(each.dipole[k])});
        if (std::abs(before.back()[1] - after.back()[1]) > 0.5) {
            jumps += svg::line(before.back(), after.back(), "jump");
            marks_before += svg::circle(before.back(), size, "printed", hint);
        }
        const bool suspect = is_suspect(of, i);
        if (suspect) marks_after += svg::circle(after.back(), size + 5, "suspect-ring");
        marks_after +=
            svg::circle(after.back(), size, suspect ? "corrected suspect" : "corrected", hint);
    }
    return text + svg::path(before, "printed-line") + jumps + svg::path(after, "corrected-line") +
           marks_before + marks_after;
}

}  // namespace dipole
}  // namespace

std::vector<std::string> short_names(const sgn::displaced_set& set) {
    std::vector<std::string> names;
    for (const displaced_job& each : set.jobs) names.push_back(dipole::stem_of(each.name));
    // What all displaced jobs begin with, cut between words only.
    const std::string first = names.back();
    std::size_t shared = first.size();
    for (std::size_t i = 1; i < names.size(); ++i) {
        const std::string_view other = std::string_view(names[i]).substr(0, shared);
        shared = static_cast<std::size_t>(std::ranges::mismatch(other, first).in1 - other.begin());
    }
    constexpr std::string_view between_words = "_-. ";
    while (shared > 0 && between_words.find(first[shared - 1]) == std::string_view::npos) --shared;
    for (std::string& each : names) {
        if (each.size() > shared && each.starts_with(first.substr(0, shared))) {
            each.erase(0, shared);
        }
    }
    return names;
}

std::string dipole_drawing(const sgn::report& of) {
    using namespace dipole;
    const std::size_t jobs = of.set.jobs.size();
    std::string text;
    double at = top;
    for (std::size_t k = 0; k < 3; ++k) {
        text += panel_of(of, k, at);
        at += panel + between;
    }
    // Names as long and as many as there is room for.
    constexpr std::size_t most_names = 60;
    const std::size_t every = (jobs + most_names - 1) / most_names;
    const auto names = short_names(of.set);
    double longest = 0;
    for (std::size_t i = 0; i < jobs; ++i) {
        if (i % every != 0 && !is_suspect(of, i)) continue;
        const std::string name = flib::shortened(flib::printable(names[i]), 18);
        longest = std::max(longest, static_cast<double>(flib::shown_width(name)));
        text += svg::text({place_of(i, jobs) + 4, at - between + 14}, name,
                          is_suspect(of, i) ? "small bad-text" : "small", "end", -55);
    }
    return svg::drawing(width, at - between + 26 + 5.2 * longest, "chart",
                        "Components of the transition dipole along the jobs, as printed and as "
                        "corrected",
                        text);
}

}  // namespace sgn::page
