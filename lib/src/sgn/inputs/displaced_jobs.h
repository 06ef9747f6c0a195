// Which jobs make a set, and their names.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sgn/inputs/input.h"

namespace sgn::inputs {

/// A job of a set: the reference, or one with an atom displaced along an axis.
struct displaced_job {
    std::string name;      // without extension: "h2o_ref", "h2o_02ym"
    std::size_t atom = 0;  // counted from 0
    int axis = 0;          // 0, 1, 2
    int sign = 0;          // 1 or -1; 0 for the reference
    std::size_t step = 0;  // which one, from 0

    friend bool operator==(const displaced_job&, const displaced_job&) = default;
};

/// More jobs are not made of one input; more than the usual number only if that is asked for.
inline constexpr std::size_t most_jobs = 100'000;
inline constexpr std::size_t usual_jobs = 2'000;

/// The name of the set that is made of `file`: its own without directory and extension. Throws
/// flib::run_error for one that could not stand in %chk, in a list or in a shell's pattern as it
/// is.
std::string name_of_set(const std::string& file);

/// The atoms that are displaced unless others are asked for: all, of an ONIOM job those of the high
/// layer. Numbers count from 1.
std::vector<std::size_t> usual_atoms(const job_template& job);

/// A step of a set.
struct named_step {
    std::string name;  ///< in the names of jobs: "10000", millionths of an Angstrom; or empty
    decimal length;    ///< in the unit of the input
};

/// The only step of a set, without a name: a length in Angstrom as printed, in `unit`; in Bohr with
/// ten decimals. Throws flib::run_error unless it is 0.0001 to 1 Angstrom.
std::vector<named_step> parse_step(const std::string& text, length_unit unit);

/// Of a list like "0.01,0.02" (Angstrom) the steps in ascending order, their names of one length;
/// the name of a single one is empty. Throws flib::run_error unless each is 0.0001 to 0.1 Angstrom,
/// a whole number of millionths, and no two are equal.
std::vector<named_step> parse_steps(const std::string& text, length_unit unit);

/// How many digits the numbers of atoms have in names: as many as the last needs, at least two.
std::size_t digits_of_numbers(std::size_t natom);

/// The reference and, for each of `atoms` (counted from 1), each axis and each step, the
/// displacements by + and, unless `one_sided`, by -.
std::vector<displaced_job> jobs_of_set(std::string_view set, const std::vector<std::size_t>& atoms,
                                       std::size_t natom, bool one_sided,
                                       std::span<const named_step> steps);

/// The input of a job; `steps` are those of its set.
std::string input_of(const job_template& from, const displaced_job& job,
                     std::span<const named_step> steps);

}  // namespace sgn::inputs
