// How far a long computation has come.
#pragma once

#include <chrono>
#include <cstddef>
#include <string_view>

namespace tools {

/// A line on a terminal that tells how far things are, once they take longer than a second, and
/// goes when this goes. Nothing is written to a file or pipe.
class progress {
  public:
    progress(int descriptor, std::size_t steps);
    ~progress();
    progress(const progress&) = delete;
    progress& operator=(const progress&) = delete;

    /// Step number `step`, from 1, begins: "reading 12 of 601".
    void at(std::size_t step, std::string_view what);

  private:
    using clock = std::chrono::steady_clock;

    int descriptor_;
    std::size_t steps_;
    bool terminal_;
    bool written_ = false;
    clock::time_point next_;
};

}  // namespace tools
