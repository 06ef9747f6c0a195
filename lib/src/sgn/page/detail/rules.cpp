// The sum rules as bars against their rounding.
#include <algorithm>
#include <cmath>
#include <string_view>

#include "flib/io/fixed_field.h"
#include "sgn/page/detail/drawings.h"
#include "sgn/page/detail/svg.h"

namespace sgn::page {
namespace {
namespace rules {

constexpr double width = 1000;
constexpr double name_width = 196;
constexpr double number_width = 64;
constexpr double column = width / 2;
constexpr double row = 24;
constexpr double top = 40;
constexpr double bottom = top + 9 * row + 4;

/// The classes of a bar and of the number beside it.
struct look {
    std::string_view bar;
    std::string_view number;
};

/// A residue that rounding does not explain is a doubt only where the sums fail.
look look_of(double ratio, bool satisfied) {
    if (ratio <= sgn::unremarkable_residue) return {"bar", "small"};
    if (satisfied) return {"bar bar-beyond", "small beyond-text"};
    return {"bar bar-bad", "small bad-text"};
}

/// Straight up to a few, then by powers of ten.
double squeezed(double ratio) {
    return std::log10(1 + ratio);
}

/// The places of residues whose bars begin right of `from` and reach at most to `most`.
struct bars {
    double from;
    double most;

    double begin() const { return from + name_width; }
    double length(double ratio) const {
        // Of absurd values the ratio is infinite.
        return std::min(1.0, squeezed(ratio) / squeezed(most)) *
               (column - number_width - name_width);
    }
    double length_of(const sgn::residue& of) const { return std::max(length(of.ratio()), 1.5); }
};

std::string axis_of(const bars& on, std::string_view title) {
    std::string text =
        svg::text({on.begin(), 14}, title, "label") +
        // What rounding explains: most residues lie within twice their uncertainty.
        svg::rectangle({on.begin(), top - 8}, on.length(2), bottom - top + 8, "rounding");
    for (const double mark : {1.0, 3.0, 10.0, 30.0, 100.0, 300.0, 1000.0, 1e4, 1e5}) {
        if (mark > on.most) break;
        const double x = on.begin() + on.length(mark);
        text += svg::line({x, top - 8}, {x, bottom}, "grid") +
                svg::text({x, top - 12}, svg::number(mark), "small", "middle");
    }
    return text;
}

}  // namespace rules
}  // namespace

std::string rules_drawing(const sgn::report& of) {
    using namespace rules;
    const sgn::sum_rules& found = of.dipole_rules;
    const double most = std::max(6.0, 1.15 * found.largest);
    const bars moving{0, most};
    const bars turning{column, most};
    std::string text =
        axis_of(moving, "moving the molecule") + axis_of(turning, "turning the molecule");

    const bool has_mended = !of.suspects.flips.empty() && of.suspects.mended.judged;
    const auto residues = residues_of(found);
    const auto mended = has_mended ? residues_of(of.suspects.mended) : residues;
    std::size_t next = 0;
    for (std::size_t i = 0; i < 18; ++i) {
        const bool turns = i % 2 == 1;
        const bars& on = turns ? turning : moving;
        const std::size_t line = i / 2;
        const double y = top + row * static_cast<double>(line);
        const std::string name{sgn::axis_names[i / 6]};
        text += svg::text({on.begin() - 10, y + 12},
                          (turns ? "about " : "along ") + name + ", component \u03BC" +
                              sgn::axis_names[i / 2 % 3],
                          "small", "end");
        // About the axis of a linear molecule there is none.
        if (next == residues.size() || residues[next].turning != turns) {
            text += svg::text({on.begin() + 6, y + 12}, "about the axis of the molecule",
                              "small faint");
            continue;
        }
        const double ratio = residues[next].ratio();
        const look shown = look_of(ratio, found.satisfied);
        double longer = on.length_of(residues[next]);
        text += svg::rectangle({on.begin(), y + 3}, longer, has_mended ? 7 : 12, shown.bar);
        if (has_mended) {
            const double length = on.length_of(mended[next]);
            text += svg::rectangle({on.begin(), y + 12}, length, 5, "bar bar-mended");
            longer = std::max(longer, length);
        }
        text += svg::text({on.begin() + longer + 6, y + 13},
                          flib::decimal(ratio, ratio < 10 ? 1 : 0), shown.number);
        ++next;
    }
    return svg::drawing(width, bottom + 6, "chart",
                        "Residues of the sum rules in units of their uncertainties", text);
}

}  // namespace sgn::page
