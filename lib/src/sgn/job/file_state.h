// Input files that must not change while they are read.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace sgn {

/// An input file as it was at some moment. Each reader opens the file anew, and whoever writes it
/// may not have finished.
class file_state {
  public:
    explicit file_state(std::string_view name);

    /// Throws flib::io_error if the file is no longer what it was.
    void require_unchanged() const;

    /// Throws flib::io_error if so many atoms cannot be in it. A file that no reader knows would
    /// not be asked otherwise, and memory and result would grow with a count that may be absurd.
    void require_room_for_atoms(std::int32_t natom) const;

  private:
    std::string name_;
    struct stat status_ {};
    bool known_ = false;
};

}  // namespace sgn
