#include "sgn/inputs/displaced_jobs.h"

#include <algorithm>

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

decimal parse_step(const std::string& text, length_unit unit) {
    constexpr double largest = 1;        // Angstrom; no derivative comes from more
    constexpr double smallest = 0.0001;  // logs have six decimals
    double step = 0;
    decimal exact;
    if (parse_decimal(text, exact) != decimal_error::none ||
        flib::parse_real(text, step) != flib::number_error::none ||
        !(step >= smallest && step <= largest)) {
        throw flib::run_error("--step takes a length in Angstrom, 0.0001 to 1, not '" +
                              flib::printable(text) + "'");
    }
    if (unit == length_unit::angstrom) return exact;
    constexpr int decimals = 10;
    parse_decimal(flib::decimal(step / flib::bohr_radius, decimals), exact);
    return exact;
}

std::size_t digits_of_numbers(std::size_t natom) {
    return std::max<std::size_t>(2, std::to_string(natom).size());
}

std::vector<displaced_job> jobs_of_set(std::string_view set, const std::vector<std::size_t>& atoms,
                                       std::size_t natom, bool one_sided) {
    const std::size_t digits = digits_of_numbers(natom);
    std::vector<displaced_job> jobs{{std::string(set) + "_ref"}};
    for (const std::size_t atom : atoms) {
        std::string number = std::to_string(atom);
        number.insert(0, digits - number.size(), '0');
        for (int axis = 0; axis < 3; ++axis) {
            for (const int sign : {1, -1}) {
                if (sign < 0 && one_sided) continue;
                jobs.push_back({std::string(set) + "_" + number + "xyz"[axis] + "m p"[1 + sign],
                                atom - 1, axis, sign});
            }
        }
    }
    return jobs;
}

std::string input_of(const job_template& from, const displaced_job& job, decimal step) {
    if (job.sign == 0) return from.reference(job.name);
    return from.displaced(job.name, job.atom, static_cast<std::size_t>(job.axis),
                          job.sign > 0 ? step : negative(step));
}

}  // namespace sgn::inputs
