// The periodic table: atomic numbers, element symbols and atomic masses.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <type_traits>

#include "flib/text/fixed_text.h"

namespace flib {

/// The largest atomic number of an element.
inline constexpr std::int32_t last_atomic_number = 118;

/// Whether `nat` is the atomic number of an element, or 0, which stands for a dummy atom.
constexpr bool is_atomic_number(std::int32_t nat) {
    return nat >= 0 && nat <= last_atomic_number;
}

/// The symbol of atomic number `nat`, 0 to 118; "X", a dummy atom, for 0.
std::string_view element_symbol(std::int32_t nat);

/// The atomic number of a symbol, in letters of either case and with blanks around it; 0 if no
/// element has it. Only the first three characters count; "X" and labels like "C1" have none.
std::int32_t element_number(std::string_view symbol);

/// Throws stop_run (status 0, "Error!" and "nat(I) = NAT is out of [1,118]") unless atomic number
/// `nat` of atom `i`, 1-based, lies in 0 to 118.
void require_element(std::int32_t i, std::int32_t nat);

/// Symbols of `n` atoms, cut or padded to the fields' width. Ends as require_element() at the
/// first atomic number out of range; the symbols before it are written by then.
template <class Symbols>
void nat_to_symbol(std::int32_t n, std::span<const std::int32_t> nat, Symbols&& symbol) {
    for (std::int32_t i = 1; i <= n; ++i) {
        const auto at = static_cast<std::size_t>(i) - 1;
        require_element(i, nat[at]);
        symbol[at] = element_symbol(nat[at]);
    }
}

/// Atomic numbers of `n` symbols; an entry whose symbol no element has keeps its value.
template <class Symbols>
void symbol_to_nat(std::int32_t n, const Symbols& symbol, std::span<std::int32_t> nat) {
    for (std::int32_t i = 1; i <= n; ++i) {
        const auto at = static_cast<std::size_t>(i) - 1;
        const std::int32_t number = element_number(symbol[at].padded());
        if (number != 0) nat[at] = number;
    }
}

/// Masses (u) of `n` atoms; an entry whose atomic number is not in 1 to 118 keeps its value.
void nat_to_mass(std::int32_t n, std::span<const std::int32_t> nat, std::span<double> atmas);

}  // namespace flib
