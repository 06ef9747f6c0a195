#include "flib/qm_file/qm_file_states.h"

#include <cstddef>
#include <cstdint>

#include "flib/io/number.h"
#include "flib/qm_file/detail/facts_steps.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/qm_file/type_tag.h"
#include "flib/util/units.h"

namespace flib {
namespace {

constexpr std::string_view state_line = "Excited State";

/// The energy that a line tells of a state, in Hartree; nullopt if it is not a line of `state`.
//  Excited State   1:      Singlet-A      9.3295 eV  132.90 nm  f=0.0655  <S**2>=0.000
std::optional<double> energy_of(std::string_view line, std::size_t state) {
    line = trim_left(line);
    if (!line.starts_with(state_line)) return {};
    line.remove_prefix(state_line.size());
    const std::size_t colon = line.find(':');
    const std::size_t unit = line.find(" eV");
    std::int32_t number = 0;
    if (colon == std::string_view::npos || unit == std::string_view::npos || unit < colon ||
        parse_integer(trim_right(trim_left(line.substr(0, colon))), number) != number_error::none ||
        static_cast<std::size_t>(number) != state) {
        return {};
    }
    const std::string_view before = trim_right(line.substr(0, unit));
    double energy = 0;
    const std::string_view item = before.substr(before.find_last_of(' ') + 1);
    if (parse_real(item, energy) != number_error::none) return {};
    return energy / hartree_energy;
}

}  // namespace

std::vector<printed_state> qm_file_states(std::string_view fname) {
    const recognised_file file(fname);
    file.require(tag::gaussian_log);
    std::vector<printed_state> states;
    for (const auto& dipole : read_last_dipoles(file.fid)) states.push_back({dipole});
    // The unit stands below the table.
    line_buffer line;
    for (std::size_t i = 0; i < states.size(); ++i) {
        if (!search_word(file.fid, 2, 14, state_line, line)) break;
        states[i].energy = energy_of(line.trimmed(), i + 1);
        if (!states[i].energy) break;
    }
    return states;
}

}  // namespace flib
