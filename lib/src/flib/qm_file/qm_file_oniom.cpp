#include "flib/qm_file/qm_file_oniom.h"

#include <algorithm>
#include <string>
#include <vector>

#include "flib/io/detail/record_file.h"
#include "flib/io/free_format.h"
#include "flib/io/number.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/qm_file/detail/keyword.h"
#include "flib/qm_file/detail/oniom_steps.h"
#include "flib/qm_file/detail/reader_steps.h"
#include "flib/qm_file/type_tag.h"
#include "flib/search/search_word.h"
#include "flib/text/line_test.h"
#include "flib/text/string.h"
#include "flib/util/file.h"
#include "flib/util/gjf.h"

namespace flib {
namespace {

constexpr std::string_view high_layer = "H";

/// Whether a line of charges is that of a layer of an ONIOM job.
///
///  Charge =  0 Multiplicity = 1 for high  level calculation on model system.
bool names_model_system(std::string_view line) {
    return line.find("level calculation on model system") != std::string_view::npos;
}

/// Blanks out what stands in parentheses behind the symbol of an atom: it may hold commas, but is
/// no item. False if the parentheses do not close.
///
///  C-CT-0.1(PDBName=CA,ResName=ALA,ResNum=64) 0     11.642    68.057   -12.147   L
[[nodiscard]] bool blank_parentheses(text_span row) {
    const std::string_view text(row.data(), row.size());
    const std::string_view symbol = first_token(text);
    const std::size_t open = symbol.find('(');
    if (open == std::string_view::npos) return true;
    const std::size_t begin = static_cast<std::size_t>(symbol.data() - text.data()) + open;
    int depth = 0;
    for (std::size_t at = begin; at < text.size(); ++at) {
        if (text[at] == '(') ++depth;
        if (text[at] == ')' && --depth == 0) {
            std::fill(row.data() + begin, row.data() + at + 1, ' ');
            return true;
        }
    }
    return false;
}

constexpr std::string_view no_closing_parenthesis =
    "the parenthesis behind the symbol of an atom does not close";

std::vector<std::string_view> items_of(std::string_view row) {
    std::vector<std::string_view> items;
    for (;;) {
        const std::string_view item = first_token(row);
        if (item.empty()) return items;
        items.push_back(item);
        row.remove_prefix(static_cast<std::size_t>(item.data() + item.size() - row.data()));
        row.remove_prefix(std::min(row.find_first_not_of(" \t"), row.size()));
        if (row.starts_with(',')) row.remove_prefix(1);
    }
}

bool is_real(std::string_view item) {
    double value = 0;
    return parse_real(item, value) == number_error::none;
}

/// What the shape of an atom's row tells of its layer.
///
///     SYMBOL [FROZEN] X Y Z [LAYER [LINK-ATOM [BOUND-TO [FACTORS]]]]
struct row_shape {
    bool is_known = false;
    std::int32_t layer_item = 0;  ///< 0 if the row ends with the coordinates
};

row_shape shape_of(std::string_view row) {
    const std::vector<std::string_view> items = items_of(row);
    std::size_t numbers = 0;
    while (1 + numbers < items.size() && is_real(items[1 + numbers])) ++numbers;
    if (numbers != 3 && numbers != 4) return {};
    const std::size_t layer = 1 + numbers;
    return {true, layer < items.size() ? static_cast<std::int32_t>(layer) + 1 : 0};
}

/// The list of atoms of a Gaussian log.
struct atom_list {
    bool found = false;
    /// The second item is 0 for the high layer. In other lists it tells frozen atoms from others.
    bool old_form = false;
    std::int32_t layer_item = 6;  ///< 0 if the rows do not tell the layers

