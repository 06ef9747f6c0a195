// What a file of a quantum-chemistry program holds, at one call.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "flib/excited/qm_file_ci_xpy.h"
#include "flib/excited/qm_file_state_moments.h"
#include "flib/excited/root_norms.h"

namespace flib {

/// What can be asked of a file.
enum class quantity {
    kind,         ///< which program wrote it
    natom,        ///< the number of atoms
    numbers,      ///< atomic numbers
    geometry,     ///< coordinates
    masses,       ///< atomic masses
    forces,       ///< forces on the atoms
    dipoles,      ///< transition dipoles
    oniom,        ///< layers of an ONIOM job
    basis,        ///< electrons and basis functions
    excitations,  ///< the size of the excitation space
    dump,         ///< a dumped record
    moments,      ///< energies and transition moments of a formatted checkpoint
};

/// All of them, in this order.
inline constexpr quantity all_quantities[] = {
    quantity::kind,   quantity::natom,       quantity::numbers, quantity::geometry,
    quantity::masses, quantity::forces,      quantity::dipoles, quantity::oniom,
    quantity::basis,  quantity::excitations, quantity::dump,    quantity::moments,
};

/// A quantity as it is told to people: "transition dipoles".
std::string_view name_of(quantity which);

/// x, y and z per atom or state.
using vector_list = std::vector<std::array<double, 3>>;

struct file_kind {
    std::string tag{};       ///< type tag (type_tag.h)
    std::string in_words{};  ///< "a Gaussian log"
    std::string version{};   ///< of the program, as the file states it; may be empty
    std::int32_t class_code = -1;
};

struct geometry {
    vector_list x{};          ///< Bohr
    bool last = false;        ///< the last one of the file, else the first
    std::int32_t tables = 1;  ///< how many geometries of this sort the file holds
    std::string frame{};      ///< of a Gaussian log, its title: "Standard orientation"
    /// The frame of the forces (the input orientation) differs by more than a shift from that of
    /// this geometry.
    bool two_frames = false;
};

struct oniom_layers {
    std::int32_t natom = 0;            ///< atoms of all layers
    std::vector<std::int32_t> high{};  ///< positions of the high-layer atoms, 1-based, ascending
};

struct basis_counts {
    std::int32_t alpha_electrons = 0;
    std::int32_t beta_electrons = 0;
    std::int32_t functions = 0;
    std::int32_t independent = 0;
};

struct excitation_counts {
    std::int32_t roots = 0;  ///< that the job sought; it may print fewer
    std::int32_t alpha_electrons = 0;
    std::int32_t frozen_core = 0;
    std::int32_t active_occupied = 0;
    std::int32_t active_virtual = 0;
    std::int32_t frozen_virtual = 0;
};

/// A state of a dump that tells its layout.
struct dumped_state {
    root_norms norms{};
    std::optional<double> energy{};  ///< of excitation, Hartree
};

/// The record of a Gaussian checkpoint or read-write file that was dumped.
struct dump_header {
    std::int32_t number = 0;  ///< of the record; that of the excitation amplitudes is 635
    std::int32_t values = 0;  ///< how many follow
    std::optional<dump_layout> layout{};  ///< if its first values tell it
    std::vector<dumped_state> states{};   ///< those of the layout
};

/// Why a file does not give a quantity.
struct absence {
    std::string reason{};  ///< in words, without the file's name
    bool damaged = false;  ///< something is there that cannot be read
};

/// Stands for an atomic number that the file does not give. (0 is a dummy atom.)
inline constexpr std::int32_t unknown_number = -1;

/// What a file holds. Each quantity that was asked for is either there, or `missing` tells why not.
struct file_facts {
    std::string file{};
    std::optional<file_kind> kind{};
    std::optional<std::int32_t> natom{};
    std::optional<std::vector<std::int32_t>> numbers{};  ///< unknown_number where there is none
    /// Atoms of a formatted checkpoint, 1-based, that are point charges around an embedded model:
    /// their nuclear charge is negative or no whole number. Asked for with the numbers.
    std::vector<std::int32_t> point_charges{};
    std::optional<flib::geometry> geometry{};
    std::optional<std::vector<double>> masses{};  ///< u; NaN where there is none
    std::optional<vector_list> forces{};   ///< Hartree/Bohr; of an ONIOM job, on its high layer
    std::optional<vector_list> dipoles{};  ///< ground to excited state, atomic units; one per state
    std::optional<oniom_layers> oniom{};
    std::optional<basis_counts> basis{};
    std::optional<excitation_counts> excitations{};
    std::optional<dump_header> dump{};
    std::optional<state_moments> moments{};
    std::map<quantity, absence> missing{};

    /// The reason why a quantity is missing; empty if it is there or was not asked for.
    std::string_view why_not(quantity which) const;
};

/// Reads from the file `fname` what the readers find of the quantities `wanted` (and of those that
/// they need for it). Each reader is asked by itself, so that what one of them does not find hides
/// nothing of the others. Which of several geometries is taken is that of qm_file_coord(); nothing
/// is read from standard input, so of a Gaussian log there is no basis.
///
/// Throws io_error if the file cannot be opened, and another run_error if the system could not open
/// it now. Whatever the file holds, damage included, is told by `missing`.
file_facts facts_of(std::string_view fname, std::span<const quantity> wanted = all_quantities);

}  // namespace flib
