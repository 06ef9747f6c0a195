// Writes made-up jobs as inputs of fuzz_job: fuzz_seeds DIRECTORY, run in an empty directory.
#include <filesystem>
#include <random>

#include "numfreq/run_driver.h"
#include "support/job.h"
#include "support/support.h"

namespace {

/// The log of a job of which the atoms are the high layer of a larger one: of three, the second
/// belongs to the low layer.
std::string layered(std::string log) {
    const auto replace = [&](std::string_view before, std::string_view after) {
        const std::size_t at = log.find(before);
        if (at != std::string::npos) log.replace(at, before.size(), after);
    };
    replace(" NAtoms=",
            " # oniom(cis/6-31g:amber) force\n"
            " Charge =  0 Multiplicity = 1 for low   level calculation on real  system.\n"
            " H    0    0.1    0.2    0.3    H\n H    0    0.4    0.5    0.6    L\n"
            " H    0    0.7    0.8    0.9    H\n NAtoms=");
    replace("          Forces (Hartrees/Bohr)", "    Integrated Forces (Hartrees/Bohr)");
    return log;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const std::filesystem::path target = argv[1];
    std::mt19937_64 random(7);
    int number = 0;
    for (const bool oniom : {false, true}) {
        for (const char* const kind : {"reference", "mapped"}) {
            for (const int size : {1, 2}) {
                support::job job =
                    support::random_job(random, 3, size - 1, size, size + 1, size - 1, size);
                support::write_job(".", "a", job);
                if (oniom) {
                    support::write_file("a.log", layered(support::contents_of("a.log")));
                    // The checkpoint counts the high layer only.
                    job.nat.resize(2);
                    support::write_file("a.fchk", support::checkpoint_text(job));
                }
                const std::vector<std::string_view> arguments{"a.fchk"};
                numfreq::run_driver(arguments);
                std::string text = std::string(kind) + "\n";
                for (const char* const name : {"a.log", "a.fchk", "a.cis", "a.sgn"}) {
                    text += "%%%%\n" + support::contents_of(name);
                }
                support::write_file(target / ("seed" + std::to_string(number++)), text);
            }
        }
    }
}
