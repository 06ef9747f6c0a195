#include "sgn_check/report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string_view>

#include "common/json.h"
#include "flib/io/stop_run.h"
#include "sgn_check/text.h"

namespace sgn_check {
namespace {

using tools::json_writer;

enum class column { file, sign, value, ratio, dipole, change, displaced, verdict };
constexpr std::size_t columns = 8;
using row = std::array<std::string, columns>;

std::string& at(row& cells, column which) {
    return cells[static_cast<std::size_t>(which)];
}

bool is_text(std::size_t i) {
    const auto which = static_cast<column>(i);
    return which == column::file || which == column::displaced || which == column::verdict;
}

/// A number, or a dash if there is none.
std::string known(double value, int decimals) {
    return std::isnan(value) ? "-" : decimal(value, decimals);
}

std::string verdict_text(const verdict& of) {
    std::string text;
    for (const finding& each : of.findings) text += (text.empty() ? "" : "; ") + each.text;
    return text.empty() ? "fine" : text;
}

row row_of(const verdict& of, bool is_reference) {
    const numfreq::sgn_contents& contents = of.file->contents;
    row cells;
    at(cells, column::file) = flib::printable(of.file->name);
    at(cells, column::sign) = std::to_string(contents.parameters.sign);
    at(cells, column::value) = flib::scientific_field(contents.parameters.tden_maxval, 11, 4);
    for (const double component : contents.corrected_tdip) {
        const std::string text = decimal(component, 4);
        at(cells, column::dipole).append(text.size() < 9 ? 9 - text.size() : 1, ' ').append(text);
    }
    at(cells, column::verdict) = verdict_text(of);
    if (is_reference) {
        at(cells, column::displaced) = "reference";
        return cells;
    }
    at(cells, column::ratio) = known(of.ratio, 3);
    at(cells, column::change) = known(length(of.change), 4);
    at(cells, column::displaced) = of.moved ? of.moved->text(contents.symbol) : "-";
    return cells;
}

/// Characters, not bytes.
std::size_t shown_width(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
    }));
}

std::string summary(std::span<const verdict> verdicts) {
    const auto doubtful =
        std::count_if(verdicts.begin(), verdicts.end(), [](const verdict& v) { return !v.fine(); });
    const std::string count = std::to_string(verdicts.size());
    if (doubtful == 0) return "All " + count + " files are fine.\n";
    return std::to_string(doubtful) + " of " + count + " files deserve doubt.\n";
}

void write_displacement(json_writer& json, const verdict& of) {
    json.key("displacement");
    if (!of.moved) {
        json.null();
        return;
    }
    const displacement& moved = *of.moved;
    json.begin_object();
    json.member("moved_atoms", moved.moved);
    if (moved.moved > 0) {
        json.member("atom", moved.farthest + 1);
        json.member("symbol", of.file->contents.symbol[moved.farthest].trimmed());
        json.key("vector");
        json.array(moved.shift[moved.farthest]);
        json.member("distance", moved.distance);
    }
    json.end_object();
}

void write_verdict(json_writer& json, const verdict& of, bool is_reference) {
    const numfreq::sgn_contents& contents = of.file->contents;
    json.begin_object();
    json.member("file", of.file->name);
    json.member("sign", contents.parameters.sign);
    json.key("element");
    json.array(contents.parameters.tden_maxloc);
    json.member("value", contents.parameters.tden_maxval);
    json.key("dipole");
    json.array(contents.corrected_tdip);
    if (!is_reference) {
        json.member("ratio", of.ratio);
        json.key("change");
        json.array(of.change);
        json.member("turn", of.turn);
        write_displacement(json, of);
        json.member("rotation", of.rotation);
        json.key("partner");
        if (of.partner) {
            json.value(of.partner->name);
        } else {
            json.null();
        }
        json.member("asymmetry", of.asymmetry);
    }
    json.member("fine", of.fine());
    json.key("findings");
    json.begin_array();
    for (const finding& each : of.findings) {
        json.begin_object();
        json.member("doubt", name_of(each.kind));
        json.member("text", each.text);
        json.end_object();
    }
    json.end_array();
    json.end_object();
}

/// A field of a CSV line.
std::string csv_text(std::string_view text) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
    std::string quoted = "\"";
    for (const char c : text) quoted.append(c == '"' ? 2 : 1, c);
    return quoted + '"';
}

std::string csv_real(double value) {
    return std::isfinite(value) ? tools::shortest_real(value) : "";
}

}  // namespace

