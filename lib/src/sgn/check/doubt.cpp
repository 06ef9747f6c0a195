#include "sgn/check/doubt.h"

namespace sgn {

std::string text_of(doubt kind, std::initializer_list<std::string_view> known) {
    std::string text(row_of(kind).words);
    std::size_t at = 0;
    for (const std::string_view each : known) {
        at = text.find("{}", at);
        text.replace(at, 2, each);
        at += each.size();
    }
    return text;
}

}  // namespace sgn
