// The sum rules of derivatives that were made elsewhere.
#pragma once

#include <string>

#include "sgn/set/sum_rules.h"

namespace sgn {

struct judgement {
    sum_rules dipole;
    sum_rules forces;
    std::size_t atoms = 0;

    bool fine() const { return dipole.satisfied && (forces.satisfied || !forces.judged); }
};

/// Judges the derivatives in the checkpoint `file`. How they were made is not known: they are
/// taken to be as good as those from dipoles of four decimals and steps of 0.01 Angstrom. Throws
/// flib::io_error if the checkpoint cannot be read or holds none.
judgement judge(const std::string& file);

}  // namespace sgn