std::string table(std::span<const verdict> verdicts, bool colour) {
    std::vector<row> rows{{"File", "Sign", "Element", "Ratio", "Corrected dipole (au)", "Change",
                           "Displaced (Angstrom)", "Verdict"}};
    for (const verdict& each : verdicts) rows.push_back(row_of(each, &each == verdicts.data()));
    std::array<std::size_t, columns> width{};
    for (const row& cells : rows) {
        for (std::size_t i = 0; i < columns; ++i) {
            width[i] = std::max(width[i], shown_width(cells[i]));
        }
    }
    std::string text;
    for (std::size_t line = 0; line < rows.size(); ++line) {
        for (std::size_t i = 0; i + 1 < columns; ++i) {
            const std::string blanks(width[i] - shown_width(rows[line][i]), ' ');
            text += is_text(i) ? rows[line][i] + blanks : blanks + rows[line][i];
            text += "  ";
        }
        const std::string& words = at(rows[line], column::verdict);
        if (colour && line > 0) {
            text += (verdicts[line - 1].fine() ? "\033[32m" : "\033[1;31m") + words + "\033[0m\n";
        } else {
            text += words + '\n';
        }
    }
    return text + summary(verdicts);
}

std::string json(std::span<const verdict> verdicts, std::span<const unreadable_file> unreadable,
                 const thresholds& limits) {
    json_writer json;
    json.begin_object();
    json.key("reference");
    if (verdicts.empty()) {
        json.null();
    } else {
        write_verdict(json, verdicts.front(), true);
    }
    json.key("files");
    json.begin_array();
    for (std::size_t i = 1; i < verdicts.size(); ++i) write_verdict(json, verdicts[i], false);
    json.end_array();
    json.key("unreadable");
    json.begin_array();
    for (const unreadable_file& each : unreadable) {
        json.begin_object();
        json.member("file", each.name);
        json.member("reason", each.reason);
        json.end_object();
    }
    json.end_array();
    json.key("thresholds");
    json.begin_object();
    json.member("min_ratio", limits.min_ratio);
    json.member("max_rotation", limits.max_rotation);
    json.member("max_turn", limits.max_turn);
    json.member("min_dipole", limits.min_dipole);
    json.member("max_asymmetry", limits.max_asymmetry);
    json.member("pairs", limits.pairs);
    json.end_object();
    json.end_object();
    return json.text();
}

std::string csv(std::span<const verdict> verdicts) {
    std::string text =
        "file,sign,row,column,value,ratio,dipole_x,dipole_y,dipole_z,change_x,change_y,change_z,"
        "turn,moved_atoms,atom,symbol,shift_x,shift_y,shift_z,distance,rotation,partner,asymmetry,"
        "findings\r\n";
    for (const verdict& each : verdicts) {
        const numfreq::sgn_contents& contents = each.file->contents;
        std::vector<std::string> fields{csv_text(each.file->name),
                                        std::to_string(contents.parameters.sign),
                                        std::to_string(contents.parameters.tden_maxloc[0]),
                                        std::to_string(contents.parameters.tden_maxloc[1]),
                                        csv_real(contents.parameters.tden_maxval),
                                        csv_real(each.ratio)};
        const auto add_vector = [&](const vec3& v) {
            for (const double component : v) fields.push_back(csv_real(component));
        };
        add_vector(contents.corrected_tdip);
        add_vector(each.change);
        fields.push_back(csv_real(each.turn));
        fields.push_back(each.moved ? std::to_string(each.moved->moved) : "");
        if (each.moved && each.moved->moved > 0) {
            fields.push_back(std::to_string(each.moved->farthest + 1));
            fields.push_back(csv_text(contents.symbol[each.moved->farthest].trimmed()));
            add_vector(each.moved->shift[each.moved->farthest]);
            fields.push_back(csv_real(each.moved->distance));
        } else {
            fields.resize(fields.size() + 6);
        }
        fields.push_back(csv_real(each.rotation));
        fields.push_back(each.partner ? csv_text(each.partner->name) : "");
        fields.push_back(csv_real(each.asymmetry));
        std::string names;
        for (const finding& found : each.findings) {
            names.append(names.empty() ? "" : " ").append(name_of(found.kind));
        }
        fields.push_back(names);
        for (std::size_t i = 0; i < fields.size(); ++i) text += (i > 0 ? "," : "") + fields[i];
        text += "\r\n";
    }
    return text;
}

}  // namespace sgn_check
