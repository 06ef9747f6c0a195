// Whether find_signs() is ever wrong: every state of sets of jobs, all signs drawn at random.
//
//   find_signs_check [-n DRAWS] DIRECTORY...
//
// Each directory holds one set, its reference NAME_ref.fchk. True signs are those of the overlaps.
// With the dipoles of the logs (four decimals) and with those of the checkpoints (nine digits).
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sgn/set/find_signs.h"
#include "sgn/states/job_set.h"

namespace {

namespace fs = std::filesystem;

struct tally {
    int right = 0;
    int undecided = 0;
    int wrong = 0;
    sgn::found_signs last{};
    double seconds = 0;
};

/// Whether the dipole of a job is zero in its digits, so that its sign means nothing.
bool is_zero(const sgn::displaced_set& set, const sgn::displaced_job& job) {
    const double zero = std::max(0.5 * std::pow(10, -set.dipole_decimals), 1e-6);
    return std::ranges::all_of(job.dipole, [&](double value) { return std::abs(value) < zero; });
}

tally draw(const sgn::displaced_set& truth, int draws, std::mt19937& random) {
    tally result;
    for (int n = 0; n < draws; ++n) {
        std::vector<int> reversed;
        for (std::size_t j = 0; j < truth.jobs.size(); ++j) {
            reversed.push_back((random() & 1U) != 0 ? 1 : -1);
        }
        const sgn::displaced_set drawn = sgn::with_signs(truth, reversed);
        const auto before = std::chrono::steady_clock::now();
        result.last = sgn::find_signs(drawn);
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - before;
        result.seconds = std::max(result.seconds, took.count());
        if (!result.last.decided) {
            ++result.undecided;
            continue;
        }
        // All that mean something reversed, or none: only relative signs do, of a dark reference.
        int same = 0;
        int other = 0;
        for (std::size_t j = 0; j < truth.jobs.size(); ++j) {
            if (is_zero(truth, truth.jobs[j])) continue;
            ++(result.last.signs[j] == reversed[j] * reversed[0] ? same : other);
        }
        const bool dark = is_zero(truth, truth.jobs[0]);
        ++(other == 0 || (dark && same == 0) ? result.right : result.wrong);
    }
    return result;
}

/// The checkpoints of a set, the reference first.
std::vector<std::string> checkpoints_in(const fs::path& directory) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory)) {
        if (entry.path().extension() == ".fchk") names.push_back(entry.path().filename().string());
    }
    std::ranges::sort(names);
    const auto is_reference = [](const std::string& name) { return name.ends_with("_ref.fchk"); };
    std::ranges::stable_partition(names, is_reference);
    return names;
}

bool check(const fs::path& directory, int draws) {
    const std::vector<std::string> names = checkpoints_in(directory);
    fs::current_path(directory);
    const int states = sgn::read_job(names.at(0)).states;
    std::mt19937 random(11);
    bool good = true;
    for (int state = 1; state <= states; ++state) {
        const auto others = std::span(names).subspan(1);
        sgn::job_set jobs = sgn::set_of_jobs(names[0], others, state);
        for (const bool full : {false, true}) {
            if (full && !jobs.no_full_digits.empty()) continue;
            std::vector<sgn::result_file> files = jobs.files;
            sgn::result_file reference = jobs.reference;
            if (!full) {
                reference.full.reset();
                for (sgn::result_file& each : files) each.full.reset();
            }
            const sgn::displaced_set set = sgn::make_set(reference, files);
            const tally told = draw(set, draws, random);
            good = good && told.wrong == 0;
            std::printf("%-10s %5d %8d %8.4f %6d %9d %6d %7zu %8.5f %6.2f  %s\n",
                        directory.filename().c_str(), state, set.dipole_decimals,
                        sgn::length(set.jobs[0].dipole), told.right, told.undecided, told.wrong,
                        told.last.open.size(), told.last.largest_change, told.seconds,
                        told.last.reason.c_str());
        }
    }
    return good;
}

}  // namespace

int main(int argc, char** argv) {
    int draws = 100;
    bool good = true;
    try {
        std::printf(
            "set        state decimals   dipole  right undecided  wrong    open   change      s\n");
        std::vector<fs::path> directories;
        for (int i = 1; i < argc; ++i) {
            if (std::string_view(argv[i]) == "-n" && i + 1 < argc) {
                draws = std::atoi(argv[++i]);
            } else {
                directories.push_back(fs::canonical(argv[i]));
            }
        }
        for (const fs::path& each : directories) good = check(each, draws) && good;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "find_signs_check: %s\n", error.what());
        return 2;
    }
    return good ? 0 : 1;
}
