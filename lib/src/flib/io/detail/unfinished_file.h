// Files that a signal must not leave behind.
#pragma once

#include <string>

#pragma GCC visibility push(hidden)
namespace flib {

/// A file that stands beside its final name while it is being written: a place in a table of fixed
/// size, since a handler of signals may neither allocate nor wait.
class unfinished_file {
  public:
    unfinished_file() = default;
    ~unfinished_file() { forget(); }
    unfinished_file(const unfinished_file&) = delete;
    unfinished_file& operator=(const unfinished_file&) = delete;

    /// From now on a signal that ends the program removes the file `path`. Where the table is full,
    /// or the path too long for it, it would stay.
    void remember(const std::string& path) noexcept;
    void forget() noexcept;

  private:
    int place_ = -1;
};

}  // namespace flib
#pragma GCC visibility pop
