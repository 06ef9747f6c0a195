#include "common/version.h"

namespace tools {

std::string_view version() {
    return TOOLS_VERSION;
}

}  // namespace tools
