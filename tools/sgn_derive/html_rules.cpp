// The sum rules as bars against their rounding.
#include <algorithm>
#include <cmath>
#include <string_view>

#include "common/number_text.h"
#include "sgn_derive/html_drawings.h"
#include "sgn_derive/svg.h"

namespace sgn_derive {
namespace {

using sgn::sum_rules;
using sgn::table;

constexpr double width = 1000;
constexpr double name_width = 196;
constexpr double number_width = 64;
constexpr double column = width / 2;
constexpr double row = 24;
constexpr double top = 40;

struct residue {
    bool exists = false;
    double ratio = 0;  ///< to its uncertainty
};

residue residue_of(const table& values, const table& uncertainty, std::size_t axis, std::size_t k) {
    if (!(uncertainty(axis, k) > 0)) return {};
    return {true, std::abs(values(axis, k)) / uncertainty(axis, k)};
}

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

struct bars {
    double most = 0;  ///< the longest bar
    bool satisfied = true;
    std::string text{};

    svg::scale along(double from) const {
        return {0, squeezed(most), from + name_width, from + column - number_width};
    }

    void add_axis(double from, const char* title, double bottom) {
        text += svg::text({from + name_width, 14}, title, "label");
        const svg::scale x = along(from);
        // What rounding explains: most residues lie within twice their uncertainty.
        text +=
            svg::rectangle({x(0), top - 8}, x(squeezed(2)) - x(0), bottom - top + 8, "rounding");
        for (const double mark : {1.0, 3.0, 10.0, 30.0, 100.0, 300.0, 1000.0, 1e4, 1e5}) {
            if (mark > most) break;
            text += svg::line({x(squeezed(mark)), top - 8}, {x(squeezed(mark)), bottom}, "grid");
            text += svg::text({x(squeezed(mark)), top - 12}, svg::number(mark), "small", "middle");
        }
    }

    void add(double from, double y, const std::string& name, residue found, residue mended) {
        text += svg::text({from + name_width - 10, y + 12}, name, "small", "end");
        const svg::scale x = along(from);
        if (!found.exists) {
            text += svg::text({x(0) + 6, y + 12}, "about the axis of the molecule", "small faint");
            return;
        }
        const look shown = look_of(found.ratio, satisfied);
        const double length = std::max(x(squeezed(found.ratio)) - x(0), 1.5);
        text += svg::rectangle({x(0), y + 3}, length, mended.exists ? 7 : 12, shown.bar);
        double longer = length;
        if (mended.exists) {
            const double mended_length = std::max(x(squeezed(mended.ratio)) - x(0), 1.5);
            text += svg::rectangle({x(0), y + 12}, mended_length, 5, "bar bar-mended");
            longer = std::max(longer, mended_length);
        }
        text += svg::text({x(0) + longer + 6, y + 13},
                          tools::decimal(found.ratio, found.ratio < 10 ? 1 : 0), shown.number);
    }
};

}  // namespace

std::string rules_drawing(const sgn::report& of) {
    const sum_rules& found = of.dipole_rules;
    const sum_rules& mended = of.suspects.mended;
    const bool has_mended = !of.suspects.flips.empty() && mended.judged;
    bars all{.most = std::max(6.0, 1.15 * found.largest), .satisfied = found.satisfied};
    const double bottom = top + 9 * row + 4;
    all.add_axis(0, "moving the molecule", bottom);
    all.add_axis(column, "turning the molecule", bottom);
    double y = top;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        for (std::size_t k = 0; k < 3; ++k) {
            const std::string name =
                std::string(1, sgn::axis_names[axis]) + ", component \u03BC" + sgn::axis_names[k];
            const auto pair = [&](const sum_rules& rules, bool moving) {
                return moving
                           ? residue_of(rules.translation, rules.translation_uncertainty, axis, k)
                           : residue_of(rules.rotation, rules.rotation_uncertainty, axis, k);
            };
            for (const bool moving : {true, false}) {
                all.add(moving ? 0 : column, y, (moving ? "along " : "about ") + name,
                        pair(found, moving), has_mended ? pair(mended, moving) : residue{});
            }
            y += row;
        }
    }
    return svg::drawing(width, bottom + 6, "chart",
                        "Residues of the sum rules in units of their uncertainties", all.text);
}

}  // namespace sgn_derive
