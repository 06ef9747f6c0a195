// The names of a job's files.
#pragma once

#include <string>
#include <string_view>

#include "flib/text/fixed_text.h"
#include "flib/util/file.h"

namespace sgn {

namespace suffix {
inline constexpr std::string_view checkpoint = ".fchk";
inline constexpr std::string_view amplitudes = ".cis";
inline constexpr std::string_view log = ".log";
inline constexpr std::string_view result = ".sgn";
}  // namespace suffix

/// The file of the job whose checkpoint is `ffch` with another suffix: always in the working
/// directory, wherever the checkpoint is. Blanks before the last extension do not stay.
inline flib::line_buffer job_file(std::string_view ffch, std::string_view suffix) {
    const std::string name = flib::name_main(ffch);
    return flib::line_buffer(std::string(flib::trim_right(name)).append(suffix));
}

}  // namespace sgn
