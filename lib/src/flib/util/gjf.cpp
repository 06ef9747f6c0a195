#include "flib/util/gjf.h"

#include <vector>

#include "flib/util/file.h"

namespace flib {
namespace {

/// A file's lines, numbered from 1.
class numbered_lines {
  public:
    explicit numbered_lines(std::string_view fname) {
        read_lines(fname, num_file_lines(fname), lines_);
    }

    std::int32_t count() const { return static_cast<std::int32_t>(lines_.size()); }
    std::string_view operator[](std::int32_t i) const {
        return lines_[static_cast<std::size_t>(i) - 1].trimmed();
    }

    /// The first blank line from line `i` on, 0 if there is none.
    std::int32_t first_blank_from(std::int32_t i) const {
        for (; i <= count(); ++i) {
            if ((*this)[i].empty()) return i;
        }
        return 0;
    }

  private:
    std::vector<line_buffer> lines_;
};

/// The line after the first blank line that follows `section`; 0 if either is missing.
std::int32_t section_after(std::string_view fgjf, std::int32_t section) {
    if (section == 0) return 0;
    const std::int32_t blank = numbered_lines(fgjf).first_blank_from(section + 1);
    return blank == 0 ? 0 : blank + 1;
}

}  // namespace

void get_gjf_route_linenumber(std::string_view fgjf, std::int32_t& lnumber) {
    const numbered_lines lines(fgjf);
    lnumber = 0;
    for (std::int32_t i = 1; i <= lines.count(); ++i) {
        if (trim_left(lines[i]).starts_with('#')) lnumber = i;
    }
}

void get_gjf_title_linenumber(std::string_view fgjf, std::int32_t& lnumber) {
    get_gjf_route_linenumber(fgjf, lnumber);
    lnumber = section_after(fgjf, lnumber);
}

void get_gjf_charge_linenumber(std::string_view fgjf, std::int32_t& lnumber) {
    get_gjf_title_linenumber(fgjf, lnumber);
    lnumber = section_after(fgjf, lnumber);
}

void get_gjf_atom_linenumber(std::string_view fgjf, std::int32_t& lnumber) {
    get_gjf_charge_linenumber(fgjf, lnumber);
    if (lnumber != 0) ++lnumber;
}

void get_gjf_natom(std::string_view fgjf, std::int32_t& natom) {
    std::int32_t atom_begin = 0;
    get_gjf_atom_linenumber(fgjf, atom_begin);
    natom = 0;
    if (atom_begin == 0) return;
    const numbered_lines lines(fgjf);
    const std::int32_t blank = lines.first_blank_from(atom_begin);
    const std::int32_t atom_end = blank == 0 ? lines.count() : blank - 1;
    natom = atom_end - atom_begin + 1;
    if (natom < 0) natom = 0;
}

}  // namespace flib
