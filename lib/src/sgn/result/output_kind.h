// What the tools and the module write, which a file tells by how it begins.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sgn {

/// What is written to files.
enum class output_kind { json, page, checkpoint, modes, table, vibronic, result_file };

/// In words: "JSON", "a page", ...
std::string_view name_of(output_kind kind);

/// Which of our outputs begins like `text`; nullopt if none does.
std::optional<output_kind> kind_that_begins(std::string_view text);

/// What stands at the place of an output.
struct occupant {
    bool is_file = false;  ///< and not empty
    std::optional<output_kind> kind{};
};

/// Of a file that cannot be read no kind is told.
occupant occupant_of(const std::string& file);

}  // namespace sgn
