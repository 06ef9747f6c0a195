// Whole runs of the sign tool on damaged jobs.
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "flib/io/unit.h"
#include "numfreq/get_sgn_param.h"
#include "numfreq/run_driver.h"
#include "support.h"
#include "support/whole_density.h"

namespace {

// A job is one text: a line with the kind of run, then the log, the checkpoint, the dump and the
// reference, with lines of percent signs between them.
constexpr std::string_view divider = "%%%%\n";
constexpr const char* names[] = {"a.log", "a.fchk", "a.cis", "ref.sgn"};
constexpr std::string_view earlier = "an earlier result\n";

void write_file(const char* name, std::string_view contents) {
    const int descriptor = open(name, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const bool written = descriptor >= 0 && write(descriptor, contents.data(), contents.size()) ==
                                                static_cast<ssize_t>(contents.size());
    fuzz::require(written && close(descriptor) == 0, "no room in the scratch directory");
}

std::string read_file(const char* name) {
    std::string contents;
    const int descriptor = open(name, O_RDONLY);
    if (descriptor < 0) return contents;
    char buffer[4096];
    for (ssize_t got = 1; got > 0;) {
        got = read(descriptor, buffer, sizeof buffer);
        if (got > 0) contents.append(buffer, static_cast<std::size_t>(got));
    }
    close(descriptor);
    return contents;
}

int count_files() {
    int count = 0;
    DIR* const here = opendir(".");
    while (readdir(here) != nullptr) ++count;
    closedir(here);
    return count;
}

/// Whether `text` has all the records of a result, as many as its own count of atoms asks for.
bool is_whole(std::string_view text) {
    constexpr std::string_view label = "\n natom          = ";
    const std::size_t at = text.find(label);
    if (!text.starts_with("INFORMATION\n") || at == std::string_view::npos) return false;
    const long natom = std::atol(std::string(text.substr(at + label.size(), 20)).c_str());
    return text.back() == '\n' && std::count(text.begin(), text.end(), '\n') == 16 + 2 * natom;
}

void enter_scratch_directory() {
    std::string pattern = "/dev/shm/stigruz-fuzz-XXXXXX";
    fuzz::require(mkdtemp(pattern.data()) != nullptr && chdir(pattern.c_str()) == 0,
                  "no scratch directory");
    static const std::string path = pattern;
    std::atexit([] {
        for (const char* const name : names) unlink(name);
        unlink("a.sgn");
        rmdir(path.c_str());
    });
}

/// The chosen element must be the one that the public routines give, or both must end alike.
void check_density(bool mapped) {
    std::int32_t natom = 0;
    std::int32_t mci = 0;
    double value = 0;
    flib::orbital_counts counts{};
    flib::element_location at{};
    const fuzz::ending end = fuzz::ending_of([&] {
        numfreq::get_sgn_param(mapped, mapped ? "ref.sgn" : "a.fchk", natom, counts.nbasis,
                               counts.nbsuse, counts.mi, counts.ma, mci, counts.nfc, counts.nfv, at,
                               value);
    });
    // What does not fit into memory as a whole has no answer to compare with.
    constexpr std::int32_t most = 200;
    const auto& [nbasis, nbsuse, mi, ma, nfc, nfv] = counts;
    if (end != fuzz::ending::returned || std::max({nbasis, mi, ma, mci}) > most) return;
    const sgn::density_source source{"a.fchk", "a.cis", counts, mci};
    const flib::element_location* const chosen = mapped ? &at : nullptr;
    const std::string told =
        support::told_by([&] { return support::whole_density(source, chosen); });
    fuzz::require(support::told_by_tool(source, chosen) == told,
                  "the element differs from that of the whole density");
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned int seed) {
    return fuzz::mutate_text(data, size, most, seed);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool ready = (enter_scratch_directory(), true);
    static_cast<void>(ready);
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    const auto next_part = [&] {
        const std::size_t at = rest.find(divider);
        const std::string_view part = rest.substr(0, at);
        rest.remove_prefix(at == std::string_view::npos ? rest.size() : at + divider.size());
        return part;
    };
    const bool mapped = next_part().starts_with("mapped");
    for (const char* const name : names) write_file(name, next_part());
    const bool replaces = size % 2 == 0;
    if (replaces) {
        write_file("a.sgn", earlier);
    } else {
        unlink("a.sgn");
    }

    std::vector<std::string_view> arguments{"a.fchk"};
    if (mapped) arguments.emplace_back("ref.sgn");
    const fuzz::ending end = fuzz::ending_of([&] { numfreq::run_driver(arguments); });

    const std::string result = read_file("a.sgn");
    if (end == fuzz::ending::returned) {
        fuzz::require(is_whole(result), "the result is not whole");
    } else {
        fuzz::require(result == (replaces ? earlier : ""), "the earlier result was touched");
    }
    if (size % 3 == 0) check_density(mapped);
    constexpr int inputs_and_dots = 4 + 2;
    fuzz::require(count_files() == inputs_and_dots + (result.empty() ? 0 : 1), "a stray file");
    fuzz::require(!flib::unit_is_open(100) && !flib::unit_is_open(1), "a unit was left open");
    return 0;
}
