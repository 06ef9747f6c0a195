#include "common/outputs.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <system_error>
#include <tuple>

#include "flib/io/stop_run.h"

namespace tools {
namespace {

namespace fs = std::filesystem;

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
    {output_kind::checkpoint, "Derivatives of a transition dipole and of forces, by sgn_derive\n"},
    {output_kind::checkpoint, "sgn_derive: "},  // then the title of a template
    {output_kind::modes, "[Molden Format]\n[Title]\n by sgn_derive"},
    {output_kind::table, "atom,symbol,axis,"},
    {output_kind::table, "mode,wavenumber,"},
    {output_kind::vibronic, "INFO\nState by sgn_derive"},
    {output_kind::result_file, "INFORMATION\n Transden_sign"},
};

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

/// Device and inode of a file; of one that does not exist, the path where it would be made.
using identity = std::tuple<dev_t, ino_t, std::string>;

identity identity_of(const std::string& file) {
    struct stat there {};
    if (stat(file.c_str(), &there) == 0) return {there.st_dev, there.st_ino, {}};
    fs::path path(file);
    std::error_code error;
    // A link to nothing leads to the place of the new file.
    constexpr int most_links = 40;
    for (int followed = 0; followed < most_links; ++followed) {
        const fs::path target = fs::read_symlink(path, error);
        if (error) break;
        path = path.parent_path() / target;
    }
    const fs::path whole = fs::weakly_canonical(fs::absolute(path, error), error);
    return {0, 0, (error ? path : whole).lexically_normal().string()};
}

/// What stands at the place of an output.
struct occupant {
    bool is_file = false;  // and not empty
    std::optional<output_kind> kind{};
};

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

std::string in_words(const planned_output& output) {
    return output.option + " (" + flib::printable(output.file) + ")";
}

/// What was meant may be an option without a value.
std::string syntax_of(const planned_output& output) {
    return output.option + " takes the name of the file to be written, or '-' for standard output";
}

void judge_place(const planned_output& output, bool overwrite) {
    const occupant old = occupant_of(output.file);
    if (old.is_file && old.kind == output.kind) return;
    const bool of_result =
        old.kind == output_kind::result_file ||
        (output.file.ends_with(".sgn") && output.kind != output_kind::result_file);
    const std::string begin = output.option + " would write over ";
    if (of_result) {
        throw flib::run_error(begin + "the result file " + flib::printable(output.file) + "; " +
                              syntax_of(output));
    }
    if (!old.is_file || overwrite) return;
    std::string message = begin + flib::printable(output.file) + ", which is not " +
                          std::string(name_of(output.kind)) + " of these tools; ";
    if (output.kind != output_kind::result_file) message += syntax_of(output) + "; ";
    throw flib::run_error(message + "--force overwrites it");
}

}  // namespace

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

void require_harmless(std::span<const planned_output> outputs, std::span<const std::string> inputs,
                      bool overwrite) {
    std::map<identity, const std::string*> read;
    if (!outputs.empty()) {
        for (const std::string& input : inputs) read.try_emplace(identity_of(input), &input);
    }
    const planned_output* streamed = nullptr;
    std::map<identity, const planned_output*> written;
    for (const planned_output& output : outputs) {
        if (output.file == "-") {
            if (streamed != nullptr) {
                throw flib::run_error(streamed->option + " and " + output.option +
                                      " both write to standard output");
            }
            streamed = &output;
            continue;
        }
        const identity its = identity_of(output.file);
        if (const auto found = read.find(its); found != read.end()) {
            std::string message = in_words(output) + " would write over " +
                                  flib::printable(*found->second) + ", which this call reads";
            if (output.kind != output_kind::result_file) message += "; " + syntax_of(output);
            throw flib::run_error(message);
        }
        const auto [other, is_new] = written.try_emplace(its, &output);
        if (!is_new) {
            throw flib::run_error(in_words(*other->second) + " and " + in_words(output) +
                                  " are the same file");
        }
        judge_place(output, overwrite);
    }
}

}  // namespace tools
