// What is known of a file, as text.
#pragma once

#include <string>
#include <string_view>

#include "common/json_text.h"
#include "common/terminal.h"
#include "qm_file/file_report.h"
#include "qm_file/request.h"

namespace qm_file {

/// For a person: all that was found, the first atoms of a table, and why the rest is missing. On a
/// terminal no line is wider than that.
std::string summary(const file_report& report, const tools::terminal& on);

/// One quantity in plain rows; empty if the file does not hold it. `labelled` rows begin with the
/// name of the file. On a terminal that is too narrow, names are shortened and real numbers lose
/// decimals.
std::string rows_of(const file_report& report, const named_quantity& which, bool labelled,
                    const tools::terminal& on);

/// The geometry in XYZ format (Angstrom); empty if there is none. "?" stands for a symbol that the
/// file does not give.
std::string xyz(const file_report& report);

/// "last of 4, Standard orientation": which geometry is shown.
std::string place_of(const flib::geometry& geometry);

/// An object with all that was found, and the reasons for what was not.
tools::json_value json_of(const file_report& report);

}  // namespace qm_file
