// Readers called from several threads at once, compiled with ThreadSanitizer. Every thread must get
// what a single one gets, number its units from 100 up, and lose nothing when it ends.
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "flib/facts/file_facts.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* files[] = {
    TEST_DATA "/gaussian/water_cis.log", TEST_DATA "/gaussian/oniom.log",
    TEST_DATA "/orca/water.out",         TEST_DATA "/qchem/water.out",
    TEST_DATA "/turbomole/ridft.out",    TEST_DATA "/nwchem/water.out",
    TEST_DATA "/gaussian/water.fchk",    TEST_DATA "/none",
};

/// What the readers find in a file, and why not the rest.
std::string told_of(const char* file) {
    std::ostringstream told;
    told.precision(17);
    const auto tell = [&](const auto& values) {
        for (const auto& value : values) told << value << ' ';
    };
    try {
        const flib::file_facts facts = flib::facts_of(file);
        if (facts.kind) told << facts.kind->tag << facts.kind->version << '\n';
        if (facts.numbers) tell(*facts.numbers);
        if (facts.masses) tell(*facts.masses);
        if (facts.geometry) std::ranges::for_each(facts.geometry->x, tell);
        if (facts.forces) std::ranges::for_each(*facts.forces, tell);
        if (facts.dipoles) std::ranges::for_each(*facts.dipoles, tell);
        if (facts.oniom) tell(facts.oniom->high);
        if (facts.excitations) told << facts.excitations->active_virtual;
        for (const auto& [which, why] : facts.missing) told << '\n' << why.reason;
    } catch (const flib::ending& end) {
        told << end.what();
    }
    return told.str();
}

/// Descriptors that the process has open.
std::ptrdiff_t open_descriptors() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

}  // namespace

int main() {
    constexpr int rounds = 6;
    std::vector<std::string> expected;
    std::ranges::transform(files, std::back_inserter(expected), told_of);
    if (expected[0].find("17.99916") == std::string::npos) {
        std::puts("the files are not read at all");
        return 1;
    }

    const flib::input_unit of_this_thread(files[0]);
    const std::ptrdiff_t before = open_descriptors();
    std::atomic<int> faults = 0;
    const auto work = [&](std::size_t first) {
        for (std::size_t i = 0; i < rounds * std::size(files); ++i) {
            const std::size_t which = (first + i) % std::size(files);
            if (told_of(files[which]) != expected[which]) ++faults;
        }
        // Left open, as a thread that ends by an exception may leave it.
        std::int32_t fid = 0;
        flib::get_free_fid(fid);
        flib::open_old(fid, files[0]);
        if (fid != 100 || !flib::unit_is_open(fid) || flib::unit_is_open(101)) ++faults;
    };
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < 4; ++i) threads.emplace_back(work, 2 * i);
    for (std::thread& thread : threads) thread.join();

    const bool still_open = flib::unit_is_open(of_this_thread) && !flib::unit_is_open(101);
    const std::ptrdiff_t left = open_descriptors() - before;
    if (faults == 0 && still_open && left == 0) return 0;
    std::printf("%d other results, %d files left open%s\n", faults.load(), static_cast<int>(left),
                still_open ? "" : ", a unit was lost");
    return 1;
}
