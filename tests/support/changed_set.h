// The water set with changes that a fixture names.
#pragma once

#include <algorithm>
#include <cmath>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/sets.h"

namespace sets {

using sgn::result_file;
using sgn::vec3;

inline vec3 turned(const vec3& v, double degrees, double digits) {
    const double c = std::cos(degrees * 3.14159265358979 / 180);
    const double s = std::sin(degrees * 3.14159265358979 / 180);
    vec3 result{c * v[0] - s * v[1], s * v[0] + c * v[1], v[2]};
    for (double& component : result) component = std::round(component * digits) / digits;
    return result;
}

/// "ref" and "01xm" to "03zp".
struct changed_set {
    result_file reference{};
    std::vector<result_file> files{};

    /// With changes, separated by commas: "WHAT", "WHAT FILE", "WHAT FILE NUMBER".
    explicit changed_set(const std::string& changes) {
        const auto renamed = [](result_file file) {
            file.name = file.name.substr(4, file.name.size() - 8);
            return file;
        };
        reference = renamed(water().reference);
        for (const result_file& each : water().files) files.push_back(renamed(each));
        std::istringstream steps(changes);
        for (std::string step; std::getline(steps, step, ',');) change(step);
    }

  private:
    result_file& named(const std::string& name) {
        const auto found = std::ranges::find(files, name, &result_file::name);
        return found == files.end() ? reference : *found;
    }

    void change(const std::string& step) {
        const std::vector<std::string> words = support::words_of(step);
        if (words.empty()) return;
        const std::string& what = words[0];
        const double number = words.size() > 1 ? std::strtod(words.back().c_str(), nullptr) : 0;
        if (what == "keep") return files.resize(std::stoul(words[1]));
        if (what == "double" || what == "turning" || what == "turned") {
            for (const double side : {-1.0, 1.0}) add(what, side, number);
            return;
        }
        if (what == "again") return files.push_back(result_file(named(words.at(1))));
        if (what == "drop") {
            std::erase_if(files, [&](const auto& file) { return file.name == words.at(1); });
            return;
        }
        if (what == "farther") {  // by so many times the step
            for (result_file& each : files) {
                for (std::size_t i = 0; i < 9; ++i) {
                    double& x = each.contents.x[i / 3][i % 3];
                    x += (number - 1) * (x - reference.contents.x[i / 3][i % 3]);
                }
            }
            return;
        }
        if (what == "massless") {
            reference.contents.mass[2] = 0;
            for (result_file& each : files) each.contents.mass[2] = 0;
            return;
        }
        if (what == "exchange") {  // values of two files
            sgn::sgn_contents& one = named(words.at(1)).contents;
            sgn::sgn_contents& other = named(words.at(2)).contents;
            std::swap(one.frc, other.frc);
            std::swap(one.corrected_tdip, other.corrected_tdip);
            return;
        }
        change(what, named(words.at(1)).contents, words, number);
    }

    void change(const std::string& what, sgn::sgn_contents& file,
                const std::vector<std::string>& words, double number) const {
        vec3& dipole = file.corrected_tdip;
        if (what == "reverse") {  // what the file says still fits together
            for (double& component : dipole) component = -component;
            file.parameters.sign = -file.parameters.sign;
            file.parameters.tden_maxval = -file.parameters.tden_maxval;
        } else if (what == "dipole") {
            dipole[static_cast<std::size_t>(words.at(2)[0] - 'x')] += number;
        } else if (what == "dipole_is") {
            for (std::size_t k = 0; k < 3; ++k) dipole[k] = std::stod(words.at(2 + k));
        } else if (what == "scale") {
            for (double& component : dipole) component *= number;
        } else if (what == "turn_dipole") {
            dipole = turned(dipole, number, 1e4);
        } else if (what == "turn") {
            for (vec3& atom : file.x) atom = turned(atom, number, 1e6);
        } else if (what == "stand") {
            file.x = reference.contents.x;
            for (vec3& atom : file.x) atom = turned(atom, number, 1e6);
        } else if (what == "sign") {
            file.parameters.sign = static_cast<std::int32_t>(number);
        } else if (what == "value") {
            file.parameters.tden_maxval = number;
        } else if (what == "row") {
            file.parameters.tden_maxloc[0] = static_cast<std::int32_t>(number);
        } else if (what == "number") {
            file.nat[2] = static_cast<std::int32_t>(number);
        } else if (what == "mass") {
            file.mass[2] = number;
        } else if (what == "force") {  // "3y" of it, or so much more
            const bool more = words.size() > 3;
            double& force = more ? file.frc.at(static_cast<std::size_t>(words[2][0] - '1'))
                                       .at(static_cast<std::size_t>(words[2][1] - 'x'))
                                 : file.frc[2][1];
            force = (more ? force : 0) + number;
        } else {
            const auto is_it = [&](const auto& count) { return what == count.name; };
            const auto count = std::ranges::find_if(sgn::sgn_counts, is_it);
            if (count == std::end(sgn::sgn_counts)) throw std::runtime_error("no change " + what);
            file.parameters.*(count->value) = static_cast<std::int32_t>(number);
        }
    }

    /// A file of another pair, "p" or "m": half as far again as 01xp or 01xm, or turned about the z
    /// axis, with its dipole or without.
    void add(const std::string& what, double side, double number) {
        result_file more = what == "double" ? files[side < 0 ? 0 : 1] : reference;
        more.name = side < 0 ? "m" : "p";
        sgn::sgn_contents& file = more.contents;
        if (what == "double") {
            file.x[0][0] += side * 0.01 * (number - 1);
            for (std::size_t k = 0; k < 3; ++k) {
                const double there = reference.contents.corrected_tdip[k];
                const double change = number * (file.corrected_tdip[k] - there);
                file.corrected_tdip[k] = std::round((there + change) * 1e4) / 1e4;
            }
        } else {
            const double angle = side * number * 3.14159265358979 / 180;
            const auto turn = [&](vec3& v, double digits) {
                v = {std::round((v[0] - angle * v[1]) * digits) / digits,
                     std::round((v[1] + angle * v[0]) * digits) / digits, v[2]};
            };
            for (vec3& atom : file.x) turn(atom, 1e6);
            if (what == "turning") {
                turn(file.corrected_tdip, 1e4);
                for (vec3& force : file.frc) turn(force, 1e9);
            }
        }
        files.push_back(more);
    }
};

}  // namespace sets