    bool tells_layers() const { return old_form || layer_item > 0; }
};

/// Goes to the list of atoms, so that its first line is read next.
///
///  Charge =  0 Multiplicity = 1 for low   level calculation on real  system.
///  Charge =  0 Multiplicity = 1 for high  level calculation on model system.
///  Charge =  0 Multiplicity = 1 for low   level calculation on model system.
///  O    0    0.         0.         0.118      H
///
/// or, where the atoms come from a checkpoint (geom=check, geom=allcheck):
///
///  Redundant internal coordinates found in file.
///  O,0,0.,0.,0.118
atom_list go_to_atoms(std::int32_t fid) {
    line_buffer line;
    if (!search_word_free(fid, keyword::gaussian_charge, line)) return {};
    do {
        require_record(fid, line);
    } while (first_token(line.padded()) == "Charge");
    const std::string_view text = line.padded();
    if (text.find("old form") != std::string_view::npos) return {true, true};
    if (text.find("coordinates found in file") != std::string_view::npos) return {true, false, 0};
    step_back(fid);
    // Words, not items: a comma does not separate here. Blanks before the first cost nothing.
    const std::int32_t ncols = number_of_words(trim_left(text));
    if (!blank_parentheses(line)) throw error_at_last_record(fid, no_closing_parenthesis);
    // A row without the item for frozen atoms may still have as many words as one with it.
    const row_shape shape = shape_of(text);
    return {true, false, shape.is_known ? shape.layer_item : ncols == 5 ? 5 : 6};
}

[[noreturn]] void stop_without_layers(const std::string& hint = {}) {
    throw stop_run{exit_status::stopped,
                   {"  Can not find H or L layer (oniom) information in log file",
                    "  Method has not been implemented", "  Stop"},
                   hint};
}

enum class layer_check { none, letters_only };

/// Reads the next atom line; whether its atom belongs to the high layer.
bool read_is_high(std::int32_t fid, const atom_list& atoms, layer_check check) {
    line_buffer row;
    do {
        require_record(fid, row);
    } while (first_token(row.padded()).empty());
    if (!blank_parentheses(row)) throw error_at_last_record(fid, no_closing_parenthesis);
    if (atoms.old_form) {
        std::int32_t layer = 0;
        read_items(held_record{fid, row.padded()}, discard{1}, layer);
        return layer == 0;
    }
    const std::vector<std::string_view> items = items_of(row.padded());
    const auto at = static_cast<std::size_t>(atoms.layer_item) - 1;
    line_buffer layer{at < items.size() ? items[at] : ""};
    if (check == layer_check::letters_only && !is_letter(layer)) stop_without_layers();
    return layer == high_layer;
}

/// Appends to an index of fixed length.
class index_writer {
  public:
    index_writer(std::string_view fname, std::span<std::int32_t> idx) : fname_(fname), idx_(idx) {}

    void append(std::int32_t position) {
        if (count_ == idx_.size()) {
            throw io_error(trim_right(fname_), 0,
                           "atom " + std::to_string(position) +
                               " is a high-layer atom, but room was made for " +
                               std::to_string(idx_.size()) + " only");
        }
        idx_[count_++] = position;
    }

