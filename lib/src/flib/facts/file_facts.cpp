#include "flib/facts/file_facts.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

#include "flib/excited/basis_functions.h"
#include "flib/excited/detail/amplitude_dump.h"
#include "flib/excited/qm_file_nbasis_nbsuse.h"
#include "flib/excited/qm_file_nci.h"
#include "flib/io/detail/record_file.h"
#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/detail/facts_steps.h"
#include "flib/qm_file/detail/oniom_steps.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/qm_file/detail/recognise.h"
#include "flib/qm_file/qm_file_coord.h"
#include "flib/qm_file/qm_file_mass.h"
#include "flib/qm_file/qm_file_nat.h"
#include "flib/qm_file/qm_file_natom.h"
#include "flib/qm_file/qm_file_oniom.h"
#include "flib/qm_file/type_tag.h"
#include "flib/search/search_word.h"
#include "flib/util/file.h"
#include "flib/util/units.h"

namespace flib {
namespace {

constexpr std::string_view names[] = {
    "file type", "atom count",       "atomic numbers",     "geometry",
    "masses",    "forces",           "transition dipoles", "ONIOM layers",
    "basis",     "excitation space", "dumped record",      "moments of states",
};
static_assert(std::size(names) == std::size(all_quantities));

constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

/// Ends the reading of one quantity, with the reason.
class not_there : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

matrix_view<double> view(vector_list& vectors) {
    return {vectors.empty() ? nullptr : vectors.front().data(), 3,
            static_cast<std::int32_t>(vectors.size())};
}

vector_list unknown_vectors(std::int32_t count) {
    return vector_list(static_cast<std::size_t>(count), {unknown, unknown, unknown});
}

class asker {
  public:
    asker(std::string_view fname, std::span<const quantity> wanted) : wanted_(wanted), fid_(fname) {
        facts_.file = trim_right(fname);
        size_ = input_of(fid_).bytes_left();
    }

    file_facts all();

  private:
    bool is_wanted(quantity which) const { return std::ranges::count(wanted_, which) != 0; }
    bool is(std::string_view tag) const { return facts_.kind && facts_.kind->tag == tag; }
    std::string_view file() const { return facts_.file; }

    template <class Value>
    void ask(quantity which, std::optional<Value>& fact, Value (asker::*reader)());
    void require_kind(bool is_read) const;
    std::int32_t atoms() const;

    file_kind kind();
    std::int32_t natom();
    std::vector<std::int32_t> numbers();
    std::vector<std::int32_t> point_charges();
    flib::geometry geometry();
    std::vector<double> masses();
    vector_list forces();
    vector_list dipoles();
    oniom_layers oniom();
    basis_counts basis();
    excitation_counts excitations();
    dump_header dump();
    state_moments moments();

