// Where the sections of a Gaussian input file are. A blank line is one that holds only blanks.
#pragma once

#include <cstdint>
#include <string_view>

namespace flib {

// Each routine reads the whole file `fgjf` anew. Line numbers are 1-based; 0 stands for a section
// that the file does not have, and is passed down the chain. Errors are those of num_file_lines and
// read_lines.

/// The last line that begins with "#", after blanks: the route of the last job.
void get_gjf_route_linenumber(std::string_view fgjf, std::int32_t& lnumber);

/// The line after the first blank line that follows the route.
void get_gjf_title_linenumber(std::string_view fgjf, std::int32_t& lnumber);

/// The line of charge and multiplicity: that after the first blank line that follows the title.
void get_gjf_charge_linenumber(std::string_view fgjf, std::int32_t& lnumber);

/// The first atom line: that after charge and multiplicity.
void get_gjf_atom_linenumber(std::string_view fgjf, std::int32_t& lnumber);

/// The number of atom lines, up to a blank line or the end of the file.
void get_gjf_natom(std::string_view fgjf, std::int32_t& natom);

}  // namespace flib
