#include "sgn/set/surroundings.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <string_view>

#include "flib/facts/file_facts.h"
#include "flib/io/free_format.h"
#include "flib/io/stop_run.h"
#include "flib/io/unit.h"
#include "flib/search/search_word.h"
#include "flib/text/string.h"
#include "sgn/set/set_moments.h"

namespace sgn {
namespace {

constexpr const char* embedding = "electronic embedding";
constexpr const char* charges = "point charges";
constexpr const char* field = "an outer field";
constexpr const char* links = "link atoms";

void add(std::vector<std::string>& to, const char* what) {
    if (std::ranges::find(to, what) == to.end()) to.emplace_back(what);
}

/// The route of a log, in lower case: from " #" to a line of dashes, cut after 70 columns.
//  #p oniom(td(nstates=4)/6-31g(d):uff)=embedcharge geom=connectivity nosymm fo
//  rce
//  ----------------------------------------------------------------------
std::string route_of(const std::string& log) {
    const flib::input_unit fid(log);
    flib::line_buffer line;
    if (!flib::search_word(fid, 1, 2, " #", line)) return {};
    std::string route;
    do {
        // A blank may stand where it is cut.
        route += line.padded().substr(1, 70);
    } while (flib::read_record(fid, line) && !line.trimmed().starts_with(" ---"));
    return flib::strlowcase(route);
}

void add_of_route(const std::string& route, std::vector<std::string>& to) {
    constexpr std::string_view separators = " \t,/()=:";
    for (std::size_t begin = 0;;) {
        begin = route.find_first_not_of(separators, begin);
        if (begin == std::string::npos) return;
        const std::size_t end = std::min(route.find_first_of(separators, begin), route.size());
        const std::string_view word = std::string_view(route).substr(begin, end - begin);
        if (word.starts_with("embed")) add(to, embedding);
        if (word == "charge") add(to, charges);
        if (word == "field") add(to, field);
        begin = end;
    }
}

/// Whether an array of a checkpoint holds anything but zeros.
//  Link Atoms                                 I   N=           6
//             0           0           0           0           0           5
bool has_values(std::int32_t fid, std::string_view label) {
    flib::rewind_unit(fid);
    flib::line_buffer line;
    if (!flib::search_word(fid, 1, 40, label, line)) return false;
    while (flib::read_record(fid, line) && line.padded().front() == ' ' &&
           !line.trimmed().empty()) {
        constexpr std::string_view of_zeros = " 0.E+-";
        if (line.trimmed().find_first_not_of(of_zeros) != std::string_view::npos) return true;
    }
    return false;
}

void add_of_checkpoint(const std::string& file, std::vector<std::string>& to) {
    constexpr std::array wanted{flib::quantity::natom, flib::quantity::numbers};
    const bool others = !flib::facts_of(file, wanted).point_charges.empty();
    const flib::input_unit fid(file);
    flib::line_buffer line;
    std::int32_t count = 0;
    if (flib::search_word(fid, 1, 40, "Number of point charges in /Mol/", line)) {
        flib::read_items(flib::held_record{fid, line.padded()}, flib::discard{7}, count);
    }
    if (others || count > 0) add(to, charges);
    if (has_values(fid, "External E-field")) add(to, field);
    if (has_values(fid, "Link Atoms")) add(to, links);
}

}  // namespace

std::vector<std::string> surroundings_beside(const std::string& name) {
    std::vector<std::string> found;
    const auto look = [](const std::function<void()>& into) {
        try {
            into();
        } catch (const flib::ending&) {
            // It is not there, or tells nothing.
        }
    };
    look([&] { add_of_route(route_of(file_beside(name, ".log")), found); });
    look([&] { add_of_checkpoint(file_beside(name, ".fchk"), found); });
    return found;
}

}  // namespace sgn
