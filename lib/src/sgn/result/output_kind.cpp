#include "sgn/result/output_kind.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace sgn {
namespace {

struct beginning {
    output_kind kind;
    std::string_view text;
};

/// How our outputs begin, and nothing else does.
constexpr beginning beginnings[] = {
    {output_kind::json, "{\n  \"written_by\": \"sgn_"},
    {output_kind::json, "[\n  {\n    \"written_by\": \"qm_file\""},
    {output_kind::page,
     "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
     "<meta name=\"generator\" content=\"sgn_"},
    {output_kind::page,
     "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
     "<meta name=\"generator\" content=\"stigruz "},
    {output_kind::checkpoint, "Derivatives of a transition dipole and of forces, by sgn_derive\n"},
    {output_kind::checkpoint, "sgn_derive: "},  // then the title of a template
    {output_kind::modes, "[Molden Format]\n[Title]\n by sgn_derive"},
    {output_kind::table, "atom,symbol,axis,"},
    {output_kind::table, "mode,wavenumber,"},
    {output_kind::vibronic, "INFO\nState by sgn_derive"},
    {output_kind::result_file, "INFORMATION\n Transden_sign"},
};

}  // namespace

std::string_view name_of(output_kind kind) {
    switch (kind) {
        case output_kind::json:
            return "JSON";
        case output_kind::page:
            return "a page";
        case output_kind::checkpoint:
            return "a checkpoint";
        case output_kind::modes:
            return "modes";
        case output_kind::table:
            return "a table";
        case output_kind::vibronic:
            return "a file for FCclasses";
        case output_kind::result_file:
            return "a result file";
    }
    return {};
}

std::optional<output_kind> kind_that_begins(std::string_view text) {
    const auto found = std::ranges::find_if(
        beginnings, [&](const beginning& each) { return text.starts_with(each.text); });
    if (found != std::end(beginnings)) return found->kind;
    // Dipoles for FCclasses are nothing but numbers, three a line.
    constexpr std::size_t line = 57;  // three fields of 19
    const bool numbers = text.size() > line && text[line] == '\n' && text.starts_with(' ') &&
                         text.find_first_not_of(" \n+-.0123456789E") == std::string_view::npos;
    if (numbers) return output_kind::vibronic;
    return {};
}

occupant occupant_of(const std::string& file) {
    struct stat there {};
    if (stat(file.c_str(), &there) != 0 || !S_ISREG(there.st_mode) || there.st_size == 0) return {};
    std::array<char, 256> head{};
    ssize_t size = 0;
    const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor >= 0) {
        size = std::max<ssize_t>(read(descriptor, head.data(), head.size()), 0);
        close(descriptor);
    }
    return {true, kind_that_begins({head.data(), static_cast<std::size_t>(size)})};
}

}  // namespace sgn
