#include "flib/util/matrix.h"

#include <string>

namespace flib {

std::size_t element_count(std::initializer_list<std::int32_t> extents, const char* what) {
    std::size_t count = 1;
    for (const std::int32_t extent : extents) {
        if (extent < 1) return 0;
    }
    for (const std::int32_t extent : extents) {
        if (__builtin_mul_overflow(count, static_cast<std::size_t>(extent), &count)) {
            fail_allocation(what);
        }
    }
    return count;
}

void fail_allocation(const char* what) {
    throw run_error(std::string("not enough memory for ") + what);
}

}  // namespace flib
