#include "sgn_states/report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <vector>

#include "common/csv.h"
#include "common/json_text.h"
#include "common/program.h"
#include "common/table.h"
#include "flib/io/fixed_field.h"
#include "flib/io/stop_run.h"
#include "flib/util/units.h"

namespace sgn_states {
namespace {

using flib::decimal;
using sgn::continuation;
using sgn::followed_job;
using sgn::followed_state;
using sgn::root_values;

double electronvolts(const root_values& of) {
    return of.energy * flib::hartree_energy;
}

enum column : std::size_t {
    job,
    state,
    spin,
    root,
    overlap,
    sign,
    energy,
    strength,
    dipole,
    words
};

using row = std::vector<tools::table_cell>;
using optional_spin = std::optional<flib::root_spin>;

/// Blank if it is not known.
std::string_view name_of(const optional_spin& of) {
    return of ? flib::name_of(*of) : std::string_view{};
}

void show_values(row& cells, const root_values& values) {
    cells[energy].text = decimal(electronvolts(values), 4);
    cells[strength].text = decimal(values.oscillator_strength(), 4);
    for (const double component : values.dipole) {
        const std::string text = decimal(component, 4);
        cells[dipole].text.append(text.size() < 9 ? 9 - text.size() : 1, ' ').append(text);
    }
}

row new_row(const std::string& name, std::int32_t number) {
    row cells(words + 1);
    cells[job].text = flib::printable(name);
    cells[state].text = std::to_string(number);
    return cells;
}

/// "0.71 root 2, 0.65 root 3": the two largest overlaps of a state.
std::string largest_two(const std::vector<double>& overlaps) {
    std::vector<std::size_t> order(overlaps.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::ranges::stable_sort(order, [&](std::size_t a, std::size_t b) {
        return std::abs(overlaps[a]) > std::abs(overlaps[b]);
    });
    std::string text;
    for (std::size_t i = 0; i < std::min<std::size_t>(order.size(), 2); ++i) {
        if (i > 0) text += ", ";
        text += decimal(std::abs(overlaps[order[i]]), 2) + " root " + std::to_string(order[i] + 1);
    }
    return text;
}

std::string words_of(const followed_state& of) {
    switch (of.kind) {
        case continuation::mixed:
            return "mixed: " + largest_two(of.overlaps);
        case continuation::lost:
            return "lost: " + largest_two(of.overlaps) + "; ask for more states";
        default:
            return std::string(sgn::name_of(of.kind));
    }
}

row row_of(const std::string& name, const followed_state& of) {
    row cells = new_row(name, of.state);
    cells[words] = {words_of(of),
                    of.kind == continuation::same ? tools::paint::good : tools::paint::bad};
    if (of.root == 0) return cells;
    cells[spin].text = name_of(of.spin);
    cells[root].text = std::to_string(of.root);
    cells[overlap].text = decimal(of.overlap, 4);
    cells[sign].text = std::to_string(of.sign);
    show_values(cells, *of.values);
    return cells;
}

std::string disagreement(const std::string& name, const followed_job& of) {
    if (!of.stigruz || of.stigruz->agrees) return {};
    const followed_state& first = of.states.front();
    std::string text = flib::printable(name) + ": stigruz takes root 1 with the sign " +
                       std::to_string(of.stigruz->sign) + " for state 1; ";
    if (first.root == 0) return text + "no root continues it\n";
    return text + "the overlap says root " + std::to_string(first.root) + " with the sign " +
           std::to_string(first.sign) + "\n";
}

/// Of every state that another one of its spin comes near to: how near, where and in how many jobs.
std::string near_states(const set_result& result) {
    std::string text;
    for (std::size_t i = 0; i < result.reference.states.size(); ++i) {
        const auto near = near_anywhere(result.reference, result.jobs, i);
        if (near) text += text_of(*near) + "\n";
    }
    return text;
}

std::string summary(const set_result& result, const options& how) {
    std::array<std::size_t, 4> count{};
    std::size_t jobs = 0;
    std::size_t clear = 0;
    std::size_t written = result.reference.states.size();
    std::string text;
    for (const sgn::job_result& each : result.jobs) {
        written += each.written_files;
        if (!each.followed) continue;
        ++jobs;
        if (each.followed->clear()) ++clear;
        for (const followed_state& of : each.followed->states) {
            ++count[static_cast<std::size_t>(of.kind)];
        }
        text += disagreement(each.name, *each.followed);
    }
    text += near_states(result);
    const auto number = [](std::size_t n, const char* what) {
        return std::to_string(n) + " " + what + (n == 1 ? "" : "s");
    };
    if (jobs == 0) {
        text += "No job was read";
    } else if (clear == jobs) {
        text += number(jobs, "job") + ": all states the same and clear";
    } else {
        text +=
            std::to_string(jobs - clear) + " of " + number(jobs, "job") + " with doubt; states:";
        for (const continuation kind : {continuation::same, continuation::exchanged,
                                        continuation::mixed, continuation::lost}) {
            text += (kind == continuation::same ? " " : ", ") +
                    std::to_string(count[static_cast<std::size_t>(kind)]) + " " +
                    std::string(sgn::name_of(kind));
        }
    }
    if (const std::size_t unread = result.jobs.size() - jobs; jobs > 0 && unread > 0) {
        text += "; " + number(unread, "job") + " not read";
    }
    text += ".\n";
    if (how.follow.write) text += number(written, "result file") + " written.\n";
    return text;
}

/// An unknown value is null.
template <class Value>
tools::json_value known_json(bool known, const Value& value) {
    return known ? tools::json_value(value) : tools::json_value();
}

tools::json_value nearest_json(const std::optional<sgn::near_state>& of) {
    if (!of) return {};
    return {{"root", of->root}, {"distance", of->distance * flib::hartree_energy}};
}

/// The moments that a checkpoint alone tells.
void add_moments(tools::json_value& to, const std::optional<sgn::full_digits>& full) {
    const sgn::other_moments of = full.value_or(sgn::full_digits{}).moments;
    to["velocity_dipole"] = known_json(full.has_value(), of.velocity_dipole);
    to["magnetic_dipole"] = known_json(full.has_value(), of.magnetic_dipole);
    to["velocity_quadrupole"] = known_json(full.has_value(), of.velocity_quadrupole);
}

void add_moments(std::vector<std::string>& fields, const std::optional<sgn::full_digits>& full) {
    const sgn::other_moments of = full.value_or(sgn::full_digits{}).moments;
    const auto add = [&](const auto& values) {
        for (const double value : values) fields.push_back(full ? tools::csv_real(value) : "");
    };
    add(of.velocity_dipole);
    add(of.magnetic_dipole);
    add(of.velocity_quadrupole);
}

/// Null if there is none.
tools::json_value reason_json(const std::string& reason) {
    return known_json(!reason.empty(), reason);
}

tools::json_value job_json(const sgn::job_result& of) {
    tools::json_value list = tools::json_value::array();
    for (const followed_state& each : of.followed->states) {
        const bool known = each.values.has_value();
        const root_values values = best_values(each.values.value_or(root_values{}), each.full);
        tools::json_value state{{"state", each.state},
                                {"root", known_json(known, each.root)},
                                {"spin", known_json(each.spin.has_value(), name_of(each.spin))},
                                {"overlap", known_json(known, each.overlap)},
                                {"sign", each.sign},
                                {"energy", known_json(known, electronvolts(values))},
                                {"dipole", known_json(known, values.dipole)},
                                {"strength", known_json(known, values.oscillator_strength())},
                                {"nearest", nearest_json(each.nearest)},
                                {"verdict", sgn::name_of(each.kind)},
                                {"overlaps", each.overlaps}};
        add_moments(state, each.full);
        list.push_back(std::move(state));
    }
    tools::json_value object{{"name", of.name},
                             {"checkpoint", of.checkpoint},
                             {"states", list},
                             {"no_moments", reason_json(of.no_full_digits)}};
    if (const auto& answer = of.followed->stigruz) {
        object["stigruz"] = {{"sign", answer->sign}, {"agrees", answer->agrees}};
    }
    return object;
}

std::vector<std::string> csv_fields(const std::string& name, std::int32_t number,
                                    std::string root_number, const optional_spin& its_spin,
                                    std::string magnitude, std::string its_sign,
                                    const std::optional<root_values>& values,
                                    std::string_view kind) {
    std::vector<std::string> fields{name,
                                    std::to_string(number),
                                    std::move(root_number),
                                    std::string(name_of(its_spin)),
                                    std::move(magnitude),
                                    std::move(its_sign)};
    if (values) {
        fields.push_back(tools::csv_real(electronvolts(*values)));
        fields.push_back(tools::csv_real(values->oscillator_strength()));
        for (const double component : values->dipole) fields.push_back(tools::csv_real(component));
    } else {
        fields.resize(fields.size() + 5);
    }
    fields.emplace_back(kind);
    return fields;
}

void add_nearest(std::vector<std::string>& fields, const std::optional<sgn::near_state>& of) {
    fields.push_back(of ? std::to_string(of->root) : "");
    fields.push_back(of ? tools::csv_real(of->distance * flib::hartree_energy) : "");
}

/// A column of singlets alone tells nothing.
bool has_triplets(const set_result& result) {
    const auto is_triplet = [](const auto& state) {
        return state.spin == flib::root_spin::triplet;
    };
    return std::ranges::any_of(result.reference.states, is_triplet) ||
           std::ranges::any_of(result.jobs, [&](const sgn::job_result& each) {
               return each.followed && std::ranges::any_of(each.followed->states, is_triplet);
           });
}

}  // namespace

std::string table(const set_result& result, const options& how, const tools::terminal& on) {
    tools::table all{{{"Job"},
                      {"State", true},
                      {"Spin", false, 2},
                      {"Root", true},
                      {"Overlap", true},
                      {"Sign", true},
                      {"eV", true, 3},
                      {"Strength", true, 4},
                      {"Corrected dipole (au)", true, 1},
                      {"Verdict"}},
                     {}};
    for (const sgn::reference_state& each : result.reference.states) {
        row& cells =
            all.rows.emplace_back(new_row(result.reference.reference.files.name, each.state));
        cells[spin].text = name_of(each.spin);
        show_values(cells, each.values);
        cells[words].text = "reference";
    }
    for (const sgn::job_result& each : result.jobs) {
        if (!each.followed) continue;
        for (const followed_state& of : each.followed->states) {
            all.rows.push_back(row_of(each.name, of));
        }
    }
    if (!has_triplets(result)) {
        all.columns.erase(all.columns.begin() + spin);
        for (row& cells : all.rows) cells.erase(cells.begin() + spin);
    }
    return tools::table_text(all, on) + summary(result, how);
}

std::string json(const set_result& result, const options& how) {
    tools::json_value all{{"written_by", "sgn_states"},
                          {"reference", result.reference.reference.files.name},
                          {"states", tools::json_value::array()},
                          {"no_moments", reason_json(result.reference.reference.no_moments)},
                          {"jobs", tools::json_value::array()},
                          {"thresholds",
                           {{"mixed_below", how.follow.limits.mixed_below},
                            {"lost_below", how.follow.limits.lost_below},
                            {"near_energies", sgn::near_energies * flib::hartree_energy}}},
                          {"unreadable", tools::json_value::array()}};
    for (const sgn::reference_state& each : result.reference.states) {
        const root_values values = best_values(each.values, each.full);
        tools::json_value state{{"state", each.state},
                                {"spin", known_json(each.spin.has_value(), name_of(each.spin))},
                                {"energy", electronvolts(values)},
                                {"dipole", values.dipole},
                                {"strength", values.oscillator_strength()},
                                {"nearest", nearest_json(each.nearest)}};
        add_moments(state, each.full);
        all["states"].push_back(std::move(state));
    }
    for (const sgn::job_result& each : result.jobs) {
        if (each.followed) {
            all["jobs"].push_back(job_json(each));
        } else {
            all["unreadable"].push_back(
                {{"name", each.name}, {"checkpoint", each.checkpoint}, {"reason", each.reason()}});
        }
    }
    return tools::json_text(all);
}

std::string csv(const set_result& result) {
    std::string text = tools::csv_line(
        {"job",           "state",         "root",          "spin",          "overlap",
         "sign",          "energy",        "strength",      "dipole_x",      "dipole_y",
         "dipole_z",      "verdict",       "overlaps",      "nearest_root",  "nearest_distance",
         "velocity_x",    "velocity_y",    "velocity_z",    "magnetic_x",    "magnetic_y",
         "magnetic_z",    "quadrupole_xx", "quadrupole_yy", "quadrupole_zz", "quadrupole_xy",
         "quadrupole_xz", "quadrupole_yz"});
    for (const sgn::reference_state& each : result.reference.states) {
        std::vector<std::string> fields =
            csv_fields(result.reference.reference.files.name, each.state, "", each.spin, "", "",
                       best_values(each.values, each.full), "reference");
        fields.emplace_back();
        add_nearest(fields, each.nearest);
        add_moments(fields, each.full);
        text += tools::csv_line(fields);
    }
    for (const sgn::job_result& each : result.jobs) {
        if (!each.followed) continue;
        for (const followed_state& of : each.followed->states) {
            const bool known = of.root != 0;
            std::optional<root_values> values = of.values;
            if (values) values = best_values(*values, of.full);
            std::vector<std::string> fields =
                csv_fields(each.name, of.state, known ? std::to_string(of.root) : "", of.spin,
                           known ? tools::csv_real(of.overlap) : "", std::to_string(of.sign),
                           values, sgn::name_of(of.kind));
            std::string& overlaps = fields.emplace_back();
            for (const double value : of.overlaps) {
                overlaps.append(overlaps.empty() ? "" : " ").append(tools::csv_real(value));
            }
            add_nearest(fields, of.nearest);
            add_moments(fields, of.full);
            text += tools::csv_line(fields);
        }
    }
    return text;
}

int status_of(const set_result& result) {
    int status = tools::exit_status::fine;
    for (const sgn::job_result& each : result.jobs) {
        if (!each.followed) return tools::exit_status::failed;
        if (!each.followed->clear()) status = tools::exit_status::doubtful;
    }
    return status;
}

}  // namespace sgn_states
