#include "sgn/set/displacement.h"

#include <algorithm>

#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "sgn/set/detail/shape.h"

namespace sgn {
namespace {

/// "+x", or a unit vector.
std::string direction_of(const vec3& shift) {
    for (std::size_t k = 0; k < 3; ++k) {
        vec3 across = shift;
        across[k] = 0;
        if (length(across) <= rounding) return {shift[k] < 0 ? '-' : '+', axis_names[k]};
    }
    std::string text = "(";
    for (std::size_t k = 0; k < 3; ++k) {
        if (k > 0) text += ',';
        text += flib::decimal(shift[k] / length(shift), 2);
    }
    return text += ')';
}

/// Whether every shift of `a` is that of `b` times `direction`.
bool are_alike(const displacement& a, const displacement& b, double direction) {
    return std::equal(a.shift.begin(), a.shift.end(), b.shift.begin(), b.shift.end(),
                      [&](const vec3& one, const vec3& other) {
                          return is_same_place(one, scaled(direction, other));
                      });
}

}  // namespace

std::string displacement::text(const std::string& name) const {
    if (moved == 0) return "none";
    return (moved > 1 ? std::to_string(moved) + " atoms, " : "") + name + " " +
           direction_of(shift[farthest]) + " " + flib::decimal(distance, 4);
}

displacement displacement_of(std::span<const vec3> x, std::span<const vec3> reference) {
    require_count("places", x.size(), reference.size());
    displacement result;
    for (std::size_t i = 0; i < x.size(); ++i) {
        result.shift.push_back(difference(x[i], reference[i]));
        const double distance = length(result.shift.back());
        if (distance > same_place) ++result.moved;
        if (distance > result.distance) {
            result.distance = distance;
            result.farthest = i;
        }
    }
    return result;
}

bool are_same(const displacement& a, const displacement& b) {
    return are_alike(a, b, 1);
}

bool are_opposite(const displacement& a, const displacement& b) {
    return are_alike(a, b, -1);
}

}  // namespace sgn
