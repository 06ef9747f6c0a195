// What the fuzzers share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>

#include "flib/io/stop_run.h"

namespace fuzz {

/// Ends the fuzzer with a finding.
[[noreturn]] inline void finding(std::string_view what) {
    std::fprintf(stderr, "FINDING: %.*s\n", static_cast<int>(what.size()), what.data());
    std::abort();
}

inline void require(bool holds, std::string_view what) {
    if (!holds) finding(what);
}

/// A file without a name in memory, which the library opens by its path.
class memory_file {
  public:
    /// The file begins with `prefix`, whatever its contents.
    explicit memory_file(std::string_view prefix = {});

    const std::string& path() const { return path_; }
    int descriptor() const { return descriptor_; }
    void fill(std::string_view contents);

  private:
    std::size_t prefix_ = 0;
    int descriptor_;
    std::string path_;
};

enum class ending { returned, stopped, failed, no_memory };

/// Calls a routine that may end the run in one of the ways in which runs end; another exception
/// is a finding.
template <class Routine>
ending ending_of(Routine&& routine) {
    try {
        routine();
    } catch (const flib::stop_run& stop) {
        require(stop.status() >= 0 && stop.status() <= 2 && !stop.lines().empty(),
                "an empty ending");
        return ending::stopped;
    } catch (const flib::run_error& error) {
        const std::string_view line = error.what();
        require(!line.empty() && line.find('\n') == std::string_view::npos,
                "a diagnostic that is not one line");
        return ending::failed;
    } catch (const std::bad_alloc&) {
        return ending::no_memory;
    }
    return ending::returned;
}

/// Changes a text by its fields: puts a troublesome number in the place of a word, or deletes,
/// doubles, swaps or cuts lines. Half of the time the change is libFuzzer's own, by bytes.
std::size_t mutate_text(std::uint8_t* data, std::size_t size, std::size_t most, unsigned int seed);

}  // namespace fuzz
