#include "sgn/set/from_arrays.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "flib/io/stop_run.h"
#include "flib/util/elements.h"
#include "sgn/set/decimals.h"

namespace sgn {
namespace {

void require_decimals(std::string_view what, int decimals) {
    if (decimals >= 0 && decimals <= most_decimals) return;
    throw flib::run_error("the " + std::string(what) + " cannot have " + std::to_string(decimals) +
                          " decimals: 0 to " + std::to_string(most_decimals));
}

/// Symbols, atomic numbers and masses, which all jobs have in common.
sgn_contents atoms_of(std::span<const std::string> symbols, const std::vector<double>& masses) {
    sgn_contents atoms;
    for (std::size_t i = 0; i < symbols.size(); ++i) {
        const std::int32_t number = flib::element_number(symbols[i]);
        if (number == 0) {
            throw flib::run_error("atom " + std::to_string(i + 1) + ": no element has the symbol " +
                                  flib::printable(symbols[i]));
        }
        atoms.nat.push_back(number);
        atoms.symbol.emplace_back(flib::element_symbol(number));
    }
    atoms.mass = masses;
    if (masses.empty()) {
        atoms.mass.resize(symbols.size());
        flib::nat_to_mass(static_cast<std::int32_t>(symbols.size()), atoms.nat, atoms.mass);
    }
    return atoms;
}

result_file file_of(const job_arrays& job, const std::string& name, const sgn_contents& atoms) {
    result_file file{job.name.empty() ? name : job.name, atoms};
    sgn_contents& contents = file.contents;
    contents.parameters.sign = 1;
    contents.parameters.natom = static_cast<std::int32_t>(job.x.size());
    contents.x = job.x;
    contents.corrected_tdip = job.dipole;
    contents.frc = job.forces.empty() ? std::vector<vec3>(job.x.size()) : job.forces;
    return file;
}

}  // namespace

displaced_set set_of_arrays(std::span<const std::string> symbols, const job_arrays& reference,
                            std::span<const job_arrays> displaced, const array_facts& facts) {
    require_decimals("coordinates", facts.coordinate_decimals);
    require_decimals("dipoles", facts.dipole_decimals.value_or(0));
    require_decimals("forces", facts.force_decimals.value_or(0));
    const sgn_contents atoms = atoms_of(symbols, facts.masses);
    const result_file first = file_of(reference, "reference", atoms);
    std::vector<result_file> files;
    for (const job_arrays& job : displaced) {
        files.push_back(file_of(job, "job " + std::to_string(files.size() + 1), atoms));
        if (job.forces.empty() != reference.forces.empty()) {
            throw flib::io_error(files.back().name, 0,
                                 std::string(job.forces.empty() ? "has no" : "has") +
                                     " forces, other than the reference");
        }
    }
    displaced_set set = make_set(first, files);
    if (!set.misfits.empty()) {
        throw flib::io_error(set.misfits.front().name, 0, set.misfits.front().reason);
    }
    // Result files give six decimals; here there are all.
    for (std::size_t i = 0; i < displaced.size(); ++i) {
        displacement& moved = set.jobs[i + 1].moved;
        for (std::size_t a = 0; a < symbols.size(); ++a) {
            moved.shift[a] = difference(displaced[i].x[a], reference.x[a]);
        }
    }
    set.coordinate_decimals = facts.coordinate_decimals;
    set.dipole_decimals = facts.dipole_decimals.value_or(set.dipole_decimals);
    set.force_decimals = facts.force_decimals.value_or(set.force_decimals);
    return set;
}

}  // namespace sgn
