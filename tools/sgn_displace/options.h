// The command line of sgn_displace.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sgn_displace {

struct options {
    std::optional<std::string> shown{};  // of --help or --version, to be shown instead of a run
    std::string input;
    std::string step = "0.01";           // Angstrom, as given
    std::optional<std::string> steps{};  // several, instead
    std::optional<std::string> atoms{};
    std::string directory = ".";
    bool one_sided = false;
    bool overwrite = false;
    bool only_list = false;
};

/// Throws flib::run_error if the arguments make no sense.
options parse_options(std::span<const std::string_view> arguments);

/// The numbers, counted from 1, of a list like "1-3,7", in ascending order. Throws flib::run_error
/// if it is no such list or names an atom above `natom`.
std::vector<std::size_t> parse_atom_list(std::string_view text, std::size_t natom);

}  // namespace sgn_displace
