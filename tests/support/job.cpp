#include "support/job.h"

#include <cmath>
#include <cstdio>

#include "support/support.h"

namespace support {
namespace {

/// Lines put together from printf formats.
class text_writer {
  public:
    explicit text_writer(const writing& how) : how_(how) {}

    template <class... Values>
    void line(const char* format, Values... values) {
        add(format, values...);
        text_ += how_.end_of_line;
    }

    /// Numbers with `digits` after the point, `per_line` in a row.
    void numbers(const std::vector<double>& values, const char* format, char exponent) {
        int in_row = 0;
        for (const double value : values) {
            const std::size_t from = text_.size();
            add(format, value);
            const std::size_t e = text_.find('E', from);
            if (e != std::string::npos) text_[e] = exponent;
            if (++in_row % how_.per_line == 0) text_ += how_.end_of_line;
        }
        if (in_row % how_.per_line != 0) text_ += how_.end_of_line;
    }

    std::string text() const { return text_; }

  private:
    template <class... Values>
    void add(const char* format, Values... values) {
        char buffer[256];
        const int length = std::snprintf(buffer, sizeof buffer, format, values...);
        text_.append(buffer, static_cast<std::size_t>(length));
    }
    void add(const char* text) { text_ += text; }

    const writing& how_;
    std::string text_;
};

/// Random numbers that `digits` decimals hold exactly.
double rounded(std::mt19937_64& random, double digits) {
    std::uniform_real_distribution<double> range(-1, 1);
    return std::round(range(random) * std::pow(10, digits)) / std::pow(10, digits);
}

}  // namespace

job random_job(std::mt19937_64& random, std::int32_t natom, std::int32_t nfc, std::int32_t mi,
               std::int32_t ma, std::int32_t nfv, std::int32_t mci) {
    job made{nfc, mi, ma, nfv, mci};
    const auto vector = [&](double digits) {
        return vector3{rounded(random, digits), rounded(random, digits), rounded(random, digits)};
    };
    for (std::int32_t i = 0; i < natom; ++i) {
        made.nat.push_back(1);
        made.x.push_back(vector(6));
        made.force.push_back(vector(9));
    }
    made.tdip = vector(4);
    const auto nbasis = static_cast<std::size_t>(made.nbasis());
    made.moc.resize(nbasis * nbasis);
    for (double& c : made.moc) c = rounded(random, 8);
    made.xpy.resize(static_cast<std::size_t>(ma) * static_cast<std::size_t>(mi) * 2 *
                    static_cast<std::size_t>(mci));
    for (double& amplitude : made.xpy) amplitude = rounded(random, 8);
    return made;
}

std::string log_text(const job& what, const writing& how) {
    const std::int32_t nae = what.nfc + what.mi;
    text_writer log(how);
    log.line(" Entering Gaussian System, Link 0=g16");
    log.line(" ******************************************");
    log.line(" Gaussian 16:  ES64L-G16RevA.03 25-Dec-2016");
    log.line(" ******************************************");
    log.line(" NAtoms=%7zu NQM=%9zu NQMF=       0 NMMI=      0 NMMIF=      0", what.nat.size(),
             what.nat.size());
    log.line("                         Standard orientation:");
    log.line(" ---------------------------------------------------------------------");
    log.line(" Center     Atomic      Atomic             Coordinates (Angstroms)");
    log.line(" Number     Number       Type             X           Y           Z");
    log.line(" ---------------------------------------------------------------------");
    for (std::size_t i = 0; i < what.nat.size(); ++i) {
        log.line("%7zu%11d           0    %12.6f%12.6f%12.6f", i + 1, what.nat[i], what.x[i][0],
                 what.x[i][1], what.x[i][2]);
    }
    log.line(" ---------------------------------------------------------------------");
    log.line(" NBasis=%6d RedAO= T EigKep=  2.41D-02  NBF=%6d", what.nbasis(), what.nbasis());
    log.line(" NBasis=%6d NAE=%6d NBE=%6d NFC=%6d NFV=%6d", what.nbasis(), nae, nae, what.nfc,
             what.nfv);
    log.line(" NROrb=%7d NOA=%6d NOB=%6d NVA=%6d NVB=%6d", what.mi + what.ma, what.mi, what.mi,
             what.ma, what.ma);
    log.line(" Max sub-space:    40 roots to seek:%6d dimension of matrix:%13d", what.mci,
             what.mi * what.ma);
    log.line(" Ground to excited state transition electric dipole moments (Au):");
    log.line("       state          X           Y           Z        Dip. S.      Osc.");
    log.line("%10d%16.4f%12.4f%12.4f      0.2867      0.0655", 1, what.tdip[0], what.tdip[1],
             what.tdip[2]);
    log.line(" Center     Atomic                   Forces (Hartrees/Bohr)");
    log.line(" Number     Number              X              Y              Z");
    log.line(" -------------------------------------------------------------------");
    for (std::size_t i = 0; i < what.nat.size(); ++i) {
        log.line("%7zu%9d     %15.9f%15.9f%15.9f", i + 1, what.nat[i], what.force[i][0],
                 what.force[i][1], what.force[i][2]);
    }
    log.line(" Normal termination of Gaussian 16 at Thu Jan  1 00:00:00 2026.");
    return log.text();
}

std::string checkpoint_text(const job& what, const writing& how) {
    const std::int32_t nae = what.nfc + what.mi;
    text_writer checkpoint(how);
    checkpoint.line("made up");
    checkpoint.line("Number of atoms                            I      %11zu", what.nat.size());
    checkpoint.line("Number of alpha electrons                  I      %11d", nae);
    checkpoint.line("Number of beta electrons                   I      %11d", nae);
    checkpoint.line("Number of basis functions                  I      %11d", what.nbasis());
    checkpoint.line("Number of independent functions            I      %11d", what.nbasis());
    checkpoint.line("Alpha MO coefficients                      R   N=%12zu", what.moc.size());
    checkpoint.numbers(what.moc, "%16.8E", 'E');
    checkpoint.line("Beta MO coefficients                       R   N=%12d", 0);
    return checkpoint.text();
}

std::string dump_text(const job& what, const writing& how) {
    text_writer dump(how);
    const std::size_t length = static_cast<std::size_t>(what.mci) + what.xpy.size();
    dump.line(" dumping /fiocom/, unit = 1 NFiles =     1 SizExt =    524288 WInBlk =       512");
    dump.line(" Dump of file   635 length%11zu (read left to right):", length);
    std::vector<double> values(static_cast<std::size_t>(what.mci), 0.25);
    values.insert(values.end(), what.xpy.begin(), what.xpy.end());
    dump.numbers(values, "%22.12E", how.dump_exponent);
    return dump.text();
}

void write_job(const std::filesystem::path& directory, std::string_view name, const job& what,
               const writing& how) {
    const auto path = [&](std::string_view suffix) {
        return directory / std::string(name).append(suffix);
    };
    write_file(path(".log"), log_text(what, how));
    write_file(path(".fchk"), checkpoint_text(what, how));
    write_file(path(".cis"), dump_text(what, how));
}

}  // namespace support
