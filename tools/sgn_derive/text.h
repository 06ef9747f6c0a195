// A report for people.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "common/terminal.h"
#include "sgn/check/judge.h"
#include "sgn/check/report.h"
#include "sgn/set/sum_rules.h"

namespace sgn_derive {

/// How derivatives are shown.
struct shown_as {
    bool by_angstrom = false;  ///< those by coordinates, not by Bohr
    bool moments = false;      ///< those of velocity and magnetic moments, too
};

/// What the set is, the derivatives, the sum rules, the modes, what deserves doubt, and the
/// verdict.
std::string text_of(const sgn::report& of, const tools::terminal& on, const shown_as& how = {});

/// The table of the sum rules; `forces` without any if they were not made.
std::string rules_text(const sgn::sum_rules& dipole, const sgn::sum_rules& forces,
                       const tools::terminal& on);

/// The largest residues of rules that fail, a line each. `atoms` have names for those of forces.
std::string residues_text(const sgn::sum_rules& rules, std::string_view of_what,
                          std::span<const sgn::atom> atoms = {});

/// The sum rules of a checkpoint's derivatives and the verdict.
std::string text_of(const sgn::judgement& of, const std::string& file, const tools::terminal& on);

}  // namespace sgn_derive
