#include "flib/qm_file/qm_file_oniom.h"

#include <algorithm>
#include <string>
#include <vector>

#include "flib/io/detail/record_file.h"
#include "flib/io/free_format.h"
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

/// The shapes of a Gaussian log's atom lines.
enum class atom_line {
    layer_fifth,  //  O                     0.         0.         0.118      H
    layer_sixth,  //  O    0    0.         0.         0.118      H
    old_form,     //    1    0   ...  with 0 for the high layer in second place
};

struct atom_list {
    bool found = false;
    atom_line shape = atom_line::layer_sixth;
};

/// Goes to the list of atoms, so that its first line is read next.
///
///  Charge =  0 Multiplicity = 1 for low   level calculation on real  system.
///  Charge =  0 Multiplicity = 1 for high  level calculation on model system.
///  Charge =  0 Multiplicity = 1 for low   level calculation on model system.
///  O    0    0.         0.         0.118      H
atom_list go_to_atoms(std::int32_t fid) {
    line_buffer line;
    if (!search_word_free(fid, keyword::gaussian_charge, line)) return {};
    do {
        require_record(fid, line);
    } while (first_token(line.padded()) == "Charge");
    if (line.padded().find("old form") != std::string_view::npos) {
        return {true, atom_line::old_form};
    }
    // Words, not items: a comma does not separate here. Blanks before the first cost nothing.
    const std::int32_t ncols = number_of_words(trim_left(line.padded()));
    step_back(fid);
    return {true, ncols == 5 ? atom_line::layer_fifth : atom_line::layer_sixth};
}

[[noreturn]] void stop_without_layers() {
    throw stop_run{exit_status::stopped,
                   {"  Can not find H or L layer (oniom) information in log file",
                    "  Method has not been implemented", "  Stop"}};
}

enum class layer_check { none, letters_only };

/// Reads the next atom line; whether its atom belongs to the high layer.
bool read_is_high(std::int32_t fid, atom_line shape, layer_check check) {
    if (shape == atom_line::old_form) {
        std::int32_t layer = 0;
        read_items(fid, discard{1}, layer);
        return layer == 0;
    }
    line_buffer layer;
    read_items(fid, discard{shape == atom_line::layer_fifth ? 4 : 5}, layer);
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
    const auto atom_text = [&](std::int32_t i) {
        return lines[static_cast<std::size_t>(first_atom + i) - 2].padded();
    };
    // The layer stands where the first atom line has its last word, whatever the others look like.
    const std::int32_t ncols = number_of_words(trim_left(atom_text(1)));
    if (ncols < 1) return;
    for (std::int32_t i = 1; i <= nqmmm; ++i) {
        const held_text atom{trim_right(fname), first_atom + i - 1, atom_text(i)};
        if (item_of(atom, ncols) == high_layer) index.append(i);
    }
}

}  // namespace

bool names_oniom(std::int32_t fid) {
    constexpr std::int32_t lines_searched = 100;
    line_buffer line;
    return search_word_free_ignorecase_tline(fid, "oniom", line, lines_searched);
}

void count_layers(std::int32_t fid, layer_counts& counts) {
    line_buffer line;
    if (search_word(fid, 2, 8, keyword::gaussian_atom_count, line)) {
        read_items(held_record{fid, line.padded()}, discard{1}, counts.nqmmm);
    }
    rewind_unit(fid);
    const atom_list atoms = go_to_atoms(fid);
    if (!atoms.found) return;
    for (std::int32_t i = 1; i <= counts.nqmmm; ++i) {
        if (read_is_high(fid, atoms.shape, layer_check::none)) ++counts.nqm;
    }
}

void read_layer_index(std::int32_t fid, std::int32_t nqmmm, std::span<std::int32_t> idx) {
    index_writer index(input_of(fid).path(), idx);
    const atom_list atoms = go_to_atoms(fid);
    if (!atoms.found) return;
    for (std::int32_t i = 1; i <= nqmmm; ++i) {
        if (read_is_high(fid, atoms.shape, layer_check::letters_only)) index.append(i);
    }
}

void qm_file_ifoniom(std::string_view fname, bool& ifoniom, std::int32_t& info) {
    ifoniom = false;
    info = -1;
    const recognised_file file(fname);
    info = file.class_code;
    ifoniom = names_oniom(file.fid);
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
    if (!names_oniom(file.fid)) return;
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
