#include "qm_file/file_facts.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

#include "flib/excited/qm_file_nbasis_nbsuse.h"
#include "flib/excited/qm_file_nci.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/qm_file/qm_file_coord.h"
#include "flib/qm_file/qm_file_force_tdip.h"
#include "flib/qm_file/qm_file_mass.h"
#include "flib/qm_file/qm_file_nat.h"
#include "flib/qm_file/qm_file_natom.h"
#include "flib/qm_file/qm_file_oniom.h"
#include "flib/qm_file/qm_file_type.h"
#include "flib/qm_file/type_tag.h"
#include "flib/util/elements.h"
#include "flib/util/file.h"

namespace qm_file {
namespace {

constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

std::size_t size_of(std::int32_t count) {
    return static_cast<std::size_t>(std::max(count, 0));
}

vectors unknown_vectors(std::int32_t count) {
    return {std::vector<double>(3 * size_of(count), unknown)};
}

bool is_log(const file_facts& facts) {
    return facts.tag == flib::tag::gaussian_log;
}

void read_type(file_facts& facts) {
    flib::line_buffer tag;
    flib::line_buffer version;
    // Detection is silent about a file that cannot be opened; say why.
    const flib::input_unit readable(facts.file);
    flib::qm_file_type(facts.file, tag, version, facts.class_code);
    facts.tag = tag.trimmed();
    facts.version = flib::trim(version.padded());
}

void read_natom(file_facts& facts) {
    std::int32_t natom = 0;
    std::int32_t info = 0;
    flib::qm_file_natom(facts.file, natom, info);
    if (info == 0) facts.natom = natom;
}

void read_oniom(file_facts& facts) {
    bool ifoniom = false;
    std::int32_t info = 0;
    flib::qm_file_ifoniom(facts.file, ifoniom, info);
    if (!ifoniom) return;
    oniom_layers layers;
    if (is_log(facts)) {
        flib::qm_file_natom_oniom_qm(facts.file, layers.high, layers.all, info);
        layers.index.resize(size_of(layers.high));
        flib::qm_file_oniom_index(facts.file, layers.high, layers.all, layers.index, info);
    } else {
        // An input file tells how many there are only by listing them: at most one per line.
        layers.index.resize(size_of(flib::num_file_lines(facts.file)));
        const auto most = static_cast<std::int32_t>(layers.index.size());
        flib::qm_file_oniom_index(facts.file, most, layers.all, layers.index, info);
        std::erase(layers.index, 0);
        layers.high = static_cast<std::int32_t>(layers.index.size());
    }
    if (layers.all > 0) facts.oniom = layers;
}

void read_nat(file_facts& facts) {
    std::vector<std::int32_t> nat(size_of(*facts.natom));
    std::int32_t info = 0;
    flib::qm_file_nat(facts.file, *facts.natom, nat, info);
    const bool any = std::ranges::any_of(nat, [](std::int32_t number) { return number != 0; });
    if (any) facts.nat = nat;
}

/// Reads the table of coordinates (Angstrom) that follows the last line with `title`.
vectors last_table(std::string_view file, std::string_view title, std::int32_t natom) {
    const flib::input_unit fid(file);
    flib::line_buffer line;
    if (!flib::search_word_free_last(fid, title, line)) return {};
    if (!flib::go_before_first_number(fid)) return {};
    vectors x = unknown_vectors(natom);
    flib::read_vector_rows(fid, 3, x.view());
    return x;
}

/// Whether two geometries differ by more than a shift.
bool turned(const vectors& a, const vectors& b) {
    constexpr double printed_digits = 1e-5;
    for (std::size_t i = 3; i < std::min(a.values.size(), b.values.size()); ++i) {
        const double from_first_atom = a.values[i] - a.values[i % 3];
        if (std::abs(from_first_atom - (b.values[i] - b.values[i % 3])) > printed_digits)
            return true;
    }
    return false;
}

void read_coord(file_facts& facts) {
    vectors x = unknown_vectors(*facts.natom);
    std::int32_t info = 0;
    flib::qm_file_coord(facts.file, *facts.natom, x.view(), info);
    if (info != 0) return;
    facts.coordinates = x;
    if (!is_log(facts)) return;
    facts.two_frames = turned(last_table(facts.file, "Input orientation:", *facts.natom),
                              last_table(facts.file, "Standard orientation:", *facts.natom));
}

void read_mass(file_facts& facts) {
    std::vector<double> masses(size_of(*facts.natom), unknown);
    std::int32_t info = 0;
    flib::qm_file_mass(facts.file, *facts.natom, masses, info);
    const bool any = std::ranges::any_of(masses, [](double mass) { return !std::isnan(mass); });
    if (any) facts.masses = masses;
}

void read_force(file_facts& facts) {
    const std::int32_t natom = facts.oniom ? facts.oniom->high : *facts.natom;
    const std::int32_t states = facts.excitations ? std::max(facts.excitations->roots, 1) : 1;
    vectors forces = unknown_vectors(natom);
    vectors dipoles = unknown_vectors(states);
    std::int32_t info = 0;
    flib::qm_file_force_tdip(facts.file, natom, states, forces.view(), dipoles.view(), info);
    if (std::isnan(dipoles.values.front())) return;
    facts.forces = forces;
    facts.dipoles = dipoles;
}

void read_nbasis(file_facts& facts) {
    basis_counts counts;
    std::int32_t info = 0;
    flib::qm_file_nbasis_nbsuse(facts.file, counts.alpha, counts.beta, counts.functions,
                                counts.independent, info);
    if (counts.functions > 0) facts.basis = counts;
}

void read_nci(file_facts& facts) {
    excitation_counts counts;
    std::int32_t info = 0;
    flib::qm_file_nci(facts.file, counts.active_occupied, counts.active_virtual, counts.roots,
                      counts.alpha, counts.frozen_core, counts.frozen_virtual, info);
    facts.excitations = counts;
}

/// Asks one reader; how it ended is kept if it did not return.
bool ask(file_facts& facts, quantity which, void (*reader)(file_facts&)) {
    try {
        reader(facts);
        return true;
    } catch (const flib::stop_run& stop) {
        facts.endings[which] = {stop.status(), stop.lines(), false};
    } catch (const flib::run_error& error) {
        facts.endings[which] = {flib::exit_status::diagnostic, {error.what()}, true};
    } catch (const std::bad_alloc&) {
        facts.endings[which] = {flib::exit_status::diagnostic, {"not enough memory"}, true};
    }
    return false;
}

}  // namespace

file_facts facts_of(std::string_view file, const std::vector<quantity>& wanted, bool alone) {
    file_facts facts;
    facts.file = file;
    const auto is_wanted = [&](quantity which) { return std::ranges::count(wanted, which) != 0; };
    // What others build upon comes first, and is asked for with them.
    const bool of_atoms = is_wanted(quantity::natom) || is_wanted(quantity::nat) ||
                          is_wanted(quantity::coord) || is_wanted(quantity::mass) ||
                          is_wanted(quantity::force);
    if (!ask(facts, quantity::type, read_type)) return facts;
    if (of_atoms && !ask(facts, quantity::natom, read_natom)) return facts;
    if (is_wanted(quantity::oniom) || is_wanted(quantity::force)) {
        ask(facts, quantity::oniom, read_oniom);
    }
    if ((is_wanted(quantity::nci) && alone) || (is_wanted(quantity::force) && is_log(facts))) {
        ask(facts, quantity::nci, read_nci);
    }
    if (is_wanted(quantity::nbasis) && (alone || !is_log(facts))) {
        ask(facts, quantity::nbasis, read_nbasis);
    }
    if (!facts.natom) return facts;
    if (is_wanted(quantity::nat)) ask(facts, quantity::nat, read_nat);
    if (is_wanted(quantity::coord)) ask(facts, quantity::coord, read_coord);
    if (is_wanted(quantity::mass)) ask(facts, quantity::mass, read_mass);
    if (is_wanted(quantity::force)) ask(facts, quantity::force, read_force);
    return facts;
}

std::string formula(const std::vector<std::int32_t>& nat) {
    std::map<std::string_view, std::size_t> counts;
    for (const std::int32_t number : nat) {
        ++counts[number >= 0 && number <= 118 ? flib::element_symbol(number) : "?"];
    }
    std::string text;
    const auto add = [&](std::string_view symbol) {
        const auto found = counts.find(symbol);
        if (found == counts.end()) return;
        text += symbol;
        if (found->second > 1) text += std::to_string(found->second);
        counts.erase(found);
    };
    if (counts.contains("C")) {
        add("C");
        add("H");
    }
    while (!counts.empty()) add(counts.begin()->first);
    return text;
}

}  // namespace qm_file
