#include "sgn/set/detail/shape.h"

#include <string>

#include "flib/io/stop_run.h"

namespace sgn {

void require_count(std::string_view what, std::size_t found, std::size_t expected) {
    if (found == expected) return;
    throw flib::run_error("there are " + std::to_string(found) + " " + std::string(what) +
                          " instead of " + std::to_string(expected));
}

void require_table(std::string_view what, const table& of, std::size_t rows, std::size_t columns) {
    const std::string of_table = " of the " + std::string(what);
    require_count("rows" + of_table, of.rows, rows);
    require_count("columns" + of_table, of.columns, columns);
    require_count("values" + of_table, of.values.size(), rows * columns);
}

void require_shape(const displaced_set& set) {
    if (set.jobs.empty()) throw flib::run_error("there is no job in the set");
    for (const displaced_job& each : set.jobs) {
        const std::string of_job = " of " + flib::printable(each.name);
        require_count("shifts" + of_job, each.moved.shift.size(), set.atoms.size());
        require_count("forces" + of_job, each.forces.size(), set.atoms.size());
        if (each.other >= set.jobs.size()) {
            throw flib::run_error("there is no job beside " + flib::printable(each.name));
        }
    }
}

void require_shape(const displaced_set& set, const derivatives& of) {
    require_shape(set);
    const std::size_t coordinates = 3 * set.atoms.size();
    require_table("derivatives of the dipole", of.dipole, coordinates, 3);
    require_table("weights", of.weights, coordinates, set.jobs.size());
    if (set.has_forces) {
        require_table("derivatives of the forces", of.forces, coordinates, coordinates);
    }
}

}  // namespace sgn
