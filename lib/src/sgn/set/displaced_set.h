// A set of result files: a reference geometry, and others displaced from it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sgn/result/sgn_file.h"
#include "sgn/set/displacement.h"

namespace sgn {

/// The other transition moments of a state, au, with the sign of its dipole.
struct other_moments {
    vec3 velocity_dipole{};
    vec3 magnetic_dipole{};
    std::array<double, 6> velocity_quadrupole{};  ///< xx, yy, zz, xy, xz, yz
};

/// What a job's checkpoint has in nine digits and a result file in fewer or not at all.
struct full_digits {
    vec3 dipole{};  ///< corrected transition dipole, au
    other_moments moments{};
    std::vector<vec3> x{};  ///< Angstrom; empty where only the log tells them
};

/// The transition that a dipole belongs to, as the job tells.
struct excited_state {
    std::int32_t state = 0;          ///< of the job, from 1 on
    std::int32_t target = 0;         ///< the state that the job was run for; 0: not told
    std::optional<double> energy{};  ///< of excitation, Hartree
};

/// One file of a set, as read, or what a result file would hold of a job.
struct result_file {
    std::string name;
    sgn_contents contents;
    /// Of a reference, the numbers of its atoms in the input of the job; empty: their places.
    std::vector<std::int32_t> input_numbers{};
    std::optional<full_digits> full{};
    std::optional<excited_state> excited{};
};

struct atom {
    std::string symbol;
    std::int32_t number = 0;  ///< atomic number
    double mass = 0;          ///< u
    vec3 x{};                 ///< Angstrom
    std::int32_t input = 0;   ///< its number in the input of the job; 0: its place in the set
};

/// What a file is to the set. Displacements are found in the geometries, not in the names.
enum class role {
    reference,
    paired,       ///< another file has the opposite displacement
    one_sided,    ///< none has
    undisplaced,  ///< the geometry of the reference once more: takes no part
    repeated      ///< the geometry of an earlier file once more: takes no part
};

/// For other programs: "one_sided".
std::string_view name_of(role of);

struct displaced_job {
    std::string name;
    role is = role::one_sided;
    std::size_t other = 0;  ///< paired: the partner; repeated: the earlier file (place in `jobs`)
    displacement moved;     ///< against the reference; six decimals like the coordinates
    std::int32_t sign = 0;  ///< with which the printed dipole was multiplied
    vec3 dipole{};          ///< corrected transition dipole, au
    std::vector<vec3> forces;  ///< of every atom, Hartree/Bohr
    std::optional<other_moments> moments{};
    std::optional<excited_state> excited{};
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
    std::array<int, 3> moment_decimals{};  ///< of velocity dipole, magnetic dipole, quadrupole
    int coordinate_decimals = 6;           ///< Angstrom
    /// The dipoles are those of the checkpoints, and there are the other moments: all files of the
    /// set have them.
    bool has_moments = false;
    bool has_forces = false;  ///< false if all forces of all files are zero
    /// Files left out: with other atoms than the reference, or values that are not finite numbers.
    std::vector<misfit> misfits;
};

/// Of its files, the reference's first.
std::vector<std::string> names_of(const displaced_set& set);

/// Where the dipoles come from: "checkpoints", "logs" (of jobs) or "result files".
std::string_view source_of_dipoles(const displaced_set& set);

/// Puts a set together of the files that belong to it; the others are its misfits. Throws
/// flib::io_error, which names the reference, if that has no atoms, arrays that are not of equally
/// many, or values that are not finite numbers, and if no file is displaced; this error names the
/// first of the misfits, if there are any.
displaced_set make_set(const result_file& reference, std::span<const result_file> files);

}  // namespace sgn
