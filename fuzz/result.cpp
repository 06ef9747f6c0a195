// The result file read back, and written again.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "flib/io/unit.h"
#include "flib/text/string_utility.h"
#include "flib/util/units.h"
#include "sgn/result/sgn_file.h"
#include "support.h"

namespace {

const std::string& scratch_path() {
    static const std::string path = "/dev/shm/stigruz-fuzz-" + std::to_string(getpid()) + ".sgn";
    static const bool removed_at_exit = std::atexit([] { unlink(scratch_path().c_str()); }) == 0;
    static_cast<void>(removed_at_exit);
    return path;
}

/// What was read, as the tool writes it, in scratch_path().
std::string rewritten(const sgn::sgn_contents& contents) {
    constexpr std::int32_t unit = 1;
    const auto natom = static_cast<std::int32_t>(contents.nat.size());
    std::vector<double> x;
    for (const auto& atom : contents.x) {
        for (const double component : atom) x.push_back(component / flib::bohr_radius);
    }
    std::vector<double> frc;
    for (const auto& atom : contents.frc) frc.insert(frc.end(), atom.begin(), atom.end());
    flib::open_replace(unit, scratch_path());
    sgn::write_sgn_parameters(unit, contents.parameters);
    sgn::write_sgn_body(unit, {contents.symbol,
                               contents.nat,
                               contents.mass,
                               {x.data(), 3, natom},
                               contents.corrected_tdip,
                               {frc.data(), 3, natom}});
    flib::commit_unit(unit);
    std::string text;
    const flib::input_unit fid(scratch_path());
    flib::line_buffer line;
    while (flib::read_record(fid, line)) text.append(line.trimmed()).append("\n");
    return text;
}

/// Whether the columns of the file can hold what was read, with a blank before each number.
bool fits(const sgn::sgn_contents& contents, std::string_view text) {
    const auto no_blank = [](char c) { return c > ' ' && c <= '~' && c != ','; };
    // The largest numbers are rounded to ten digits beyond what can be read.
    const auto readable = [](double x) {
        return std::isinf(x) || !(std::abs(x) >= 1.7976931348e308);
    };
    const auto below = [](double most) { return [=](double x) { return !(std::abs(x) >= most); }; };
    return text.find('*') == std::string_view::npos &&
           std::ranges::all_of(contents.symbol,
                               [&](const sgn::report_symbol& symbol) {
                                   return !symbol.trimmed().empty() &&
                                          std::ranges::all_of(symbol.trimmed(), no_blank);
                               }) &&
           std::ranges::all_of(contents.nat, below(1e5)) &&
           std::ranges::all_of(contents.mass, below(1e5)) &&
           readable(contents.parameters.tden_maxval) &&
           std::ranges::all_of(contents.corrected_tdip, readable) &&
           std::ranges::all_of(
               contents.frc,
               [&](const std::array<double, 3>& f) { return std::ranges::all_of(f, readable); }) &&
           std::ranges::all_of(contents.x, [&](const std::array<double, 3>& x) {
               return std::ranges::all_of(x, [](double c) { return !(c <= -999 || c >= 9999); });
           });
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned int seed) {
    return fuzz::mutate_text(data, size, most, seed);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static fuzz::memory_file file;
    file.fill({reinterpret_cast<const char*>(data), size});
    fuzz::ending_of([&] {
        const flib::input_unit fid(file.path());
        static_cast<void>(sgn::read_sgn_parameters(fid));
    });
    fuzz::ending_of([&] {
        const sgn::sgn_contents contents = sgn::read_sgn_file(file.path());
        const std::string once = rewritten(contents);
        if (!fits(contents, once)) return;
        fuzz::ending read = fuzz::ending::failed;
        std::string twice;
        read = fuzz::ending_of([&] { twice = rewritten(sgn::read_sgn_file(scratch_path())); });
        fuzz::require(read == fuzz::ending::returned, "a written result cannot be read back");
        fuzz::require(once == twice, "a written result changes when it is written again");
    });
    fuzz::require(!flib::unit_is_open(100) && !flib::unit_is_open(1), "a unit was left open");
    return 0;
}
