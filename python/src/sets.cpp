// Sets of displaced jobs: inputs, reports on them, and what is written of these.

#include <algorithm>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include "flib/io/atomic_file.h"
#include "flib/io/stop_run.h"
#include "flib/util/elements.h"
#include "module.h"
#include "sgn/check/files_report.h"
#include "sgn/checkpoint/checkpoint.h"
#include "sgn/checkpoint/fcc_files.h"
#include "sgn/inputs/displaced_jobs.h"
#include "sgn/inputs/file_set.h"
#include "sgn/job/job_files.h"
#include "sgn/job/same_file.h"
#include "sgn/page/html.h"
#include "sgn/result/output_kind.h"
#include "sgn/set/find_signs.h"
#include "sgn/set/from_arrays.h"
#include "sgn/set/input_numbers.h"
#include "sgn/set/modes.h"
#include "sgn/set/set_moments.h"
#include "values.h"

namespace stigruz_python {
namespace {

/// A report, and what else is known of how it was made.
struct set_report {
    sgn::files_report made;
    std::vector<std::string> notes{};
    std::string reference{};            ///< its file, if it is made of any
    std::vector<std::string> inputs{};  ///< files that it was made of
    std::optional<sgn::found_signs> signs{};
};

py::list sign_lists(std::span<const std::vector<int>> choices) {
    py::list list;
    for (const auto& each : choices) list.append(whole_numbers(each));
    return list;
}

py::object found_signs_of(const set_report& of) {
    if (!of.signs) return py::none();
    py::dict values;
    values["decided"] = of.signs->decided;
    values["signs"] = whole_numbers(of.signs->signs);
    values["alternatives"] = sign_lists(of.signs->alternatives);
    py::list open;
    for (const std::size_t job : of.signs->open) open.append(job);
    values["open"] = open;
    values["largest_change"] = of.signs->largest_change;
    values["reason"] = text_or_none(of.signs->reason);
    return values;
}

/// None for an empty table.
py::object table_or_none(const sgn::table& of) {
    if (of.rows == 0) return py::none();
    return array_of(of);
}

py::object moment_or_none(const sgn::moment_derivatives& of) {
    if (of.values.rows == 0) return py::none();
    py::dict values;
    values["values"] = array_of(of.values);
    values["rounding"] = array_of(of.rounding);
    values["noise"] = array_of(of.noise);
    values["step_errors"] = array_of(of.step);
    values["step_scale"] = of.step_scale;
    values["uncertainties"] = array_of(of.uncertainty);
    return values;
}

py::list findings_of(const sgn::report& of, std::size_t job) {
    py::list list;
    for (const sgn::finding& each : of.findings) {
        if (each.job != job && job != sgn::finding::whole_set) continue;
        py::dict values;
        values["doubt"] = text_of(sgn::name_of(each.kind));
        values["text"] = text_of(each.text);
        values["file"] = each.job == sgn::finding::whole_set
                             ? py::object(py::none())
                             : file_name(of.set.jobs[each.job].name);
        list.append(values);
    }
    return list;
}

py::dict file_of(const sgn::report& of, std::size_t at) {
    const sgn::displaced_job& job = of.set.jobs[at];
    py::dict values;
    values["file"] = file_name(job.name);
    values["role"] = text_of(sgn::name_of(job.is));
    values["sign"] = job.sign;
    values["dipole"] = array_of(job.dipole);
    values["shifts"] = array_of(job.moved.shift);
    values["step"] = job.moved.distance;
    const bool has_other = job.is == sgn::role::paired || job.is == sgn::role::repeated;
    values["other"] = has_other ? py::object(file_name(of.set.jobs[job.other].name)) : py::none();
    values["findings"] = findings_of(of, at);
    return values;
}

py::dict modes_of(const sgn::report& of) {
    const std::span<const sgn::normal_mode> modes = of.modes;
    std::vector<double> wavenumbers;
    std::vector<double> masses;
    std::vector<double> borrowed;
    std::vector<double> displacements;
    std::vector<sgn::vec3> by_mass;
    std::vector<sgn::vec3> dimensionless;
    for (const sgn::normal_mode& each : modes) {
        wavenumbers.push_back(each.wavenumber);
        masses.push_back(each.reduced_mass);
        borrowed.push_back(each.borrowed);
        for (const sgn::vec3& atom : each.displacement) {
            displacements.insert(displacements.end(), atom.begin(), atom.end());
        }
        by_mass.push_back(each.dipole_derivative);
        dimensionless.push_back(each.dipole_derivative_q);
    }
    py::dict values;
    values["wavenumbers"] = array_of(wavenumbers);
    values["reduced_masses"] = array_of(masses);
    values["displacements"] = array_of(
        displacements,
        {static_cast<py::ssize_t>(modes.size()), static_cast<py::ssize_t>(of.set.atoms.size()), 3});
    values["dipole_derivatives"] = array_of(by_mass);
    values["dipole_derivatives_q"] = array_of(dimensionless);
    values["borrowed"] = array_of(borrowed);
    for (const auto& [name, derivatives] : sgn::other_derivatives(of.derivatives)) {
        const std::string key = std::string(name) + "_derivatives";
        const std::string key_q = key + "_q";
        values[key.c_str()] = py::none();
        values[key_q.c_str()] = py::none();
        if (derivatives->values.rows == 0) continue;
        sgn::table along(modes.size(), derivatives->values.columns);
        sgn::table along_q = along;
        for (std::size_t m = 0; m < along.rows; ++m) {
            const std::vector<double> row = sgn::by_mode(modes[m], derivatives->values);
            for (std::size_t k = 0; k < along.columns; ++k) {
                along(m, k) = row[k];
                along_q(m, k) = row[k] * sgn::dimensionless_factor(modes[m]);
            }
        }
        values[key.c_str()] = array_of(along);
        values[key_q.c_str()] = array_of(along_q);
    }
    return values;
}

py::object excitation_of(const sgn::report& of) {
    const auto& reference = of.set.jobs.front().excited;
    if (!reference) return py::none();
    const std::vector<double> gradient = excitation_gradient(of.set, of.derivatives);
    py::dict values;
    values["state"] = reference->state;
    values["state_of_forces"] = reference->target;
    values["energy"] = or_none(reference->energy);
    const auto atoms = static_cast<py::ssize_t>(gradient.size() / 3);
    values["gradient"] = gradient.empty() ? py::object(py::none()) : array_of(gradient, {atoms, 3});
    return values;
}

/// None where no state is near, or states were not followed.
py::object near_state_of(const sgn::report& of) {
    if (!of.near) return py::none();
    py::dict values;
    values["state"] = of.near->state;
    values["distance"] = of.near->distance;
    values["job"] = file_name(of.near->job);
    values["near"] = of.near->near;
    values["jobs"] = of.near->jobs;
    values["text"] = text_of(sgn::text_of(*of.near));
    return values;
}

py::dict rules_of(const sgn::sum_rules& of) {
    py::dict values;
    values["judged"] = of.judged;
    values["why_not"] = text_or_none(of.why_not);
    values["satisfied"] = of.judged ? py::cast(of.satisfied) : py::none();
    values["chi2"] = of.chi2;
    values["sums"] = of.sums;
    values["largest"] = of.largest;
    values["largest_residue"] = of.largest_residue;
    values["noise"] = of.noise;
    values["step_scale"] = of.step_scale;
    values["translation"] = table_or_none(of.translation);
    values["translation_uncertainty"] = table_or_none(of.translation_uncertainty);
    values["rotation"] = table_or_none(of.rotation);
    values["rotation_uncertainty"] = table_or_none(of.rotation_uncertainty);
    return values;
}

py::list names_of_jobs(const sgn::report& of, std::span<const std::size_t> jobs) {
    py::list names;
    for (const std::size_t job : jobs) names.append(file_name(of.set.jobs[job].name));
    return names;
}

py::list names_of_jobs(const sgn::report& of, std::span<const std::vector<std::size_t>> guesses) {
    py::list list;
    for (const auto& jobs : guesses) list.append(names_of_jobs(of, std::span(jobs)));
    return list;
}

py::dict atoms_of(const sgn::displaced_set& set) {
    py::list symbols;
    std::vector<std::int32_t> atomic_numbers;
    std::vector<std::int32_t> input;
    std::vector<double> masses;
    std::vector<sgn::vec3> x;
    for (std::size_t i = 0; i < set.atoms.size(); ++i) {
        const sgn::atom& each = set.atoms[i];
        symbols.append(text_of(each.symbol));
        atomic_numbers.push_back(each.number);
        input.push_back(number_of(each, i));
        masses.push_back(each.mass);
        x.push_back(each.x);
    }
    py::dict values;
    values["symbols"] = symbols;
    values["atomic_numbers"] = whole_numbers(atomic_numbers);
    values["masses"] = array_of(masses);
    values["coordinates"] = array_of(x);
    values["input_numbers"] = whole_numbers(input);
    return values;
}

py::dict values_of(const set_report& from) {
    const sgn::report& of = from.made.is;
    const sgn::displaced_set& set = of.set;
    const sgn::derivatives& d = of.derivatives;
    py::dict values = atoms_of(set);
    py::list files;
    for (std::size_t i = 0; i < set.jobs.size(); ++i) files.append(file_of(of, i));
    values["files"] = files;
    values["smallest_step"] = set.smallest_step;
    values["largest_step"] = set.largest_step;
    values["dipole_decimals"] = set.dipole_decimals;
    values["force_decimals"] = set.force_decimals;
    values["coordinate_decimals"] = set.coordinate_decimals;
    values["dipole_source"] = text_of(source_of_dipoles(set));
    values["dipole"] = array_of(set.jobs.front().dipole);
    values["dipole_derivatives"] = array_of(d.dipole);
    values["dipole_uncertainty"] = array_of(of.uncertainties.total);
    values["dipole_rounding"] = array_of(d.dipole_rounding);
    values["dipole_sign_errors"] = array_of(of.uncertainties.signs);
    values["dipole_step_error"] = d.dipole_step_error;
    values["dipole_step_errors"] = array_of(d.dipole_step);
    values["velocity_dipole_derivatives"] = moment_or_none(d.velocity_dipole);
    values["magnetic_dipole_derivatives"] = moment_or_none(d.magnetic_dipole);
    values["velocity_quadrupole_derivatives"] = moment_or_none(d.velocity_quadrupole);
    values["forces"] = set.has_forces ? py::object(array_of(set.jobs.front().forces)) : py::none();
    values["force_constants"] = table_or_none(of.force_constants);
    values["force_constants_asymmetry"] = of.asymmetry;
    values["force_step_error"] = d.force_step_error;
    values["stationary"] = set.has_forces ? py::cast(of.stationary()) : py::none();
    values["modes"] = modes_of(of);
    values["excitation"] = excitation_of(of);
    values["near_state"] = near_state_of(of);
    values["surroundings"] = texts_of(of.surroundings);
    values["dipole_rules"] = rules_of(of.dipole_rules);
    values["force_rules"] = rules_of(of.force_rules);
    values["velocity_rules"] = rules_of(of.velocity_rules);
    values["magnetic_rules"] = rules_of(of.magnetic_rules);
    values["flips"] = names_of_jobs(of, std::span(of.suspects.flips));
    values["unsound"] = of.suspects.unsound;
    values["unseen"] = names_of_jobs(of, std::span(of.signs.unseen));
    values["unseen_error"] = of.signs.largest_error;
    values["reference_unseen"] = of.signs.reference_unseen;
    values["as_good"] = names_of_jobs(of, std::span(of.signs.as_good));
    values["findings"] = findings_of(of, sgn::finding::whole_set);
    values["verdict"] = text_of(verdict_of(of));
    values["fine"] = of.fine() && from.made.clear;
    values["notes"] = texts_of(from.notes);
    values["found_signs"] = found_signs_of(from);
    return values;
}

/// What a set is made of must not be lost, nor what is read for an output.
void require_no_input(const set_report& of, const std::string& file,
                      const std::optional<std::string>& its_template = {}) {
    for (const std::string& input : of.inputs) {
        if (!sgn::is_same_file(input, file)) continue;
        throw flib::io_error(file, 0, "is not written: the set was made of it");
    }
    if (its_template && sgn::is_same_file(*its_template, file)) {
        throw flib::io_error(file, 0, "is not written: it is the template");
    }
}

/// Nor what others wrote, unless it is asked for; result files cannot be made again from what is
/// here.
void require_replaceable(const std::string& file, sgn::output_kind kind, bool overwrite) {
    const sgn::occupant old = sgn::occupant_of(file);
    if (old.is_file && old.kind == kind) return;
    if (old.kind == sgn::output_kind::result_file) {
        throw flib::io_error(file, 0, "is not written: it is a result file");
    }
    if (!old.is_file || overwrite) return;
    throw flib::io_error(file, 0,
                         "is there and is not " + std::string(name_of(kind)) +
                             " that stigruz wrote: overwrite=True writes over it");
}

std::optional<std::string> template_from(const py::object& file) {
    if (file.is_none()) return {};
    return path_from(file);
}

void write_fchk(const set_report& of, const py::object& file, const py::object& from,
                bool overwrite) {
    const std::string name = path_from(file);
    const std::optional<std::string> its_template = template_from(from);
    without_lock([&] {
        require_no_input(of, name, its_template);
        require_replaceable(name, sgn::output_kind::checkpoint, overwrite);
        const sgn::report& report = of.made.is;
        flib::replace_file(name, its_template
                                     ? checkpoint_of(report.set, report.derivatives, *its_template)
                                     : checkpoint_of(report.set, report.derivatives));
    });
}

/// The checkpoint that tells the energy of the reference.
std::string checkpoint_with_energy(const set_report& of,
                                   const std::optional<std::string>& its_template) {
    if (its_template) return *its_template;
    if (of.reference.empty()) {
        throw flib::run_error("arrays tell no energy: name the reference's checkpoint as template");
    }
    std::string beside = sgn::file_beside(of.reference, ".fchk");
    if (std::error_code ignored; std::filesystem::exists(beside, ignored)) return beside;
    throw flib::run_error("there is no " + flib::printable(beside) +
                          ", which would tell the energy: name another one as template");
}

py::list write_fcc(const set_report& of, const py::object& name, const py::object& from,
                   bool overwrite) {
    const std::string family = path_from(name);
    const std::optional<std::string> its_template = template_from(from);
    if (family.empty() || family.ends_with('/')) {
        throw flib::run_error("a name is needed, of which three files get theirs");
    }
    std::vector<std::string> written;
    without_lock([&] {
        const sgn::report& report = of.made.is;
        const std::string checkpoint = checkpoint_with_energy(of, its_template);
        const auto files = fcc_files_of(family, report.set, report.derivatives,
                                        energy_of_checkpoint(checkpoint, report.set));
        for (const sgn::fcc_file& each : files) {
            require_no_input(of, each.name, checkpoint);
            require_replaceable(each.name, sgn::output_kind::vibronic, overwrite);
        }
        for (const sgn::fcc_file& each : files) {
            flib::replace_file(each.name, each.text);
            written.push_back(each.name);
        }
    });
    py::list names;
    for (const std::string& each : written) names.append(file_name(each));
    return names;
}

std::string page_of(const set_report& of) {
    return sgn::page::html_of(of.made.is, "stigruz " STIGRUZ_VERSION " (Python)");
}

std::unique_ptr<set_report> report_on_files(const py::object& reference, const py::object& files,
                                            const py::object& state, bool sum_rules,
                                            const py::object& progress) {
    sgn::set_files wanted{path_from(reference), paths_from(files)};
    wanted.sum_rules = sum_rules;
    wanted.find = sgn::files_beside;
    if (!state.is_none()) wanted.state = whole_number_from(state, "state");
    if (wanted.state && !sgn::is_job(wanted.reference)) {
        throw flib::run_error("state is for jobs (NAME.fchk), not for result files");
    }
    auto made = std::make_unique<set_report>();
    made->reference = wanted.reference;
    std::vector<std::string> names = wanted.files;
    names.push_back(wanted.reference);
    made->inputs = files_read_for(names, wanted.find);
    const interruption interrupted(progress);
    without_lock([&] {
        made->made = sgn::report_on(
            wanted, {.progress = [&](std::size_t step, std::string_view) { interrupted.at(step); },
                     .note = [&](const std::string& line) { made->notes.push_back(line); }});
    });
    return made;
}

/// The symbol of an element that is given by symbol or number.
std::string symbol_from(const py::handle& symbol) {
    if (py::isinstance<py::str>(symbol)) return symbol.cast<std::string>();
    const std::int32_t number = whole_number_from(symbol, "an atomic number");
    if (number >= 1 && number <= flib::last_atomic_number) {
        return std::string(flib::element_symbol(number));
    }
    throw flib::run_error("no element has the number " + std::to_string(number));
}

/// Rows `from` and following of (any, 3).
std::vector<sgn::vec3> triples(const numbers& of, std::size_t from, std::size_t count) {
    std::vector<sgn::vec3> rows;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = 3 * (from + i);
        rows.push_back({of.values[at], of.values[at + 1], of.values[at + 2]});
    }
    return rows;
}

std::optional<int> decimals_from(const py::object& of) {
    if (of.is_none()) return {};
    return whole_number_from(of, "a number of decimals");
}

std::unique_ptr<set_report> report_on_arrays(
    const py::object& symbols, const py::object& coordinates, const py::object& dipoles,
    const py::object& forces, const py::object& masses, const py::object& names,
    const py::object& dipole_decimals, const py::object& force_decimals,
    const py::object& coordinate_decimals, bool sum_rules, bool find) {
    if (py::isinstance<py::str>(symbols)) {
        throw py::type_error("symbols must be a sequence: ['O', 'H', 'H']");
    }
    std::vector<std::string> elements;
    for (const py::handle each : py::iter(symbols)) elements.push_back(symbol_from(each));
    const auto atoms = static_cast<py::ssize_t>(elements.size());
    const numbers x = numbers_from(coordinates, "coordinates", {-1, atoms, 3});
    const py::ssize_t geometries = x.shape.front();
    if (geometries < 2) throw flib::run_error("coordinates must be of two geometries or more");
    const numbers moments = numbers_from(dipoles, "dipoles", {geometries, 3});
    std::optional<numbers> forces_on;
    if (!forces.is_none()) forces_on = numbers_from(forces, "forces", x.shape);
    sgn::array_facts facts;
    if (!masses.is_none()) facts.masses = numbers_from(masses, "masses", {atoms}).values;
    facts.dipole_decimals = decimals_from(dipole_decimals);
    facts.force_decimals = decimals_from(force_decimals);
    facts.coordinate_decimals = whole_number_from(coordinate_decimals, "coordinate_decimals");
    std::vector<sgn::job_arrays> jobs(static_cast<std::size_t>(geometries));
    if (!names.is_none()) {
        const std::vector<std::string> given = paths_from(names);
        if (given.size() != jobs.size())
            throw flib::run_error("names must be as many as geometries");
        for (std::size_t i = 0; i < jobs.size(); ++i) jobs[i].name = given[i];
    }
    return without_lock([&] {
        for (std::size_t i = 0; i < jobs.size(); ++i) {
            jobs[i].x = triples(x, i * elements.size(), elements.size());
            jobs[i].dipole = triples(moments, i, 1).front();
            if (forces_on) {
                jobs[i].forces = triples(*forces_on, i * elements.size(), elements.size());
            }
        }
        const sgn::displaced_set set =
            sgn::set_of_arrays(elements, jobs.front(), std::span(jobs).subspan(1), facts);
        auto made = std::make_unique<set_report>();
        if (find) made->signs = sgn::find_signs(set);
        made->made.is =
            find ? sgn::analyse(set, *made->signs, sum_rules) : sgn::analyse(set, sum_rules);
        return made;
    });
}

/// The inputs of a set, written into a directory, which must be there or have a parent.
py::dict displace(const py::object& input, const py::object& step, const py::object& atoms,
                  const py::object& directory, bool one_sided, bool overwrite) {
    using namespace sgn::inputs;
    const std::string file = path_from(input);
    const std::string into = path_from(directory);
    const auto text = py::str(step).cast<std::string>();
    std::vector<std::size_t> chosen;
    if (!atoms.is_none()) {
        for (const py::handle each : py::iter(atoms)) {
            const std::int32_t number = whole_number_from(each, "the number of an atom");
            chosen.push_back(static_cast<std::size_t>(std::max(number, 0)));
        }
    }
    std::vector<std::string> names;
    job_template job;
    without_lock([&] {
        job = read_input(file, into);
        const std::size_t natom = job.atoms.size();
        if (atoms.is_none()) chosen = usual_atoms(job);
        std::ranges::sort(chosen);
        const bool known = chosen.empty() || (chosen.front() >= 1 && chosen.back() <= natom);
        if (!known || std::ranges::adjacent_find(chosen) != chosen.end()) {
            throw flib::run_error("atoms must be numbers from 1 to " + std::to_string(natom) +
                                  ", each once");
        }
        const bool several = text.find(',') != std::string::npos;
        const std::vector<named_step> steps =
            several ? parse_steps(text, job.kind.unit) : parse_step(text, job.kind.unit);
        if (chosen.size() * steps.size() > (most_jobs - 1) / 6) {
            throw flib::run_error("more than " + std::to_string(most_jobs) +
                                  " files: choose the atoms to be displaced");
        }
        const auto jobs = jobs_of_set(name_of_set(file), chosen, natom, one_sided, steps);
        for (const displaced_job& each : jobs) names.push_back(each.name + ".gjf");
        write_file_set(
            into, names, [&](std::size_t i) { return input_of(job, jobs[i], steps); }, overwrite);
    });
    py::dict values;
    py::list files;
    for (const std::string& name : names) files.append(file_name(name));
    values["files"] = files;
    values["notes"] = texts_of(job.told);
    return values;
}

}  // namespace

