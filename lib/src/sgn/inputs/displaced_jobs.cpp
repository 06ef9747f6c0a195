#include "sgn/inputs/displaced_jobs.h"

#include <algorithm>
#include <cstdint>
#include <map>

#include "flib/io/fixed_field.h"
#include "flib/io/number.h"
#include "flib/io/stop_run.h"
#include "flib/text/string.h"
#include "flib/util/file.h"
#include "flib/util/units.h"

namespace sgn::inputs {

std::string name_of_set(const std::string& file) {
    std::string name = flib::name_base(file);
    if (name.find('.') != std::string::npos) name = flib::name_main(file);
    const bool fit = std::ranges::all_of(name, [](char c) {
        return flib::is_ascii_letter(c) || flib::is_ascii_digit(c) ||
               std::string_view("_.+-").find(c) != std::string_view::npos;
    });
    if (name.empty() || !fit || name.starts_with('-') || name.starts_with('.')) {
        throw flib::run_error("the name '" + flib::printable(name) +
                              "' cannot be that of a set: give the input one of letters, "
                              "digits, '_', '.', '+' and '-'");
    }
    return name;
}

std::vector<std::size_t> usual_atoms(const job_template& job) {
    std::vector<std::size_t> atoms;
    for (std::size_t i = 0; i < job.atoms.size(); ++i) {
        if (!job.kind.oniom || job.atoms[i].layer == 'H') atoms.push_back(i + 1);
    }
    if (atoms.empty()) throw flib::run_error("no atom is in the high layer");
    return atoms;
}

namespace {

constexpr double smallest = 0.0001;  // logs have six decimals

/// A length in Angstrom up to `largest` in `unit`; without, it is none.
std::optional<decimal> length_of(std::string_view text, double largest, length_unit unit) {
    double step = 0;
    decimal exact;
    if (parse_decimal(text, exact) != decimal_error::none ||
        flib::parse_real(text, step) != flib::number_error::none ||
        !(step >= smallest && step <= largest)) {
        return std::nullopt;
    }
    if (unit == length_unit::angstrom) return exact;
    constexpr int decimals = 10;
    parse_decimal(flib::decimal(step / flib::bohr_radius, decimals), exact);
    return exact;
}

/// How many millionths of an Angstrom it is; 0 if that is no whole number.
std::int64_t millionths(decimal length) {
    for (; length.decimals > 6; --length.decimals) {
        if (length.digits % 10 != 0) return 0;
        length.digits /= 10;
    }
    for (; length.decimals < 6; ++length.decimals) length.digits *= 10;
    return length.digits;
}

}  // namespace

std::vector<named_step> parse_step(const std::string& text, length_unit unit) {
    constexpr double largest = 1;  // Angstrom; no derivative comes from more
    if (const auto length = length_of(text, largest, unit)) return {{"", *length}};
    throw flib::run_error("--step takes a length in Angstrom, 0.0001 to 1, not '" +
                          flib::printable(text) + "'");
}

std::vector<named_step> parse_steps(const std::string& text, length_unit unit) {
    constexpr double largest = 0.1;  // of more, too much is left when they are extrapolated
    std::map<std::int64_t, decimal> lengths;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        const std::string one = text.substr(begin, end - begin);
        begin = end + 1;
        const auto in_angstrom = length_of(one, largest, length_unit::angstrom);
        const std::int64_t size = in_angstrom ? millionths(*in_angstrom) : 0;
        if (size == 0) {
            throw flib::run_error(
                "--steps takes lengths in Angstrom with up to six decimals, 0.0001 to 0.1, with "
                "commas between them, not '" +
                flib::printable(one) + "'");
        }
        if (!lengths.emplace(size, *length_of(one, largest, unit)).second) {
            throw flib::run_error("--steps has two that are equal: '" + flib::printable(one) +
                                  "' is one of the others");
        }
    }
    // As many digits as 0.01 Angstrom has, and all as many, so that names sort by them.
    const std::size_t digits =
        std::max<std::size_t>(5, std::to_string(lengths.rbegin()->first).size());
    std::vector<named_step> steps;
    for (const auto& [size, length] : lengths) {
        std::string name = std::to_string(size);
        name.insert(0, digits - name.size(), '0');
        steps.push_back({lengths.size() > 1 ? name : "", length});
    }
    return steps;
}

std::size_t digits_of_numbers(std::size_t natom) {
    return std::max<std::size_t>(2, std::to_string(natom).size());
}

std::vector<displaced_job> jobs_of_set(std::string_view set, const std::vector<std::size_t>& atoms,
                                       std::size_t natom, bool one_sided,
                                       std::span<const named_step> steps) {
    const std::size_t digits = digits_of_numbers(natom);
    std::vector<displaced_job> jobs{{std::string(set) + "_ref"}};
    for (const std::size_t atom : atoms) {
        std::string number = std::to_string(atom);
        number.insert(0, digits - number.size(), '0');
        for (int axis = 0; axis < 3; ++axis) {
            for (std::size_t s = 0; s < steps.size(); ++s) {
                for (const int sign : {1, -1}) {
                    if (sign < 0 && one_sided) continue;
                    jobs.push_back({std::string(set) + "_" + number + "xyz"[axis] +
                                        "m p"[1 + sign] + steps[s].name,
                                    atom - 1, axis, sign, s});
                }
            }
        }
    }
    return jobs;
}

std::string input_of(const job_template& from, const displaced_job& job,
                     std::span<const named_step> steps) {
    const decimal step = steps[job.step].length;
    if (job.sign == 0) return from.reference(job.name);
    return from.displaced(job.name, job.atom, static_cast<std::size_t>(job.axis),
                          job.sign > 0 ? step : negative(step));
}

}  // namespace sgn::inputs