    std::span<const quantity> wanted_;
    input_unit fid_;
    std::int64_t size_ = 0;  // of the file
    file_facts facts_;
};

/// Asks for one quantity, and keeps why it is missing if it is.
template <class Value>
void asker::ask(quantity which, std::optional<Value>& fact, Value (asker::*reader)()) {
    absence why;
    try {
        rewind_unit(fid_);
        fact = (this->*reader)();
        return;
    } catch (const not_there& absent) {
        why.reason = absent.what();
    } catch (const stop_run& stop) {
        why.reason = stop.hint().empty() ? stop.what() : stop.hint();
    } catch (const line_not_found& absent) {
        why.reason = "no line with '" + absent.word() + "'";
    } catch (const io_error& error) {
        // The file's name is known.
        why = {error.file() == file() ? error.without_file() : error.what(), true};
    } catch (const run_error& error) {
        why = {error.what(), true};
    } catch (const std::bad_alloc&) {
        why = {"not enough memory", true};
    }
    facts_.missing[which] = why;
}

void asker::require_kind(bool is_read) const {
    if (!facts_.kind) throw not_there{"the program is not recognised"};
    if (!is_read) throw not_there{"not read from " + facts_.kind->in_words};
}

std::int32_t asker::atoms() const {
    if (!facts_.natom) throw not_there{"the number of atoms is not known"};
    const std::int32_t natom = *facts_.natom;
    if (natom < 1) throw not_there{"the file says that it has " + std::to_string(natom) + " atoms"};
    // Memory would grow with a count that may be absurd.
    constexpr std::int32_t always_granted = 1000;
    constexpr std::int64_t shortest_row = 6;  // "0 0 0" and a newline
    if (natom > always_granted && natom > size_ / shortest_row) {
        throw not_there{"the file is too short to hold " + std::to_string(natom) + " atoms"};
    }
    return natom;
}

file_kind asker::kind() {
    file_kind found;
    line_buffer tag;
    line_buffer version;
    recognise(fid_, tag, version, found.class_code);
    if (tag.trimmed().empty()) {
        throw not_there{"no banner of a known program is in its first lines"};
    }
    found.tag = tag.trimmed();
    found.in_words = words_for(found.tag);
    found.version = trim(version.padded());
    return found;
}

std::int32_t asker::natom() {
    require_kind(facts_.kind && reads_natom(facts_.kind->tag));
    std::int32_t count = 0;
    std::int32_t info = 0;
    qm_file_natom(file(), count, info);
    if (info != 0) throw not_there{"no line tells it"};
    return count;
}

std::vector<std::int32_t> asker::numbers() {
    require_kind(facts_.kind && reads_nat(facts_.kind->tag));
    std::vector<std::int32_t> nat(static_cast<std::size_t>(atoms()), unknown_number);
    std::int32_t info = 0;
    qm_file_nat(file(), atoms(), nat, info);
    if (std::ranges::all_of(nat, [](std::int32_t number) { return number == unknown_number; })) {
        throw not_there{"no table holds symbols of elements"};
    }
    if (is(tag::gaussian_fchk)) facts_.point_charges = point_charges();
    return nat;
}

// Nuclear charges                            R   N=           6
//   8.00000000E+00  1.00000000E+00  1.00000000E+00 -8.34000000E-01  4.17000000E-01
std::vector<std::int32_t> asker::point_charges() {
    std::vector<std::int32_t> positions;
    line_buffer line;
    if (!search_word(fid_, 1, 15, "Nuclear charges", line)) return positions;
    std::vector<double> charges(static_cast<std::size_t>(atoms()));
    read_items(fid_, std::span(charges));
    for (std::size_t i = 0; i < charges.size(); ++i) {
        if (charges[i] >= 0 && charges[i] == std::floor(charges[i])) continue;
        positions.push_back(static_cast<std::int32_t>(i) + 1);
    }
    return positions;
}

geometry asker::geometry() {
    require_kind(facts_.kind && reads_coord(facts_.kind->tag));
    flib::geometry found;
    found.x = unknown_vectors(atoms());
    std::int32_t info = 0;
    const geometry_place place = place_of_geometry(fid_, facts_.kind->tag);
    if (place.tables == 0) throw not_there{"no table of coordinates"};
    qm_file_coord(file(), atoms(), view(found.x), info);
    if (info != 0) throw not_there{"a table of coordinates without rows"};
    found.last = place.last;
    found.tables = place.tables;
    found.frame = place.title;
    if (found.frame.empty() || found.frame == "Input orientation") return found;

    vector_list input = unknown_vectors(atoms());
    if (!read_last_orientation(fid_, "Input orientation:", view(input))) return found;
    constexpr double printed_digits = 1e-5;  // Angstrom
    for (std::size_t i = 1; i < input.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            const double from_first = input[i][k] - input[0][k];
            const double in_standard = (found.x[i][k] - found.x[0][k]) * bohr_radius;
            if (std::abs(from_first - in_standard) > printed_digits) found.two_frames = true;
        }
    }
    return found;
}

std::vector<double> asker::masses() {
    require_kind(facts_.kind && reads_mass(facts_.kind->tag));
    std::vector<double> mass(static_cast<std::size_t>(atoms()), unknown);
    std::int32_t info = 0;
    qm_file_mass(file(), atoms(), mass, info);
    if (std::ranges::all_of(mass, [](double value) { return std::isnan(value); })) {
        throw not_there{"no table holds them"};
    }
    return mass;
}

vector_list asker::forces() {
    require_kind(is(tag::gaussian_log));
    const bool of_layer = is_oniom(fid_, tag::gaussian_log) && facts_.oniom;
    vector_list found =
        unknown_vectors(of_layer ? static_cast<std::int32_t>(facts_.oniom->high.size()) : atoms());
    rewind_unit(fid_);
    if (!read_last_forces(fid_, view(found))) {
        rewind_unit(fid_);
        line_buffer line;
        if (of_layer && search_word_free(fid_, "Forces (Hartrees/Bohr)", line)) {
            throw not_there{"no table of them has a row for each atom of all layers"};
        }
        throw not_there{
            "no table of them: the job computed no gradient, or the log ends before it"};
    }
    return found;
}

vector_list asker::dipoles() {
    require_kind(is(tag::gaussian_log));
    vector_list found = read_last_dipoles(fid_);
    if (found.empty()) {
        throw not_there{
            "no table of them: the job computed no excited states, or the log ends before it"};
    }
    return found;
}

oniom_layers asker::oniom() {
    constexpr const char* no_oniom = "not an ONIOM job";
    const std::string_view its_tag = facts_.kind ? std::string_view(facts_.kind->tag) : "";
    oniom_layers layers;
    if (!is(tag::gaussian_fchk) && !is_oniom(fid_, its_tag)) throw not_there{no_oniom};
    if (is(tag::gaussian_log)) {
        layer_counts counts;
        rewind_unit(fid_);
        count_layers(fid_, counts);
        layers.natom = counts.nqmmm;
        layers.high.resize(static_cast<std::size_t>(counts.nqm));
        rewind_unit(fid_);
        read_layer_index(fid_, counts.nqmmm, layers.high);
    } else if (is(tag::gaussian_fchk)) {
        const std::vector<std::int32_t> of_atoms = read_checkpoint_layers(fid_);
        if (std::ranges::all_of(of_atoms, [](std::int32_t layer) { return layer == 1; })) {
            throw not_there{no_oniom};
        }
        for (const std::int32_t layer : of_atoms) {
            if (++layers.natom; layer == 1) layers.high.push_back(layers.natom);
        }
    } else {
        // An input file tells how many there are only by listing them: at most one per line.
        const std::int32_t most = num_file_lines(file());
        layers.high.resize(static_cast<std::size_t>(most));
        std::int32_t info = 0;
        qm_file_oniom_index(file(), most, layers.natom, layers.high, info);
        std::erase(layers.high, 0);
    }
    if (layers.natom < 1) throw not_there{"an ONIOM job without a list of atoms"};
    return layers;
}

basis_counts asker::basis() {
    if (is(tag::gaussian_log)) {
        throw not_there{
            "not read from a Gaussian log: the number of independent functions, its NBsUse=, is "
            "taken from standard input"};
    }
    require_kind(is(tag::gaussian_fchk));
    basis_counts counts;
    std::int32_t info = 0;
    qm_file_nbasis_nbsuse(file(), counts.alpha_electrons, counts.beta_electrons, counts.functions,
                          counts.independent, info);
    if (has_no_orbitals(fid_)) throw not_there{std::string(no_orbitals)};
    if (counts.functions < 1) throw not_there{"no line tells the number of basis functions"};
    return counts;
}

excitation_counts asker::excitations() {
    require_kind(is(tag::gaussian_log));
    excitation_counts counts;
    std::int32_t info = 0;
    try {
        qm_file_nci(file(), counts.active_occupied, counts.active_virtual, counts.roots,
                    counts.alpha_electrons, counts.frozen_core, counts.frozen_virtual, info);
    } catch (const stop_run& stop) {
        throw not_there{"no job step tells it (" + std::string(stop.what()) + ")"};
    }
    return counts;
}

dump_header asker::dump() {
    if (!is(tag::gaussian_rwf)) throw not_there{"not a dump of a read-write file"};
    line_buffer line;
    if (!find_dump_heading(fid_, line)) throw not_there{"no line says which record was dumped"};
    const auto [record, values] = read_dump_heading(fid_, line.padded());
    dump_header found{.number = record, .values = values};
    if (found.number != amplitude_record) return found;
    std::int32_t info = 0;
    const amplitude_dump amplitudes(file(), info);
    found.layout = amplitudes.layout();
    if (!found.layout) return found;
    const auto& [states, roots, of_spin, has_rest] = *found.layout;
    std::vector<double> energies(static_cast<std::size_t>(has_rest ? states : 0));
    if (has_rest) amplitudes.energies(energies.size()).take_part(energies);
    std::vector<double> plus(2 * static_cast<std::size_t>(of_spin));
    std::vector<double> minus(has_rest ? plus.size() : 0);
    for (std::int32_t root = 1; root <= states; ++root) {
        amplitudes.plus(root, plus.size()).take_part(plus);
        if (has_rest) amplitudes.minus(root, minus.size()).take_part(minus);
        dumped_state& state = found.states.emplace_back();
        state.norms = norms_of(plus, minus);
        if (has_rest) state.energy = energies[found.states.size() - 1];
    }
    return found;
}

state_moments asker::moments() {
    require_kind(is(tag::gaussian_fchk));
    std::optional<state_moments> found = qm_file_state_moments(file());
    if (!found) throw not_there{"no section 'ETran ...': the job computed no excited states"};
    return *std::move(found);
}

file_facts asker::all() {
    const auto of_atoms = {quantity::natom, quantity::numbers, quantity::geometry, quantity::masses,
                           quantity::forces};
    ask(quantity::kind, facts_.kind, &asker::kind);
    // What others build upon comes before them, and is asked for with them.
    if (std::ranges::any_of(of_atoms, [&](quantity which) { return is_wanted(which); })) {
        ask(quantity::natom, facts_.natom, &asker::natom);
    }
    if (is_wanted(quantity::oniom) || is_wanted(quantity::forces)) {
        ask(quantity::oniom, facts_.oniom, &asker::oniom);
    }
    const auto if_wanted = [&](quantity which, auto& fact, auto reader) {
        if (is_wanted(which)) ask(which, fact, reader);
    };
    if_wanted(quantity::numbers, facts_.numbers, &asker::numbers);
    if_wanted(quantity::geometry, facts_.geometry, &asker::geometry);
    if_wanted(quantity::masses, facts_.masses, &asker::masses);
    if_wanted(quantity::forces, facts_.forces, &asker::forces);
    if_wanted(quantity::dipoles, facts_.dipoles, &asker::dipoles);
    if_wanted(quantity::basis, facts_.basis, &asker::basis);
    if_wanted(quantity::excitations, facts_.excitations, &asker::excitations);
    if_wanted(quantity::dump, facts_.dump, &asker::dump);
    if_wanted(quantity::moments, facts_.moments, &asker::moments);
    return facts_;
}

}  // namespace

std::string_view name_of(quantity which) {
    return names[static_cast<std::size_t>(which)];
}

std::string_view file_facts::why_not(quantity which) const {
    const auto found = missing.find(which);
    return found == missing.end() ? std::string_view{} : found->second.reason;
}

file_facts facts_of(std::string_view fname, std::span<const quantity> wanted) {
    return asker(fname, wanted).all();
}

}  // namespace flib
