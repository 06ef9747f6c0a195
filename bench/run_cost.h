// What a whole run of a tool costs.
#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>

#include "inputs.h"

namespace bench {

struct run_cost {
    double wall_seconds = 0;
    double processor_seconds = 0;
    long kibibytes = 0;
};

/// Runs a command in a directory. Throws std::runtime_error if its status is not 0.
inline run_cost run(const temporary_directory& directory, const std::string& command) {
    const std::string measured = MEASURE " " + directory.file("") + " " + command;
    std::FILE* const answer = popen(measured.c_str(), "r");
    run_cost cost;
    const bool complete =
        answer != nullptr && std::fscanf(answer, "%lf %lf %ld", &cost.wall_seconds,
                                         &cost.processor_seconds, &cost.kibibytes) == 3;
    if (answer != nullptr) pclose(answer);
    if (!complete) throw std::runtime_error(command + " failed");
    return cost;
}

}  // namespace bench
