#include "common/outputs.h"

#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <system_error>
#include <tuple>

#include "flib/io/stop_run.h"

namespace tools {
namespace {

namespace fs = std::filesystem;
using sgn::occupant;
using sgn::output_kind;

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
