#include "support/job.h"

#include <cmath>
#include <cstdio>

#include "support/support.h"

namespace support {
namespace {

void add(std::string& text, const char* line) {
    text.append(line) += '\n';
}

/// A line as printf would print it.
template <class... Values>
void add(std::string& text, const char* format, Values... values) {
    char line[256];
    std::snprintf(line, sizeof line, format, values...);
    add(text, static_cast<const char*>(line));
}

std::string rows_of(const std::vector<double>& numbers, const char* format, int per_line) {
    std::string text;
    int printed = 0;
    for (const double number : numbers) {
        add(text, format, number);
        if (++printed % per_line != 0) text.pop_back();
    }
    if (printed % per_line != 0) text += '\n';
    return text;
}

/// Random numbers that `digits` decimals hold exactly.
double rounded(std::mt19937_64& random, double digits) {
    std::uniform_real_distribution<double> range(-1, 1);
    return std::round(range(random) * std::pow(10, digits)) / std::pow(10, digits);
}

}  // namespace

job random_job(std::mt19937_64& random, std::int32_t natom, std::int32_t nfc, std::int32_t mi,
               std::int32_t ma, std::int32_t nfv, std::int32_t mci) {
    job made{nfc, mi, ma, nfv, mci};
    const auto fill = [&](auto& numbers, double digits) {
        for (double& number : numbers) number = rounded(random, digits);
    };
    for (std::int32_t i = 0; i < natom; ++i) {
        made.nat.push_back(1);
        fill(made.x.emplace_back(), 6);
        fill(made.force.emplace_back(), 9);
    }
    fill(made.tdip, 4);
    made.moc.resize(static_cast<std::size_t>(made.nbasis() * made.nbasis()));
    fill(made.moc, 8);
    made.xpy.resize(static_cast<std::size_t>(ma * mi * 2 * mci));
    fill(made.xpy, 8);
    return made;
}

std::string log_text(const job& what, const writing& how) {
    const auto& [nfc, mi, ma, nfv, mci, nat, x, force, tdip, moc, xpy] = what;
    const std::size_t natom = nat.size();
    const std::int32_t nae = nfc + mi;
    std::string log;
    add(log, " Entering Gaussian System, Link 0=g16");
    add(log, " ******************************************");
    add(log, " Gaussian 16:  ES64L-G16RevA.03 25-Dec-2016");
    add(log, " ******************************************");
    add(log, " NAtoms=%7zu NQM=%9zu NQMF=       0 NMMI=      0 NMMIF=      0", natom, natom);
    add(log, "                         Standard orientation:");
    add(log, " ---------------------------------------------------------------------");
    add(log, " Center     Atomic      Atomic             Coordinates (Angstroms)");
    add(log, " Number     Number       Type             X           Y           Z");
    add(log, " ---------------------------------------------------------------------");
    for (std::size_t i = 0; i < natom; ++i) {
        add(log, "%7zu%11d           0    %12.6f%12.6f%12.6f", i + 1, nat[i], x[i][0], x[i][1],
            x[i][2]);
    }
    add(log, " ---------------------------------------------------------------------");
    add(log, " NBasis=%6d RedAO= T EigKep=  2.41D-02  NBF=%6d", what.nbasis(), what.nbasis());
    add(log, " NBasis=%6d NAE=%6d NBE=%6d NFC=%6d NFV=%6d", what.nbasis(), nae, nae, nfc, nfv);
    add(log, " NROrb=%7d NOA=%6d NOB=%6d NVA=%6d NVB=%6d", mi + ma, mi, mi, ma, ma);
    add(log, " Max sub-space:    40 roots to seek:%6d dimension of matrix:%13d", mci, mi * ma);
    add(log, " Ground to excited state transition electric dipole moments (Au):");
    add(log, "       state          X           Y           Z        Dip. S.      Osc.");
    add(log, "         1%16.4f%12.4f%12.4f      0.2867      0.0655", tdip[0], tdip[1], tdip[2]);
    add(log, " Center     Atomic                   Forces (Hartrees/Bohr)");
    add(log, " Number     Number              X              Y              Z");
    add(log, " -------------------------------------------------------------------");
    for (std::size_t i = 0; i < natom; ++i) {
        const auto& [along_x, along_y, along_z] = force[i];
        add(log, "%7zu%9d     %15.9f%15.9f%15.9f", i + 1, nat[i], along_x, along_y, along_z);
    }
    add(log, " Normal termination of Gaussian 16 at Thu Jan  1 00:00:00 2026.");
    return replaced(log, "\n", how.end_of_line);
}

std::string checkpoint_text(const job& what, const writing& how) {
    const std::int32_t nae = what.nfc + what.mi;
    std::string checkpoint;
    add(checkpoint, "made up");
    add(checkpoint, "Number of atoms                            I      %11zu", what.nat.size());
    add(checkpoint, "Number of alpha electrons                  I      %11d", nae);
    add(checkpoint, "Number of beta electrons                   I      %11d", nae);
    add(checkpoint, "Number of basis functions                  I      %11d", what.nbasis());
    add(checkpoint, "Number of independent functions            I      %11d", what.nbasis());
    add(checkpoint, "Alpha MO coefficients                      R   N=%12zu", what.moc.size());
    checkpoint += rows_of(what.moc, "%16.8E", how.per_line);
    add(checkpoint, "Beta MO coefficients                       R   N=%12d", 0);
    return replaced(checkpoint, "\n", how.end_of_line);
}

std::string dump_text(const job& what, const writing& how) {
    std::vector<double> values(static_cast<std::size_t>(what.mci), 0.25);
    values.insert(values.end(), what.xpy.begin(), what.xpy.end());
    std::string dump;
    add(dump, " dumping /fiocom/, unit = 1 NFiles =     1 SizExt =    524288 WInBlk =       512");
    add(dump, " Dump of file   635 length%11zu (read left to right):", values.size());
    dump += replaced(rows_of(values, "%22.12E", how.per_line), "E", {&how.dump_exponent, 1});
    return replaced(dump, "\n", how.end_of_line);
}

void write_job(const std::filesystem::path& directory, std::string_view name, const job& what,
               const writing& how) {
    const std::filesystem::path job = directory / name;
    write_file(job.string() + ".log", log_text(what, how));
    write_file(job.string() + ".fchk", checkpoint_text(what, how));
    write_file(job.string() + ".cis", dump_text(what, how));
}

}  // namespace support
