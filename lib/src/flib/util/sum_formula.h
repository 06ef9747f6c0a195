// Sum formulas.
#pragma once

#include <span>
#include <string>

namespace flib {

/// The sum formula of atoms with these symbols, in Hill's order: "C10H10O".
std::string sum_formula(std::span<const std::string> symbols);

}  // namespace flib
