// The sets of result files that the tests use: that of the bundled example, made by stigruz, and
// one of wide-angled water.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "sgn/set/displaced_set.h"
#include "support/support.h"

namespace sets {

namespace fs = std::filesystem;

struct set_files {
    std::string name;
    sgn::result_file reference;
    std::vector<sgn::result_file> files;  // in the order of their names
};

inline set_files read(const std::string& name, const fs::path& directory) {
    set_files result{name, {}, {}};
    std::vector<fs::path> paths;
    for (const auto& entry : fs::directory_iterator(directory)) {
        if (entry.path().extension() == ".sgn") paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    for (const fs::path& path : paths) {
        sgn::result_file file{path.filename(), sgn::read_sgn_file(path.string())};
        if (file.name.find("_ref") != std::string::npos) {
            result.reference = std::move(file);
        } else {
            result.files.push_back(std::move(file));
        }
    }
    return result;
}

/// A directory with the example's files and the result files that stigruz makes of them.
inline const fs::path& water_directory() {
    static const support::scratch_directory scratch;
    static const bool made = [] {
        fs::copy(EXAMPLES "/water", scratch.path());
        fs::copy(support::data_file("h2o_ref.sgn"), scratch.path());
        std::istringstream results(support::contents_of(support::data_file("water_results.txt")));
        std::ofstream file;
        for (std::string line; std::getline(results, line);) {
            if (line.starts_with("== ")) {
                file = std::ofstream(scratch.path() / (line.substr(3) + ".sgn"));
            } else {
                file << line << '\n';
            }
        }
        return true;
    }();
    (void)made;
    return scratch.path();
}

inline const set_files& water() {
    static const set_files set = read("water", water_directory());
    return set;
}

inline const set_files& crossing() {
    static const set_files set = read("crossing", support::data_file("crossing_results"));
    return set;
}

/// Turns the dipole, the sign, and the element of a result round.
inline void reverse(sgn::result_file& file, bool element) {
    for (double& component : file.contents.corrected_tdip) component = -component;
    file.contents.parameters.sign *= -1;
    if (element) file.contents.parameters.tden_maxval *= -1;
}

}  // namespace sets
