#include "common/progress.h"

#include <unistd.h>

#include <string>

#include "flib/io/write_out.h"

namespace tools {
namespace {

constexpr std::string_view clear_line = "\r\033[K";

}  // namespace

progress::progress(int descriptor, std::size_t steps)
    : descriptor_(descriptor),
      steps_(steps),
      terminal_(isatty(descriptor) == 1),
      next_(clock::now() + std::chrono::seconds(1)) {}

progress::~progress() {
    if (written_) (void)flib::write_out(descriptor_, clear_line);
}

void progress::at(std::size_t step, std::string_view what) {
    if (!terminal_ || clock::now() < next_) return;
    next_ = clock::now() + std::chrono::milliseconds(100);
    written_ = flib::write_out(descriptor_, std::string(clear_line)
                                                .append(what)
                                                .append(" ")
                                                .append(std::to_string(step))
                                                .append(" of ")
                                                .append(std::to_string(steps_)));
}

}  // namespace tools
