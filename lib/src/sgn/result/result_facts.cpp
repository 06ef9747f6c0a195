#include "sgn/result/result_facts.h"

#include <algorithm>

#include "flib/io/stop_run.h"
#include "flib/qm_file/type_tag.h"
#include "flib/text/string.h"
#include "flib/util/units.h"

namespace sgn {
namespace {

using flib::quantity;

/// Why a result file does not give a quantity.
constexpr const char* not_in_results = "not in a result file";

flib::geometry geometry_of(const sgn_contents& result) {
    flib::geometry geometry;
    geometry.x = result.x;
    for (auto& atom : geometry.x) {
        for (double& coordinate : atom) coordinate /= flib::bohr_radius;
    }
    return geometry;
}

void take_result(flib::file_facts& facts, const sgn_contents& result,
                 std::span<const quantity> wanted) {
    const sgn_parameters& parameters = result.parameters;
    facts.missing.clear();
    facts.kind = {std::string(result_tag), "a result file of stigruz", "", -1};
    for (const quantity which : wanted) {
        switch (which) {
            case quantity::kind:
                break;
            case quantity::natom:
                facts.natom = parameters.natom;
                break;
            case quantity::numbers:
                facts.numbers = result.nat;
                break;
            case quantity::geometry:
                facts.geometry = geometry_of(result);
                break;
            case quantity::masses:
                facts.masses = result.mass;
                break;
            case quantity::forces:
                facts.forces = result.frc;
                break;
            case quantity::dipoles:
                facts.dipoles = {result.corrected_tdip};
                break;
            case quantity::excitations:
                facts.excitations = {parameters.mci, parameters.mi + parameters.nfc,
                                     parameters.nfc, parameters.mi,
                                     parameters.ma,  parameters.nfv};
                break;
            case quantity::oniom:
            case quantity::basis:
            case quantity::dump:
            case quantity::moments:
                facts.missing[which] = {not_in_results, false};
                break;
        }
    }
    facts.natom = parameters.natom;
}

}  // namespace

facts_and_result facts_with_result(const std::string& file, std::span<const quantity> wanted) {
    facts_and_result of{flib::facts_of(file, wanted)};
    if (of.facts.kind || !is_sgn_file(file)) return of;
    const auto damaged = [&](const std::string& why) {
        of.facts.missing[quantity::kind] = {"a damaged result file of stigruz: " + why, true};
    };
    try {
        of.result = read_sgn_file(file);
        take_result(of.facts, *of.result, wanted);
    } catch (const flib::io_error& error) {
        damaged(error.without_file());
    } catch (const flib::run_error& error) {
        damaged(error.what());
    }
    return of;
}

std::string_view owner_of_version(const flib::file_kind& kind) {
    if (kind.tag == flib::tag::orca) return "libXC";
    // What the rule takes for a version may be another word: "Apple", "TeraChem", ".", "UNKNOWN".
    // "0" stands for none.
    const bool has_digit = std::ranges::any_of(kind.version, flib::is_ascii_digit);
    return has_digit && kind.version != "0" ? "the program" : "";
}

}  // namespace sgn
