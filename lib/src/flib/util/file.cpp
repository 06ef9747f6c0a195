#include "flib/util/file.h"

#include "flib/io/detail/text_file.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"

namespace flib {

std::int32_t num_file_lines(std::string_view fname) {
    std::optional<input_unit> fid;
    try {
        fid.emplace(fname);
    } catch (const io_error&) {
        throw stop_run{exit_status::stopped,
                       {" Error in opening file '" + std::string(trim_right(fname)) +
                        "' in function num_file_lines, stop!"}};
    }
    std::int32_t count = 0;
    while (skip_record(*fid)) ++count;
    return count;
}

void read_lines(std::string_view file1, std::int32_t nline, std::vector<line_buffer>& lines) {
    const input_unit fid(file1);
    lines.clear();
    for (std::int32_t i = 0; i < nline; ++i) require_record(fid, lines.emplace_back());
}

std::optional<std::string> file_contents(std::string_view fname, std::int64_t most) {
    text_file source{std::string(trim_right(fname))};
    if (source.size() > most) return {};
    std::string text;
    while (static_cast<std::int64_t>(text.size()) < source.size()) {
        text += source.from(static_cast<std::int64_t>(text.size()), 1);
    }
    return text;
}

std::string name_base(std::string_view name) {
    const std::string_view path = trim(name);
    return std::string(path.substr(path.rfind('/') + 1));
}

std::string name_main(std::string_view fname) {
    const std::string base = name_base(fname);
    return base.substr(0, base.rfind('.'));
}

}  // namespace flib
