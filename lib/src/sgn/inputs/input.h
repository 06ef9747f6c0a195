// A Gaussian input file, taken apart so that jobs with displaced atoms can be made of it.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "sgn/inputs/decimal.h"
#include "sgn/inputs/route.h"

namespace sgn::inputs {

/// A coordinate as it is printed.
struct coordinate {
    decimal value;
    std::size_t place = 0;  // offset in job_template::body
    std::size_t length = 0;
};

struct atom {
    std::array<coordinate, 3> x;
    char layer = ' ';   // H, M or L of an ONIOM job
    bool link = false;  // a link atom stands for it where a bond is cut
};

/// All that the jobs of a set have in common: a job is `link0` with its name put in, its %chk, and
/// `body` with a coordinate displaced.
struct job_template {
    job_kind kind;
    std::string link0;        // lines before the route, without those of files of one job
    std::string body;         // from the route on, which has all keywords that are needed
    std::string end_of_line;  // newline, with or without carriage return
    std::vector<atom> atoms;
    std::vector<std::size_t> own_names;  // offsets in link0 where the job's name goes, ascending
    std::vector<std::string> told;  // one line for each thing that was changed or should be known

    /// The input of the job `name` as it stands, or with `step`, in the input's unit of length,
    /// added to coordinate `axis` of atom `atom`, both counted from 0.
    std::string reference(std::string_view name) const;
    std::string displaced(std::string_view name, std::size_t atom, std::size_t axis,
                          decimal step) const;
};

/// Takes apart `text`, the contents of `file`. The sections after the atoms, and all lines that
/// need no change, are kept byte for byte. `way` leads from where the jobs are put to the directory
/// of `file`, "" if that is the same: relative names of files that are read, of %oldchk and of
/// "@FILE" lines behind the atoms, are put behind it.
///
/// Throws flib::io_error, with the line, if it is no Gaussian input or none that a set can be made
/// of: atoms that are not given by Cartesian coordinates (Z-matrices, variables), dummy and ghost
/// atoms, periodic systems, several jobs, open shells, and what judge_route() refuses.
job_template parse_input(std::string_view file, std::string_view text, std::string_view way = {});

/// Reads `file` whole and takes it apart, for jobs that are put into `directory`, which need not
/// exist. Throws flib::run_error if it cannot be read.
job_template read_input(const std::string& file, const std::string& directory);

}  // namespace sgn::inputs
