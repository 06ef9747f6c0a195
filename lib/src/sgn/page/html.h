// A page to look at.
#pragma once

#include <string>

#include "sgn/check/report.h"

namespace sgn::page {

/// The report as one HTML page that needs nothing else: drawings are inline SVG, there are no
/// scripts, and nothing is fetched. The verdict of the set comes first; then the molecule, the
/// dipole along the jobs as printed and as corrected, the sum rules, the borrowed intensity, and
/// all files. `maker` is named at the end: a program and its version.
std::string html_of(const sgn::report& of, const std::string& maker);

}  // namespace sgn::page
