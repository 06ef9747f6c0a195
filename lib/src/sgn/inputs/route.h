// The route section of a Gaussian input: which job it asks for.
//
//     #p oniom(td=(nstates=4,root=1) b3lyp/6-31g(d):uff)=embed
//        nosymm scf(conver=10)
//
// Keywords stand in letters of either case, apart from each other by blanks, tabs, commas, slashes
// or ends of lines; options follow as KEYWORD=OPTION, KEYWORD(OPTIONS) or KEYWORD=(OPTIONS), and
// may have options themselves.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sgn::inputs {

struct keyword {
    std::string name;  // in lower case
    std::vector<keyword> options{};

    friend bool operator==(const keyword&, const keyword&) = default;
};

/// The keywords of `text`, which is a route without the "#", its level and comments. Throws
/// flib::run_error if parentheses do not match.
std::vector<keyword> parse_route(std::string_view text);

enum class length_unit { angstrom, bohr };

/// What a route says of the job, as far as a set of displaced jobs needs to know.
struct job_kind {
    length_unit unit = length_unit::angstrom;
    bool oniom = false;
    bool nosymm = false;
    bool force = false;
    bool reads_checkpoint = false;  // orbitals, states or basis set of an earlier job
    int root = 1;
    std::vector<std::string> unknown{};  // keywords of which nothing is known here
    /// What is around the atoms that are moved and stays in its place, in words.
    std::vector<std::string> outside{};

    friend bool operator==(const job_kind&, const job_kind&) = default;
};

/// Throws flib::run_error, with the reason, if a set of displaced jobs cannot be made of such a
/// job: if it is none of an excited state whose amplitudes can be used (cis, td, tda; singlets of a
/// closed shell), does more than one geometry, takes its geometry from elsewhere, or goes on with
/// an earlier job.
job_kind judge_route(const std::vector<keyword>& route);

}  // namespace sgn::inputs
