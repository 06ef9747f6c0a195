// The files of an excited state that the vibronic program FCclasses 3 reads.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "sgn/set/derivatives.h"
#include "sgn/set/displaced_set.h"
#include "sgn/set/table.h"

namespace sgn {

/// What a state file tells.
struct fcc_state {
    std::string title;           ///< one line
    std::vector<atom> atoms;     ///< symbols and places count
    double energy = 0;           ///< total energy, Hartree
    std::vector<vec3> gradient;  ///< of every atom, Hartree/Bohr
    table force_constants;       ///< 3N x 3N, Hartree/Bohr^2
};

/// That of a set's reference with this energy. Throws flib::run_error if the set has no forces.
fcc_state fcc_state_of(const displaced_set& set, const derivatives& of, double energy);

/// The text of a state file (NAME.fcc): sections of the geometry (Angstrom), the energy, the
/// gradient and the lower triangle of the force constants.
std::string fcc_state_text(const fcc_state& state);

/// The text of a file of a transition dipole (eldip_NAME, magdip_NAME): the dipole on two lines,
/// for the geometries of two states, then its derivatives, `derivatives` being 3N x 3 (au, au by
/// Bohr).
std::string fcc_dipole_text(const vec3& dipole, const table& derivatives);

/// The names of the three files of `name`, the latter two in its directory.
struct fcc_names {
    std::string state;     ///< NAME.fcc
    std::string electric;  ///< eldip_NAME
    std::string magnetic;  ///< magdip_NAME
};
fcc_names fcc_names_of(const std::string& name);

struct fcc_file {
    std::string name;
    std::string text;
};

/// The files of `name` for a set whose reference has this energy; magdip_NAME only if the jobs tell
/// magnetic dipoles. Throws flib::run_error if the set has no forces.
std::vector<fcc_file> fcc_files_of(const std::string& name, const displaced_set& set,
                                   const derivatives& of, double energy);

}  // namespace sgn
