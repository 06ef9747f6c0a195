// A set of result files: a reference geometry, and others displaced from it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "sgn/result/sgn_file.h"
#include "sgn/set/displacement.h"

namespace sgn {

/// One file of a set, as read.
struct result_file {
    std::string name;
    sgn_contents contents;
};

struct atom {
    std::string symbol;
    std::int32_t number = 0;  ///< atomic number
    double mass = 0;          ///< u
    vec3 x{};                 ///< Angstrom
};

/// What a file is to the set. Displacements are found in the geometries, not in the names.
enum class role {
    reference,
    paired,       ///< another file has the opposite displacement
    one_sided,    ///< none has
    undisplaced,  ///< the geometry of the reference once more: takes no part
    repeated      ///< the geometry of an earlier file once more: takes no part
};

struct displaced_job {
    std::string name;
    role is = role::one_sided;
    std::size_t other = 0;  ///< paired: the partner; repeated: the earlier file (place in `jobs`)
    displacement moved;     ///< against the reference; six decimals like the coordinates
    std::int32_t sign = 0;  ///< with which the printed dipole was multiplied
    vec3 dipole{};          ///< corrected transition dipole, au
    std::vector<vec3> forces;  ///< of every atom, Hartree/Bohr
};

/// A file that does not belong to a set, and why.
struct misfit {
    std::string name;
    std::string reason;
};

struct displaced_set {
    std::vector<atom> atoms;          ///< at the reference geometry
    std::vector<displaced_job> jobs;  ///< the reference first, then the files in their order
    std::int32_t basis_functions = 0;
    std::size_t pairs = 0;
    std::size_t one_sided = 0;
    double smallest_step = 0;  ///< Angstrom
    double largest_step = 0;   ///< Angstrom
    int dipole_decimals = 0;   ///< of the printed values, as seen in them
    int force_decimals = 0;
    bool has_forces = false;  ///< false if all forces of all files are zero
    /// Files left out: with other atoms than the reference, or values that are not finite numbers.
    std::vector<misfit> misfits;
};

/// Puts a set together of the files that belong to it; the others are its misfits. Throws
/// flib::io_error, which names the reference, if that has no atoms or values that are not finite
/// numbers, and if no file is displaced; this error names the first of the misfits, if there are
/// any.
displaced_set make_set(const result_file& reference, std::span<const result_file> files);

}  // namespace sgn
