// A set of 100 atoms, 601 result files: all that sgn_derive makes of it, against reading the files.

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "compare.h"
#include "flib/io/unit.h"
#include "flib/util/units.h"
#include "inputs.h"
#include "model.h"
#include "sgn/check/report.h"
#include "sgn_derive/json.h"

namespace {

/// A crystal whose atoms are somewhat out of place.
model::molecule hundred_atoms() {
    model::molecule result;
    std::mt19937 random(3);
    for (int i = 0; i < 100; ++i) {
        result.numbers.push_back(i % 3 == 0 ? 8 : i % 3 == 1 ? 6 : 1);
        const double cell[] = {1.4 * (i % 5), 1.4 * (i / 5 % 5), 1.4 * (i / 25)};
        sgn::vec3 x{};
        for (std::size_t k = 0; k < 3; ++k) {
            x[k] = cell[k] + 0.3 * static_cast<double>(random() % 1000) / 1000;
        }
        result.x.push_back(x);
    }
    result.strength = 0.02;
    return result;
}

void write(const sgn::result_file& file, const std::string& path) {
    const sgn::sgn_contents& from = file.contents;
    const auto natom = static_cast<std::int32_t>(from.x.size());
    flib::matrix<double> x(3, natom, "coordinates");
    flib::matrix<double> forces(3, natom, "forces");
    for (std::size_t i = 0; i < from.x.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            x.view().all()[3 * i + k] = from.x[i][k] / flib::bohr_radius;
            forces.view().all()[3 * i + k] = from.frc[i][k];
        }
    }
    std::int32_t fid = 0;
    flib::get_free_fid(fid);
    flib::open_replace(fid, path);
    sgn::write_sgn_parameters(fid, from.parameters);
    sgn::write_sgn_body(fid, {from.symbol, from.nat, from.mass, std::as_const(x).view(),
                              from.corrected_tdip, std::as_const(forces).view()});
    flib::commit_unit(fid);
}

std::vector<sgn::result_file> read(const std::vector<std::string>& paths) {
    std::vector<sgn::result_file> files;
    for (const std::string& path : paths) files.push_back({path, sgn::read_sgn_file(path)});
    return files;
}

/// With so many of the signs reversed; `mixed` makes of one of them what no sign mends.
void derive_100_atoms(benchmark::State& state, std::size_t reversed, bool mixed) {
    const bench::temporary_directory directory;
    const model::molecule molecule = hundred_atoms();
    std::vector<std::string> paths{directory.file("ref.sgn")};
    write(model::reference(molecule), paths.front());
    auto files = model::displaced(molecule);
    for (std::size_t i = 0; i < reversed; ++i) model::reverse(files[151 * i + 7]);
    if (mixed)
        std::swap(files[300].contents.corrected_tdip[0], files[300].contents.corrected_tdip[1]);
    for (std::size_t i = 0; i < files.size(); ++i) {
        paths.push_back(directory.file(std::to_string(i) + ".sgn"));
        write(files[i], paths.back());
    }
    std::size_t findings = 0;
    std::size_t named = 0;
    bench::compare(
        state,
        [&] {
            auto all = read(paths);
            const sgn::result_file reference = std::move(all.front());
            all.erase(all.begin());
            const auto report = sgn::analyse(reference, all);
            benchmark::DoNotOptimize(sgn_derive::json_of(report).size());
            findings = report.findings.size();
            named = report.suspects.flips.empty() ? 0 : report.suspects.flips.front().size();
        },
        [&] { benchmark::DoNotOptimize(read(paths).size()); });
    state.counters["findings"] = static_cast<double>(findings);
    state.counters["signs_named"] = static_cast<double>(named);
}
BENCHMARK_CAPTURE(derive_100_atoms, fine, 0, false)->UseManualTime();
BENCHMARK_CAPTURE(derive_100_atoms, one_wrong_sign, 1, false)->UseManualTime();
BENCHMARK_CAPTURE(derive_100_atoms, three_wrong_signs, 3, false)->UseManualTime();
BENCHMARK_CAPTURE(derive_100_atoms, nothing_mends_it, 0, true)->UseManualTime();

}  // namespace
