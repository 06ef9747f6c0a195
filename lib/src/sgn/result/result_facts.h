// What a file holds, that of a result file of stigruz included.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "flib/facts/file_facts.h"
#include "sgn/result/sgn_file.h"

namespace sgn {

/// What stands for the type tag of a result file.
inline constexpr std::string_view result_tag = "STIGRUZ RESULT";

struct facts_and_result {
    flib::file_facts facts{};
    std::optional<sgn_contents> result{};  ///< of a result file
};

/// flib::facts_of(), and ends as that does. Of a result file what is in it becomes the facts, the
/// corrected dipole that of the first state; of a damaged one the missing kind tells why.
facts_and_result facts_with_result(const std::string& file,
                                   std::span<const flib::quantity> wanted = flib::all_quantities);

/// Whose version it is that the rule of this kind of file takes: "the program", "libXC" (with which
/// ORCA was built), or "" if it is none.
std::string_view owner_of_version(const flib::file_kind& kind);

}  // namespace sgn
