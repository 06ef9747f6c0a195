// What a call writes must not be what it reads, nor anything else that would be missed.
#pragma once

#include <span>
#include <string>

#include "sgn/result/output_kind.h"

namespace tools {

/// A file that a call is to write.
struct planned_output {
    std::string option;  ///< that asks for it: "--json"
    std::string file;    ///< or "-", standard output
    sgn::output_kind kind;
};

/// Throws flib::run_error, which names both, if one of the outputs is an input of the call (that
/// file, by whatever name or link), or another one of the outputs; and if it would take the place
/// of a result file, or of a file that is no output of its kind. Files that are no outputs of ours
/// may be replaced with `overwrite`. Empty files, and what is no file, do not count.
void require_harmless(std::span<const planned_output> outputs, std::span<const std::string> inputs,
                      bool overwrite);

}  // namespace tools
