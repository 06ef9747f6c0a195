#include "common/csv.h"

#include <cmath>

#include "flib/io/fixed_field.h"

namespace tools {
namespace {

std::string quoted_field(std::string_view text) {
    std::string field = "\"";
    for (const char c : text) field.append(c == '"' ? 2 : 1, c);
    return field + '"';
}

}  // namespace

std::string csv_real(double value) {
    return std::isfinite(value) ? flib::shortest_real(value) : "";
}

std::string csv_line(const std::vector<std::string>& fields) {
    std::string line;
    for (const std::string& field : fields) {
        if (&field != fields.data()) line += ',';
        const bool plain = field.find_first_of(",\"\r\n") == std::string::npos;
        line += plain ? field : quoted_field(field);
    }
    return line + "\r\n";
}

}  // namespace tools
