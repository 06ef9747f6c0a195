// What the readers tell of their own tables, for those who show what a file holds.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "flib/util/matrix.h"

#pragma GCC visibility push(hidden)
namespace flib {

// Whether a reader has a row for files of kind `tag`.

bool reads_natom(std::string_view tag);
bool reads_nat(std::string_view tag);
bool reads_coord(std::string_view tag);
bool reads_mass(std::string_view tag);

/// Which of a file's geometries qm_file_coord() reads.
struct geometry_place {
    bool last = false;        ///< the last of them, else the first
    std::int32_t tables = 0;  ///< how many there are
    std::string title{};      ///< of a Gaussian log: what stands above the table
};

/// That of an open file of kind `tag`, from its start.
geometry_place place_of_geometry(std::int32_t fid, std::string_view tag);

/// Reads the last table of coordinates that has `title` in an open Gaussian log into `x`, in
/// Angstrom. False if there is none.
bool read_last_orientation(std::int32_t fid, std::string_view title, matrix_view<double> x);

/// Reads the last table of forces of an open Gaussian log into `force`; of an ONIOM job those on
/// its high layer. False if there is none.
bool read_last_forces(std::int32_t fid, matrix_view<double> force);

/// All rows of the table of transition dipoles that qm_file_force_tdip() reads of an open Gaussian
/// log or, where there are no forces, of the last one. Empty if there is none.
std::vector<std::array<double, 3>> read_last_dipoles(std::int32_t fid);

}  // namespace flib
#pragma GCC visibility pop
