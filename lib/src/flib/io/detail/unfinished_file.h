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

    /// The file `path` is about to be made. From now on a signal that ends the program removes it.
    /// Where the table is full, or the path too long for it, it would stay.
    void announce(const std::string& path) noexcept;
    /// Now it is made, or not.
    void is_there() const noexcept;
    /// It is removed, or no longer unfinished. Like the others, does not return if a signal, in
    /// another thread, is ending the program.
    void forget() noexcept;

  private:
    int place_ = -1;
};

}  // namespace flib
#pragma GCC visibility pop