  private:
    std::string_view fname_;
    std::span<std::int32_t> idx_;
    std::size_t count_ = 0;
};

// %chk=job.chk
// #p oniom(cis/6-31g:amber) force
//
// title
//
// 0 1 0 1 0 1
//  O     0   0.000000    0.000000    0.118000  H
void index_of_input_file(std::string_view fname, std::int32_t& nqmmm, index_writer& index) {
    std::int32_t first_atom = 0;
    get_gjf_atom_linenumber(fname, first_atom);
    get_gjf_natom(fname, nqmmm);
    if (nqmmm < 1) return;
    // No more lines than these counts ask for: the file may have changed since the last look at it.
    std::vector<line_buffer> lines;
    read_lines(fname, first_atom + nqmmm - 1, lines);
    lines.erase(lines.begin(), lines.begin() + first_atom - 1);
    for (std::int32_t i = 0; i < nqmmm; ++i) {
        if (blank_parentheses(lines[static_cast<std::size_t>(i)])) continue;
        throw io_error(trim_right(fname), first_atom + i, no_closing_parenthesis);
    }
    // The layer stands in the same place in all lines: behind the coordinates of the first or, if
    // they are none, where it has its last word.
    const std::string_view first = lines.front().padded();
    const std::int32_t behind_coordinates = shape_of(first).layer_item;
    const std::int32_t ncols =
        behind_coordinates > 0 ? behind_coordinates : number_of_words(trim_left(first));
    if (ncols < 1) return;
    for (std::int32_t i = 1; i <= nqmmm; ++i) {
        const std::string_view text = lines[static_cast<std::size_t>(i) - 1].padded();
        const held_text atom{trim_right(fname), first_atom + i - 1, text};
        if (item_of(atom, ncols) == high_layer) index.append(i);
    }
}

/// Whether ONIOM, in letters of either case, stands in the first 101 lines of an open file.
bool names_oniom(std::int32_t fid) {
    constexpr std::int32_t lines_searched = 100;
    line_buffer line;
    return search_word_free_ignorecase_tline(fid, "oniom", line, lines_searched);
}

/// Whether the route of an open input file, from its last line that begins with "#" to the next
/// blank one, names ONIOM.
bool route_names_oniom(std::int32_t fid) {
    rewind_unit(fid);
    bool in_route = false;
    bool named = false;
    line_buffer line;
    while (read_record(fid, line)) {
        const std::string_view text = trim(line.padded());
        if (text.empty()) in_route = false;
        if (text.starts_with('#')) {
            named = named && in_route;
            in_route = true;
        }
        named = named || (in_route && strlowcase(text).find("oniom") != std::string::npos);
    }
    return named;
}

/// Whether the charges in front of the atoms of an open Gaussian log are those of layers.
bool has_charges_of_layers(std::int32_t fid) {
    line_buffer line;
    rewind_unit(fid);
    // A title may speak of a charge, too.
    do {
        if (!search_word(fid, 2, 9, keyword::gaussian_charge, line)) return false;
    } while (line.padded().find("Multiplicity =") == std::string_view::npos);
    do {
        if (names_model_system(line.padded())) return true;
    } while (read_record(fid, line) && first_token(line.padded()) == "Charge");
    return false;
}

}  // namespace

bool is_oniom(std::int32_t fid, std::string_view tag) {
    if (names_oniom(fid)) return true;
    // The log of a protein begins with the echo of a parameter file.
    if (equal_padded(tag, tag::gaussian_log)) return has_charges_of_layers(fid);
    return trim(tag).empty() && route_names_oniom(fid);
}

void count_atoms(std::int32_t fid, layer_counts& counts) {
    line_buffer line;
    if (!search_word(fid, 2, 8, keyword::gaussian_atom_count, line)) return;
    read_items(held_record{fid, line.padded()}, discard{1}, counts.nqmmm);
}

void count_layers(std::int32_t fid, layer_counts& counts) {
    count_atoms(fid, counts);
    rewind_unit(fid);
    const atom_list atoms = go_to_atoms(fid);
    if (!atoms.found || !atoms.tells_layers()) return;
    for (std::int32_t i = 1; i <= counts.nqmmm; ++i) {
        if (read_is_high(fid, atoms, layer_check::none)) ++counts.nqm;
    }
}

void read_layer_index(std::int32_t fid, std::int32_t nqmmm, std::span<std::int32_t> idx) {
    index_writer index(input_of(fid).path(), idx);
    const atom_list atoms = go_to_atoms(fid);
    if (!atoms.found) return;
    if (!atoms.tells_layers() && nqmmm > 0) {
        stop_without_layers(
            "the log lists the atoms without their layers, as it does of atoms that come from a "
            "checkpoint (geom=check, geom=allcheck): give the job its atoms in the input; 'qm_file "
            "oniom' shows the layers that a formatted checkpoint has");
    }
    for (std::int32_t i = 1; i <= nqmmm; ++i) {
        if (read_is_high(fid, atoms, layer_check::letters_only)) index.append(i);
    }
}

std::vector<std::int32_t> read_checkpoint_layers(std::int32_t fid) {
    line_buffer line;
    if (!search_word(fid, 1, 11, "Atom Layers", line)) return {};
    std::int32_t natom = 0;
    read_items(held_record{fid, line.padded()}, discard{4}, natom);
    if (natom < 0 || natom > input_of(fid).bytes_left()) {
        throw error_at_last_record(
            fid, "the file cannot hold the layers of " + std::to_string(natom) + " atoms");
    }
    std::vector<std::int32_t> layers(static_cast<std::size_t>(natom));
    read_items(fid, std::span(layers));
    return layers;
}

void qm_file_ifoniom(std::string_view fname, bool& ifoniom, std::int32_t& info) {
    ifoniom = false;
    info = -1;
    const recognised_file file(fname);
    info = file.class_code;
    ifoniom = is_oniom(file.fid, file.tag.padded());
}

void qm_file_natom_oniom_qm(std::string_view fname, std::int32_t& nqm, std::int32_t& nqmmm,
                            std::int32_t& info) {
    nqm = 0;
    info = -1;
    const recognised_file file(fname);
    if (!file.is(tag::gaussian_log)) return;
    layer_counts counts{0, nqmmm};
    count_layers(file.fid, counts);
    nqm = counts.nqm;
    nqmmm = counts.nqmmm;
}

void qm_file_oniom_index(std::string_view fname, std::int32_t nqm, std::int32_t& nqmmm,
                         std::span<std::int32_t> idx, std::int32_t& info) {
    info = -1;
    const auto count = static_cast<std::size_t>(std::max(nqm, 0));
    require_room(fname, count, "positions of high-layer atoms", idx.size());
    const recognised_file file(fname);
    if (file.is(tag::gaussian_log)) {
        read_layer_index(file.fid, nqmmm, idx.first(count));
        return;
    }
    info = file.class_code;
    if (!is_oniom(file.fid, file.tag.padded())) return;
    index_writer index(fname, idx.first(count));
    index_of_input_file(fname, nqmmm, index);
}

void require_in_system(std::string_view fname, std::int32_t atom, std::int32_t nqmmm) {
    if (atom >= 1 && atom <= nqmmm) return;
    throw io_error(trim_right(fname), 0,
                   "the index of the high layer names atom " + std::to_string(atom) + " of " +
                       std::to_string(nqmmm));
}

}  // namespace flib
