#include "common/reference.h"

#include <string>

#include "common/program.h"
#include "flib/io/stop_run.h"
#include "sgn/set/centre.h"

namespace tools {

void tell_better_reference(std::string_view tool, const sgn::result_file& reference,
                           std::span<const sgn::result_file> files) {
    const auto better = sgn::better_reference(reference, files);
    if (!better) return;
    complain(tool, flib::printable(reference.name) + " does not look like the reference: " +
                       flib::printable(files[*better].name) +
                       " does, the other files lie in pairs around it. The reference comes first.");
}

}  // namespace tools
