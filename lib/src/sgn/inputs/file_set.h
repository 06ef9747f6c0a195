// Several files that appear together or not at all.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace sgn::inputs {

/// Writes the files `names` into `directory`; the text of file i is `contents(i)`. A directory that
/// does not exist is made, its parent must be there. All texts are written to the disk beside their
/// final places before the first file appears. The signals by which users and queues end a program
/// (hang-up, interrupt, quit, termination) wait until all is done. What killed runs have left
/// beside result files in the directory is removed.
///
/// Throws flib::run_error, naming the file, on any failure: also if a file is there already, unless
/// `overwrite`, or if one that would be overwritten is write-protected or no regular file. Nothing
/// is left behind then, and files that were there are what they were. What `contents` throws ends
/// the same way.
void write_file_set(const std::string& directory, const std::vector<std::string>& names,
                    const std::function<std::string(std::size_t)>& contents, bool overwrite);

}  // namespace sgn::inputs
