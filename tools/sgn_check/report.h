// The verdicts as a table, as JSON and as CSV.
#pragma once

#include <span>
#include <string>

#include "common/terminal.h"
#include "sgn/check/check.h"

namespace sgn_check {

/// A file that cannot be read, and why.
struct unreadable_file {
    std::string name;
    std::string reason;
};

/// A line per file, the reference first, and lines that sum up: what the sum rules say, and how
/// many files are fine. Made to fit the terminal.
std::string table(const sgn::assessment& of, std::span<const unreadable_file> unreadable,
                  const tools::terminal& on);

/// One object: "reference", "files" (verdicts but the first), "unreadable", "findings" of the set,
/// "sum_rules",
/// "thresholds". Without verdicts, "reference" is null.
std::string json(const sgn::assessment& of, std::span<const unreadable_file> unreadable,
                 const sgn::thresholds& limits);

/// A line of names and a line per file, the reference first; RFC 4180. Empty: not known. The sum
/// rules of the set stand in the line of the reference.
std::string csv(const sgn::assessment& of);

}  // namespace sgn_check
