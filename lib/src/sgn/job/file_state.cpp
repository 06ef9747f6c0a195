#include "sgn/job/file_state.h"

#include "flib/io/stop_run.h"
#include "flib/text/fixed_text.h"

namespace sgn {

file_state::file_state(std::string_view name) : name_(flib::trim_right(name)) {
    known_ = stat(name_.c_str(), &status_) == 0;
}

void file_state::require_unchanged() const {
    const file_state now(name_);
    if (now.known_ == known_ && now.status_.st_dev == status_.st_dev &&
        now.status_.st_ino == status_.st_ino && now.status_.st_size == status_.st_size &&
        now.status_.st_mtim.tv_sec == status_.st_mtim.tv_sec &&
        now.status_.st_mtim.tv_nsec == status_.st_mtim.tv_nsec) {
        return;
    }
    throw flib::io_error(name_, 0, "was changed while it was being read");
}

void file_state::require_room_for_atoms(std::int32_t natom) const {
    constexpr std::int32_t always_granted = 1000;
    constexpr std::int64_t shortest_row = 6;  // "0 0 0" and a newline
    if (!known_ || natom <= always_granted || natom <= status_.st_size / shortest_row) return;
    throw flib::io_error(name_, 0, "is too short to hold " + std::to_string(natom) + " atoms");
}

}  // namespace sgn
