// What the readers see in one file.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "flib/util/matrix.h"

namespace qm_file {

/// A column-major 3 x n matrix of vectors.
struct vectors {
    std::vector<double> values{};

    std::int32_t count() const { return static_cast<std::int32_t>(values.size() / 3); }
    flib::matrix_view<double> view() { return {values.data(), 3, count()}; }
    flib::matrix_view<const double> view() const { return {values.data(), 3, count()}; }
};

struct oniom_layers {
    std::int32_t high = 0;              ///< atoms of the high layer
    std::int32_t all = 0;               ///< atoms of all layers
    std::vector<std::int32_t> index{};  ///< positions of the high-layer atoms, 1-based
};

struct basis_counts {
    std::int32_t alpha = 0;
    std::int32_t beta = 0;
    std::int32_t functions = 0;
    std::int32_t independent = 0;
};

struct excitation_counts {
    std::int32_t active_occupied = 0;
    std::int32_t active_virtual = 0;
    std::int32_t roots = 0;
    std::int32_t alpha = 0;
    std::int32_t frozen_core = 0;
    std::int32_t frozen_virtual = 0;
};

/// The quantities that can be asked for.
enum class quantity { type, natom, nat, coord, mass, force, nbasis, nci, oniom };

struct quantity_name {
    quantity which;
    std::string_view name;      ///< as it is asked for
    std::string_view in_words;  ///< as it is told
};
inline constexpr quantity_name quantity_names[] = {
    {quantity::type, "type", "file type"},
    {quantity::natom, "natom", "atom count"},
    {quantity::nat, "nat", "atomic numbers"},
    {quantity::coord, "coord", "geometry"},
    {quantity::mass, "mass", "masses"},
    {quantity::force, "force", "forces and transition dipoles"},
    {quantity::nbasis, "nbasis", "basis"},
    {quantity::nci, "nci", "excitation space"},
    {quantity::oniom, "oniom", "ONIOM layers"},
};

/// How a reader ended that gave nothing.
struct ending {
    int status = 0;
    std::vector<std::string> lines{};  ///< the reader's message
    bool diagnostic = false;           ///< an error of reading, not a statement about the file
};

/// Everything that was found; what a file does not hold is empty. An atomic number of 0 and a mass
/// that is NaN stand for atoms whose value the file does not tell.
struct file_facts {
    std::string file{};
    std::string tag{};  ///< empty if the program is not recognised
    std::string version{};
    std::int32_t class_code = -1;
    std::optional<std::int32_t> natom{};
    std::optional<oniom_layers> oniom{};
    std::vector<std::int32_t> nat{};
    vectors coordinates{};  ///< Bohr
    std::vector<double> masses{};
    vectors forces{};   ///< Hartree/Bohr; of an ONIOM job, on its high layer
    vectors dipoles{};  ///< atomic units, one per state
    std::optional<basis_counts> basis{};
    std::optional<excitation_counts> excitations{};
    bool two_frames = false;  ///< input and standard orientation differ by more than a shift
    std::map<quantity, ending> endings{};  ///< of the readers that could not give theirs
};

/// Asks the readers for the quantities `wanted`, each by itself, so that what one of them cannot
/// give does not hide the others. Unless a quantity is asked for `alone`, kinds of files that have
/// no such quantity are spared the question, and so is a Gaussian log the basis, because that would
/// read a count from standard input.
file_facts facts_of(std::string_view file, const std::vector<quantity>& wanted, bool alone);

/// The sum formula, in Hill's order: "C10H10". X stands for an unknown element.
std::string formula(const std::vector<std::int32_t>& nat);

}  // namespace qm_file
