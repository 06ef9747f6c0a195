// What the readers see, for people and for programs.
#pragma once

#include <string>
#include <vector>

#include "common/json.h"
#include "qm_file/file_facts.h"

namespace qm_file {

/// The whole of a file at one look.
std::string summary(const file_facts& facts);

/// One quantity alone, in rows; empty if the file does not hold it.
std::string rows_of(const file_facts& facts, quantity which);

/// The geometry in XYZ format, Angstrom; empty without one. The comment line names the file.
std::string xyz(const file_facts& facts);

/// Adds one object with every quantity that was found, arrays in full.
void add_json(tools::json_writer& json, const file_facts& facts);

/// A reader's message as one line.
std::string in_one_line(const ending& how);

}  // namespace qm_file
