#include "sgn/page/detail/svg.h"

#include <cmath>

#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"

namespace sgn::page::svg {
namespace {

std::string attribute(std::string_view name, std::string_view value) {
    return std::string(" ").append(name).append("=\"").append(value).append("\"");
}

std::string attribute(std::string_view name, double value) {
    return attribute(name, number(value));
}

}  // namespace

std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : flib::printable(text)) {
        switch (c) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            case '\'':
                result += "&#39;";
                break;
            default:
                result += c;
        }
    }
    return result;
}

std::string number(double value) {
    std::string text = flib::decimal(value, 2);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) text.pop_back();
    return text;
}

std::vector<double> ticks(double low, double high, int about) {
    const double raw = (high - low) / about;
    const double power = std::pow(10, std::floor(std::log10(raw)));
    double step = 10 * power;
    for (const double factor : {5.0, 2.0, 1.0}) {
        if (factor * power >= 0.999 * raw) step = factor * power;
    }
    std::vector<double> result;
    const auto last = static_cast<int>(std::floor(high / step + 1e-9));
    for (auto i = static_cast<int>(std::ceil(low / step - 1e-9)); i <= last; ++i) {
        result.push_back(i * step);
    }
    return result;
}

int decimals_of(const std::vector<double>& ticks) {
    if (ticks.size() < 2) return 1;
    const double step = ticks[1] - ticks[0];
    return std::max(0, static_cast<int>(-std::floor(std::log10(step) + 1e-9)));
}

std::string line(point from, point to, std::string_view kind) {
    return "<line" + attribute("class", kind) + attribute("x1", from[0]) +
           attribute("y1", from[1]) + attribute("x2", to[0]) + attribute("y2", to[1]) + "/>\n";
}

std::string path(const std::vector<point>& points, std::string_view kind) {
    std::string places;
    for (const point& each : points) {
        if (!places.empty()) places += ' ';
        places += number(each[0]) + "," + number(each[1]);
    }
    return "<polyline" + attribute("class", kind) + attribute("points", places) + "/>\n";
}

std::string rectangle(point corner, double width, double height, std::string_view kind) {
    return "<rect" + attribute("class", kind) + attribute("x", corner[0]) +
           attribute("y", corner[1]) + attribute("width", width) + attribute("height", height) +
           "/>\n";
}

std::string circle(point centre, double radius, std::string_view kind, std::string_view hint) {
    std::string text = "<circle" + attribute("class", kind) + attribute("cx", centre[0]) +
                       attribute("cy", centre[1]) + attribute("r", radius);
    if (hint.empty()) return text + "/>\n";
    return text + "><title>" + escaped(hint) + "</title></circle>\n";
}

std::string text(point place, std::string_view words, std::string_view kind,
                 std::string_view anchor, double degrees) {
    std::string turn;
    if (degrees != 0) {
        turn = attribute("transform", "rotate(" + number(degrees) + " " + number(place[0]) + " " +
                                          number(place[1]) + ")");
    }
    return "<text" + attribute("class", kind) + attribute("x", place[0]) +
           attribute("y", place[1]) + attribute("text-anchor", anchor) + turn + ">" +
           escaped(words) + "</text>\n";
}

std::string drawing(double width, double height, std::string_view kind, std::string_view label,
                    const std::string& contents) {
    return "<svg" + attribute("class", kind) +
           attribute("viewBox", "0 0 " + number(width) + " " + number(height)) +
           attribute("role", "img") + attribute("aria-label", escaped(label)) + ">\n" + contents +
           "</svg>\n";
}

}  // namespace sgn::page::svg
