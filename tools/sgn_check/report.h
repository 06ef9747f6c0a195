// The verdicts as a table, as JSON and as CSV.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "sgn_check/check.h"

namespace sgn_check {

/// A file that can not be read, and why.
struct unreadable_file {
    std::string name;
    std::string reason;
};

/// A line per file, the reference first, and a line that sums up. With colour, the verdicts are
/// green or red on a terminal.
std::string table(std::span<const verdict> verdicts, bool colour);

/// One object: "reference", "files" (verdicts but the first), "unreadable", "thresholds".
std::string json(std::span<const verdict> verdicts, std::span<const unreadable_file> unreadable,
                 const thresholds& limits);

/// A line of names and a line per file, the reference first; RFC 4180. Empty: not known.
std::string csv(std::span<const verdict> verdicts);

}  // namespace sgn_check
