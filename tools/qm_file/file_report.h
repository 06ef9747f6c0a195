// One file, with all that is to be shown of it.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "flib/facts/file_facts.h"
#include "sgn/result/result_facts.h"

namespace qm_file {

struct file_report {
    flib::file_facts facts{};
    std::optional<sgn::sgn_contents> result{};  ///< of a result file of stigruz
    bool readable = true;                       ///< the file could be opened
};

/// Reads `file`. It may be one of any kind, and missing: that is told by the report.
file_report report_of(const std::string& file, std::span<const flib::quantity> wanted);

/// Reads the basis of a Gaussian log, for which a line of standard input gives the number of
/// independent functions. On a terminal `say` is told first what is waited for.
void add_basis_of_log(file_report& report, void (*say)(std::string_view text));

/// "GAMESS (US), Gaussian, ...": the programs whose files are recognised.
std::string known_programs();

}  // namespace qm_file
