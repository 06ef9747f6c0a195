// Energies and transition moments of all excited states, from a formatted checkpoint.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace flib {

/// The numbers of some states, or of some coordinates: derivatives by them. Each array goes row by
/// row: component k of row r of the three dipoles is element [3 * r + k]. All in atomic units.
struct moment_rows {
    std::vector<double> energy{};               ///< [r], total energy
    std::vector<double> dipole{};               ///< [3 * r + k], electric transition dipole
    std::vector<double> velocity_dipole{};      ///< [3 * r + k]
    std::vector<double> magnetic_dipole{};      ///< [3 * r + k]
    std::vector<double> velocity_quadrupole{};  ///< [6 * r + k]: xx, yy, zz, xy, xz, yz
};

/// What a formatted checkpoint tells of the excited states: in nine digits what the log of the job
/// prints in four decimals, in the order and with the signs of the log's tables. There may be more
/// states than rows in the log; the first ones are the log's.
struct state_moments {
    std::int32_t states = 0;
    std::int32_t target = 0;           ///< the state that the job was run for, from 1 on
    std::vector<std::int32_t> spin{};  ///< of each state, as it stands there: 0 singlet, 2 triplet
    moment_rows of_states{};
    /// Of a job that made them, the derivatives of the target state's numbers by the coordinates of
    /// all atoms (rows 1x 1y 1z 2x ...), au by Bohr.
    std::optional<moment_rows> derivatives{};
    std::optional<double> total_energy{};  ///< of the job, in full digits, Hartree
    /// Of the ground state, in full digits, Hartree. Not told where the job's total energy is not
    /// that of the target state, as in an ONIOM job.
    std::optional<double> ground_energy{};

    /// The energy of excitation of `state` (from 1 on), Hartree: of the target state in full
    /// digits, of others in those of a total energy with nine. Nothing where the ground state's is
    /// not told or there is no such state.
    std::optional<double> excitation_energy(std::int32_t state) const;
};

/// Reads them from the formatted checkpoint `fname`: its sections "ETran ...", "Total Energy" and
/// "SCF Energy". Nothing if it has no section "ETran ...": the job had no excited states.
///
/// Throws stop_run (status 1) for a file of another kind; io_error if the file cannot be opened, is
/// cut short or damaged, lacks one of these sections, has one twice, or if their counts contradict
/// each other.
std::optional<state_moments> qm_file_state_moments(std::string_view fname);

/// How the sections are laid out, for those who write them.
namespace state_layout {
inline constexpr std::size_t scalars = 20;   ///< values of "ETran scalars", among them, from 0 on:
inline constexpr std::size_t states_at = 0;  ///< how many states
inline constexpr std::size_t values_at = 1;  ///< values of each state
inline constexpr std::size_t target_at = 4;  ///< the target state, from 1 on
inline constexpr std::size_t derivatives_at = 5;  ///< rows of derivatives behind the states, or 0

// "ETran state values" has a row for each state; then, of the target state, a row for each
// component of a field and for each coordinate. A row is
inline constexpr std::size_t values = 16;  ///< long and has, from 0 on:
inline constexpr std::size_t energy_at = 0;
inline constexpr std::size_t dipole_at = 1;
inline constexpr std::size_t velocity_dipole_at = 4;
inline constexpr std::size_t magnetic_dipole_at = 7;
inline constexpr std::size_t velocity_quadrupole_at = 10;
inline constexpr std::size_t fields = 3;
}  // namespace state_layout

}  // namespace flib
