#include "sgn_check/report.h"
#include "flib/text/shown_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <vector>

#include "common/csv.h"
#include "common/json_text.h"
#include "common/set_json.h"
#include "common/table.h"
#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "sgn/set/input_numbers.h"
#include "sgn/set/listed.h"

namespace sgn_check {
namespace {

using flib::decimal;
using tools::csv_real;
using tools::json_of;
using tools::json_value;

/// A number, or a dash if there is none.
std::string known(double value, int decimals) {
    return std::isnan(value) ? "-" : decimal(value, decimals);
}

std::string verdict_text(const sgn::verdict& of) {
    std::string text;
    for (const sgn::finding& each : of.findings) text += (text.empty() ? "" : "; ") + each.text;
    return text.empty() ? "fine" : text;
}

/// The atom of a file, from 0.
sgn::atom atom_of(const sgn::result_file& file, const sgn::result_file& reference,
                  std::size_t place) {
    sgn::atom atom;
    atom.symbol = file.contents.symbol[place].trimmed();
    if (place < reference.input_numbers.size()) atom.input = reference.input_numbers[place];
    return atom;
}

/// The atom that moved most.
std::string atom_name(const sgn::verdict& of, const sgn::result_file& reference) {
    return name_of(atom_of(*of.file, reference, of.moved->farthest), of.moved->farthest);
}

std::vector<tools::table_cell> row_of(const sgn::verdict& of, const sgn::result_file& reference) {
    const bool is_reference = of.file == &reference;
    const sgn::sgn_contents& contents = of.file->contents;
    std::string dipole;
    for (const double component : contents.corrected_tdip) {
        const std::string text = decimal(component, 4);
        const std::size_t width = dipole.empty() ? 7 : 9;
        dipole.append(text.size() < width ? width - text.size() : dipole.empty() ? 0 : 1, ' ');
        dipole += text;
    }
    std::string displaced = of.moved ? of.moved->text(atom_name(of, reference)) : "-";
    if (is_reference) displaced = "reference";
    return {{flib::printable(of.file->name)},
            {std::to_string(contents.parameters.sign)},
            {flib::scientific_field(contents.parameters.tden_maxval, 11, 4)},
            {is_reference ? "" : known(of.ratio, 3)},
            {dipole},
            {is_reference ? "" : known(sgn::length(of.change), 4)},
            {displaced},
            {verdict_text(of), of.fine() ? tools::paint::good : tools::paint::bad}};
}

std::string rules_text(const sgn::sum_rules& rules) {
    if (!rules.judged) return "Sum rules: not judged, " + rules.why_not + ".";
    return "Sum rules: chi-squared " + decimal(rules.chi2, 1) + " of " +
           std::to_string(rules.sums) + " sums, largest residue " + decimal(rules.largest, 1) +
           " times its uncertainty: they " + (rules.satisfied ? "hold." : "FAIL.");
}

/// What there is to know beside the line of the sum rules if they fail.
std::string failure_text(const sgn::assessment& of) {
    if (!of.rules.judged || of.rules.satisfied) return {};
    if (!of.suspects.flips.empty()) return "They hold if the signs named above are reversed.";
    return "No few reversed signs would mend them: look for another state, another frame, or too "
           "large a step.";
}

std::string summary(const sgn::assessment& of, std::size_t unreadable) {
    const auto doubtful = static_cast<std::size_t>(
        std::count_if(of.verdicts.begin(), of.verdicts.end(),
                      [](const sgn::verdict& each) { return !each.fine(); }));
    const std::string all = std::to_string(of.verdicts.size() + unreadable);
    const std::string lost = std::to_string(unreadable) + " cannot be read";
    if (doubtful > 0) {
        return std::to_string(doubtful) + " of " + all + " files deserve doubt" +
               (unreadable > 0 ? ", " + lost : "") + ".";
    }
    if (!of.fine()) {
        return "The set deserves doubt, though no single one of " + all + " files does" +
               (unreadable > 0 ? "; " + lost : "") + ".";
    }
    if (unreadable > 0) return "Of " + all + " files " + lost + ", the others are fine.";
    const std::string fine = "All " + all + " files are fine";
    if (of.signs.complete()) return fine + ".";
    return fine + ": no sign is wrong that could be seen. " +
           reservation_of(of.signs, names_of(of));
}

json_value displacement_json(const sgn::verdict& of, const sgn::result_file& reference) {
    if (!of.moved) return nullptr;
    const sgn::displacement& moved = *of.moved;
    json_value json = {{"moved_atoms", moved.moved}};
    if (moved.moved > 0) {
        json["atom"] = moved.farthest + 1;
        json["input"] = number_of(atom_of(*of.file, reference, moved.farthest), moved.farthest);
        json["symbol"] = of.file->contents.symbol[moved.farthest].trimmed();
        json["vector"] = moved.shift[moved.farthest];
        json["distance"] = moved.distance;
    }
    return json;
}

json_value verdict_json(const sgn::verdict& of, const sgn::result_file& reference) {
    const bool is_reference = of.file == &reference;
    const sgn::sgn_contents& contents = of.file->contents;
    json_value json;
    json["file"] = of.file->name;
    json["sign"] = contents.parameters.sign;
    json["element"] = contents.parameters.tden_maxloc;
    json["value"] = contents.parameters.tden_maxval;
    json["dipole"] = contents.corrected_tdip;
    if (!is_reference) {
        json["ratio"] = of.ratio;
        json["change"] = of.change;
        json["turn"] = of.turn;
        json["displacement"] = displacement_json(of, reference);
        json["rotation"] = of.rotation;
        json["partner"] = of.partner != nullptr ? json_value(of.partner->name) : json_value();
        json["asymmetry"] = of.asymmetry;
    }
    json["fine"] = of.fine();
    json["findings"] = json_of(of.findings);
    return json;
}

std::vector<std::string> csv_fields(const sgn::verdict& of) {
    const sgn::sgn_contents& contents = of.file->contents;
    std::vector<std::string> fields{of.file->name,
                                    std::to_string(contents.parameters.sign),
                                    std::to_string(contents.parameters.tden_maxloc[0]),
                                    std::to_string(contents.parameters.tden_maxloc[1]),
                                    csv_real(contents.parameters.tden_maxval),
                                    csv_real(of.ratio)};
    const auto add_vector = [&](const sgn::vec3& v) {
        for (const double component : v) fields.push_back(csv_real(component));
    };
    add_vector(contents.corrected_tdip);
    add_vector(of.change);
    fields.push_back(csv_real(of.turn));
    fields.push_back(of.moved ? std::to_string(of.moved->moved) : "");
    if (of.moved && of.moved->moved > 0) {
        fields.push_back(std::to_string(of.moved->farthest + 1));
        fields.emplace_back(contents.symbol[of.moved->farthest].trimmed());
        add_vector(of.moved->shift[of.moved->farthest]);
        fields.push_back(csv_real(of.moved->distance));
    } else {
        fields.resize(fields.size() + 6);
    }
    fields.push_back(csv_real(of.rotation));
    fields.push_back(of.partner != nullptr ? of.partner->name : "");
    fields.push_back(csv_real(of.asymmetry));
    return fields;
}

}  // namespace

std::string table(const sgn::assessment& of, std::span<const unreadable_file> unreadable,
                  const tools::terminal& on) {
    tools::table rows;
    rows.columns = {{"File"},
                    {"Sign", true},
                    {"Element", true, 5},
                    {"Ratio", true, 1},
                    {"Corrected dipole (au)", true, 3},
                    {"Change", true, 4},
                    {"Moved (Angstrom)", false, 2},
                    {"Verdict"}};
    for (const sgn::verdict& each : of.verdicts) {
        rows.rows.push_back(row_of(each, *of.verdicts.front().file));
    }
    std::string text = table_text(rows, on);
    const auto add = [&](const std::string& words, bool good) {
        const auto lines = on.width ? flib::wrapped(words, *on.width) : std::vector{words};
        for (const std::string& line : lines) {
            text += painted(line, good ? tools::paint::none : tools::paint::bad, on) + '\n';
        }
    };
    const bool hold = !of.rules.judged || of.rules.satisfied;
    add(rules_text(of.rules), hold);
    if (const std::string words = failure_text(of); !words.empty()) add(words, false);
    if (of.rules.judged && !of.surroundings.empty()) {
        add("The job has " + sgn::listed(of.surroundings) +
                ", which do not move with the atoms: the sums need not vanish (--no-sum-rules "
                "leaves them out).",
            true);
    }
    for (const sgn::finding& each : of.findings) {
        // What the lines above do not tell.
        if (each.kind == sgn::doubt::dipole_sum_rules) continue;
        if (each.kind == sgn::doubt::unsound && !of.rules.satisfied) continue;
        add("The set: " + each.text + ".", false);
    }
    add(summary(of, unreadable.size()), of.fine() && unreadable.empty());
    return text;
}

std::string json(const sgn::assessment& of, std::span<const unreadable_file> unreadable,
                 const sgn::thresholds& limits) {
    json_value result{{"written_by", "sgn_check"}};
    result["reference"] = nullptr;
    result["files"] = json_value::array();
    for (std::size_t i = 0; i < of.verdicts.size(); ++i) {
        json_value verdict = verdict_json(of.verdicts[i], *of.verdicts.front().file);
        if (i == 0) {
            result["reference"] = std::move(verdict);
        } else {
            result["files"].push_back(std::move(verdict));
        }
    }
    result["unreadable"] = json_value::array();
    for (const unreadable_file& each : unreadable) {
        result["unreadable"].push_back({{"file", each.name}, {"reason", each.reason}});
    }
    result["findings"] = json_of(of.findings);
    result["surroundings"] = of.surroundings;
    result["sum_rules"] = {{"dipole", json_of(of.rules, of.suspects, of.signs, names_of(of))}};
    result["thresholds"] = {
        {"min_ratio", limits.min_ratio},         {"max_rotation", limits.max_rotation},
        {"max_turn", limits.max_turn},           {"min_dipole", limits.min_dipole},
        {"max_asymmetry", limits.max_asymmetry}, {"pairs", limits.pairs},
        {"sum_rules", limits.sum_rules}};
    return tools::json_text(result);
}

std::string csv(const sgn::assessment& of) {
    std::string text =
        "file,sign,row,column,value,ratio,dipole_x,dipole_y,dipole_z,change_x,change_y,change_z,"
        "turn,moved_atoms,atom,symbol,shift_x,shift_y,shift_z,distance,rotation,partner,asymmetry,"
        "sum_rules_chi2,sum_rules_largest,sum_rules_satisfied,findings\r\n";
    for (const sgn::verdict& each : of.verdicts) {
        std::vector<std::string> fields = csv_fields(each);
        if (&each == of.verdicts.data() && of.rules.judged) {
            fields.push_back(csv_real(of.rules.chi2));
            fields.push_back(csv_real(of.rules.largest));
            fields.emplace_back(of.rules.satisfied ? "true" : "false");
        } else {
            fields.resize(fields.size() + 3);
        }
        std::string names;
        for (const sgn::finding& found : each.findings) {
            names.append(names.empty() ? "" : " ").append(name_of(found.kind));
        }
        fields.push_back(names);
        text += tools::csv_line(fields);
    }
    return text;
}

}  // namespace sgn_check
