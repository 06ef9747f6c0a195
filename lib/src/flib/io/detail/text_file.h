// The bytes of a file, seen through a window of bounded size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#pragma GCC visibility push(hidden)
namespace flib {

/// A regular file opened for reading. Its size is taken when it is opened: what is appended later
/// is not seen, and a file cut short later ends the run with an io_error, not with a signal.
class text_file {
  public:
    /// Most bytes that from() and before() can be asked for at once.
    static constexpr std::size_t window_size = std::size_t{256} * 1024;

    /// Opens `path`. Throws io_error when the file cannot be opened or is not a regular one, and
    /// another run_error when the system could not open it now (too many open files, no memory): a
    /// caller that takes a missing file for an answer must not take that for one.
    explicit text_file(std::string path);
    ~text_file();
    text_file(const text_file&) = delete;
    text_file& operator=(const text_file&) = delete;

    const std::string& path() const { return path_; }
    std::int64_t size() const { return size_; }

    /// The bytes from `offset` on: at least `least` of them, or all there are up to the end of the
    /// file. The view holds until the next call.
    std::string_view from(std::int64_t offset, std::size_t least);

    /// The bytes before `offset`: at least `least` of them, or all there are from the start of the
    /// file. The view holds until the next call.
    std::string_view before(std::int64_t offset, std::size_t least);

    /// The 1-based number of the line that holds the byte at `offset`. Counts the newlines before
    /// it, so it is for diagnostics only; 0 if the file can no longer be read.
    std::int64_t line_number(std::int64_t offset);

  private:
    void load(std::int64_t begin, std::size_t length);

    std::string path_;
    int descriptor_;
    std::int64_t size_ = 0;
    std::size_t capacity_ = 0;
    std::unique_ptr<char[]> memory_;
    char* window_ = nullptr;  // in memory_, at the start of a cache line
    std::int64_t window_begin_ = 0;
    std::size_t window_length_ = 0;
};

/// `descriptor`, or a duplicate above the three standard streams should it be one of them (they
/// may have been closed by the caller of the program); the original is closed then.
int above_standard_streams(int descriptor);

}  // namespace flib
#pragma GCC visibility pop
