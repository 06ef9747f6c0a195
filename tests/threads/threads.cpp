// Readers called from several threads at once, compiled with ThreadSanitizer. Every thread must get
// what a single one gets, number its units from 100 up, and lose nothing when it ends.
#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "flib/excited/qm_file_nci.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/qm_file_coord.h"
#include "flib/qm_file/qm_file_force_tdip.h"
#include "flib/qm_file/qm_file_mass.h"
#include "flib/qm_file/qm_file_nat.h"
#include "flib/qm_file/qm_file_natom.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* files[] = {
    TEST_DATA "/gaussian/water_cis.log", TEST_DATA "/gaussian/oniom.log",
    TEST_DATA "/orca/water.out",         TEST_DATA "/qchem/water.out",
    TEST_DATA "/turbomole/ridft.out",    TEST_DATA "/nwchem/water.out",
    TEST_DATA "/gaussian/water.fchk",    TEST_DATA "/none",
};

/// All that the readers tell of one file, endings included.
std::string told_of(const char* file) {
    std::ostringstream told;
    told.precision(17);
    const auto ask = [&](auto reader) {
        try {
            reader();
        } catch (const std::exception& ending) {
            told << ending.what() << '\n';
        }
    };
    std::int32_t info = 0;
    std::int32_t natom = 0;
    ask([&] { flib::qm_file_natom(file, natom, info); });
    const auto n = static_cast<std::size_t>(natom);
    std::vector<std::int32_t> nat(n);
    std::vector<double> x(3 * n);
    std::vector<double> mass(n);
    std::vector<double> force(3 * n);
    std::array<double, 3> tdip{};
    std::array<std::int32_t, 6> counts{};
    ask([&] { flib::qm_file_nat(file, natom, nat, info); });
    ask([&] { flib::qm_file_coord(file, natom, {x.data(), 3, natom}, info); });
    ask([&] { flib::qm_file_mass(file, natom, mass, info); });
    ask([&] {
        flib::qm_file_force_tdip(file, natom, 1, {force.data(), 3, natom}, {tdip.data(), 3, 1},
                                 info);
    });
    ask([&] {
        flib::qm_file_nci(file, counts[0], counts[1], counts[2], counts[3], counts[4], counts[5],
                          info);
    });
    for (const std::int32_t number : nat) told << number << ' ';
    for (const std::int32_t number : counts) told << number << ' ';
    for (const auto& values : {x, mass, force}) {
        for (const double value : values) told << value << ' ';
    }
    return told.str() + std::to_string(tdip[0]);
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
