// Names of files, and files as lists of lines.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "flib/text/fixed_text.h"

namespace flib {

/// The number of lines of the file `fname`; a last line without newline counts. Throws stop_run
/// (status 1, the message " Error in opening file '...") if it cannot be opened.
std::int32_t num_file_lines(std::string_view fname);

/// Reads the first `nline` lines of `file1` into `lines`, each cut or padded to a line buffer.
/// Throws io_error if the file cannot be opened or has fewer lines.
void read_lines(std::string_view file1, std::int32_t nline, std::vector<line_buffer>& lines);

/// All bytes of the file `fname`; nullopt if they are more than `most`. Throws io_error if it
/// cannot be opened, is not a regular file, or can no longer be read.
std::optional<std::string> file_contents(std::string_view fname, std::int64_t most);

/// The last component of a path, without leading and trailing blanks. Only "/" separates
/// directories. Blank for a blank name.
std::string name_base(std::string_view name);

/// The last component of a path without its last extension: "/a/b/job.opt.fchk" gives "job.opt",
/// ".hidden" gives a blank name.
std::string name_main(std::string_view fname);

}  // namespace flib
