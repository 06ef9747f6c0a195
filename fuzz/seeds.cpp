// Writes made-up jobs as inputs of fuzz_job, and blocks of numbers in columns as inputs of
// fuzz_items: fuzz_seeds JOB-DIRECTORY ITEMS-DIRECTORY, run in an empty directory.
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <random>
#include <vector>

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

/// A job whose coefficients and amplitudes fill four lines each behind the first.
support::job job_with_blocks(std::mt19937_64& random) {
    return support::random_job(random, 1, 0, 2, 3, 0, 2);
}

void write_blocks(const std::filesystem::path& target) {
    std::mt19937_64 random(8);
    std::uniform_real_distribution<double> exponent(-17, 3);
    int number = 0;
    for (const char* const format : {"%16.8E", " %20.8E", "%20.12E", "%22.12E"}) {
        for (const int lines : {5, 6, 9, 13}) {
            // The first five bytes say what is taken, and whether from a file.
            std::string text = number % 2 == 0 ? std::string(5, '\0') : std::string(5, '\xaa');
            for (int i = 0; i < 5 * lines; ++i) {
                char field[40];
                const double sign = random() % 2 == 0 ? 1 : -1;
                std::snprintf(field, sizeof field, format, sign * std::pow(10, exponent(random)));
                // A dump's lines begin with a blank, its numbers do not.
                text += i % 5 != 0 && format[0] == ' ' ? field + 1 : field;
                if (i % 5 == 4) text += '\n';
            }
            support::write_file(target / ("block" + std::to_string(number++)), text);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const std::filesystem::path target = argv[1];
    write_blocks(argv[2]);
    std::mt19937_64 random(7);
    int number = 0;
    for (const bool oniom : {false, true}) {
        for (const char* const kind : {"reference", "mapped"}) {
            for (const int size : oniom ? std::vector{1, 2} : std::vector{1, 2, 3, 4}) {
                support::job job = size == 3 ? job_with_blocks(random)
                                             : support::random_job(random, 3, size - 1, size,
                                                                   size + 1, size - 1, size);
                // Of the last the dump does not tell its layout.
                support::write_job(".", "a", job, {.layout_told = size != 4});
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
