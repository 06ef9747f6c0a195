#include "support.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <random>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

namespace fuzz {
namespace {

constexpr std::string_view troublesome[] = {"0",
                                            "-1",
                                            "1",
                                            "2",
                                            "3",
                                            "4",
                                            "119",
                                            "-0.0",
                                            "1e-400",
                                            "1E308",
                                            "9.99D+307",
                                            "1.0-100",
                                            "2147483647",
                                            "2147483648",
                                            "-2147483648",
                                            "4294967297",
                                            "65536",
                                            "46341",
                                            "1000000",
                                            "9223372036854775808",
                                            "****************",
                                            "NaN",
                                            "-inf",
                                            "",
                                            ",",
                                            ",,",
                                            "\t",
                                            "\r",
                                            "H",
                                            "L",
                                            "X",
                                            "Og",
                                            "I",
                                            "N=",
                                            "1.2.3",
                                            "0.1D",
                                            "5e-324",
                                            "0.49406565-323",
                                            "0.98813129-323",
                                            "0.19762626-322",
                                            "0.10609979-313",
                                            "99999999999999999999.9"};

void write_whole(int descriptor, std::string_view contents, std::size_t at) {
    while (!contents.empty()) {
        const ssize_t written =
            pwrite(descriptor, contents.data(), contents.size(), static_cast<off_t>(at));
        if (written <= 0) finding("no room in memory");
        contents.remove_prefix(static_cast<std::size_t>(written));
        at += static_cast<std::size_t>(written);
    }
}

struct range {
    std::size_t from;
    std::size_t to;
};

/// The word, or the line with its newline, that holds the character at `at`.
range around(std::string_view text, std::size_t at, std::string_view separators, bool with_end) {
    const std::size_t before = text.find_last_of(separators, at == 0 ? 0 : at - 1);
    const std::size_t end = text.find_first_of(separators, at);
    const std::size_t from = at == 0 || before == std::string_view::npos ? 0 : before + 1;
    const std::size_t to = end == std::string_view::npos ? text.size() : end + (with_end ? 1 : 0);
    return {from, to};
}

}  // namespace

memory_file::memory_file(std::string_view prefix)
    : prefix_(prefix.size()), descriptor_(memfd_create("fuzz", MFD_CLOEXEC)) {
    require(descriptor_ >= 0, "no file in memory");
    path_ = "/proc/self/fd/" + std::to_string(descriptor_);
    write_whole(descriptor_, prefix, 0);
}

void memory_file::fill(std::string_view contents) {
    require(ftruncate(descriptor_, static_cast<off_t>(prefix_)) == 0, "no file in memory");
    write_whole(descriptor_, contents, prefix_);
}

std::size_t mutate_text(std::uint8_t* data, std::size_t size, std::size_t most, unsigned int seed) {
    std::minstd_rand random(seed);
    std::string text(reinterpret_cast<const char*>(data), size);
    if (text.empty() || random() % 2 == 0) return LLVMFuzzerMutate(data, size, most);
    const auto line_at = [&](std::size_t at) { return around(text, at, "\n", true); };
    const std::size_t at = random() % text.size();
    const range word = around(text, at, " \n", false);
    const range line = line_at(at);
    const std::string this_line = text.substr(line.from, line.to - line.from);
    switch (random() % 8) {
        case 0:
            text.erase(line.from, this_line.size());
            break;
        case 1:
            text.insert(line.from, this_line);
            break;
        case 2:
            text.insert(line_at(random() % text.size()).from, this_line);
            break;
        case 3:
            text.erase(at, text.find('\n', at) - at);
            break;
        case 4: {
            // A word from elsewhere.
            const range other = around(text, random() % text.size(), " \n", false);
            const std::string copy = text.substr(other.from, other.to - other.from);
            text.replace(word.from, word.to - word.from, copy);
            break;
        }
        default:
            text.replace(word.from, word.to - word.from,
                         troublesome[random() % std::size(troublesome)]);
    }
    const std::size_t length = std::min(text.size(), most);
    std::copy_n(text.data(), length, reinterpret_cast<char*>(data));
    return length;
}

}  // namespace fuzz