void add_sets(py::module_& module) {
    const py::class_<set_report> report(module, "Report", "What is known of a set.");
    forbid_new(report);
    module.def("report_on_files", report_on_files, py::arg("reference"), py::arg("files"),
               py::arg("state"), py::arg("sum_rules"), py::arg("progress"));
    module.def("report_on_arrays", report_on_arrays, py::arg("symbols"), py::arg("coordinates"),
               py::arg("dipoles"), py::arg("forces"), py::arg("masses"), py::arg("names"),
               py::arg("dipole_decimals"), py::arg("force_decimals"),
               py::arg("coordinate_decimals"), py::arg("sum_rules"), py::arg("find"));
    module.def(
        "report_values", [](const set_report& of) { return values_of(of); }, py::arg("report"));
    module.def("write_fchk", write_fchk, py::arg("report"), py::arg("file"), py::arg("template"),
               py::arg("overwrite"));
    module.def("write_fcc", write_fcc, py::arg("report"), py::arg("name"), py::arg("template"),
               py::arg("overwrite"));
    module.def(
        "html",
        [](const set_report& of) { return text_of(without_lock([&] { return page_of(of); })); },
        py::arg("report"));
    module.def(
        "write_html",
        [](const set_report& of, const py::object& file, bool overwrite) {
            const std::string name = path_from(file);
            without_lock([&] {
                require_no_input(of, name);
                require_replaceable(name, sgn::output_kind::page, overwrite);
                flib::replace_file(name, page_of(of));
            });
        },
        py::arg("report"), py::arg("file"), py::arg("overwrite"));
    module.def("displace", displace, py::arg("input"), py::arg("step"), py::arg("atoms"),
               py::arg("directory"), py::arg("one_sided"), py::arg("overwrite"));
}

}  // namespace stigruz_python
