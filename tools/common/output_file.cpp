#include "common/output_file.h"

#include "common/program.h"
#include "flib/io/atomic_file.h"

namespace tools {

void write_result(const std::string& name, std::string_view contents) {
    if (name == "-") {
        show(contents);
    } else {
        flib::remove_left_over(name);
        flib::replace_file(name, contents);
    }
}

}  // namespace tools
