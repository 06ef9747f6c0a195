#include "inputs.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>
#include <utility>
#include <vector>

namespace bench {
namespace {

template <class... Values>
std::string formatted(const char* format, Values... values) {
    char text[512];
    const int length = std::snprintf(text, sizeof text, format, values...);
    return {text, static_cast<std::size_t>(length)};
}

bool is_high(const job_size& size, std::int32_t atom) {
    return atom <= size.high_layer;
}

int atomic_number(std::int32_t atom) {
    return atom % 3 == 1 ? 8 : 1;
}

double coordinate(std::int32_t atom, int k) {
    return 1e-6 * static_cast<double>((atom * (k + 7) * 7919) % 90000000) - 45;
}

void write_head(const job_size& size, std::ostream& log) {
    log << " Entering Gaussian System, Link 0=g16\n Initial command:\n \n"
           " ******************************************\n"
           " Gaussian 16:  ES64L-G16RevA.03 25-Dec-2016\n"
           "                 1-Jan-2026 \n"
           " ******************************************\n"
        << (size.high_layer > 0 ? " #p oniom(cis(nstates=4,root=1)/6-31+g(d):uff) nosymm force\n"
                                : " #p cis(nstates=4,root=1)/6-31+g(d) nosymm force\n")
        << " Symbolic Z-matrix:\n";
    if (size.high_layer > 0) {
        log << " Charge =  0 Multiplicity = 1 for low   level calculation on real  system.\n";
    } else {
        log << " Charge =  0 Multiplicity = 1\n";
    }
    for (std::int32_t i = 1; i <= size.natom; ++i) {
        log << formatted(" %-2s                    %2d %11.6f%11.6f%11.6f %s\n",
                         atomic_number(i) == 8 ? "O" : "H", is_high(size, i) ? 0 : -1,
                         coordinate(i, 0), coordinate(i, 1), coordinate(i, 2),
                         size.high_layer == 0 ? ""
                         : is_high(size, i)   ? "H"
                                              : "L");
    }
    log << formatted(" \n NAtoms=%7d NQM=%9d NQMF=       0 NMMI=      0 NMMIF=      0\n",
                     size.natom, size.natom)
        << "                    Isotopes and Nuclear Properties:\n\n";
    for (std::int32_t i = 1; i <= size.natom; i += 10) {
        log << " AtmWgt=";
        for (std::int32_t k = i; k < std::min(i + 10, size.natom + 1); ++k) {
            log << (atomic_number(k) == 8 ? "  15.9949146" : "   1.0078250");
        }
        log << "\n";
    }
}

std::string orientation(const job_size& size) {
    std::string table = "                          Standard orientation:\n" + std::string(69, '-') +
                        "\n Center     Atomic      Atomic             Coordinates (Angstroms)\n"
                        " Number     Number       Type             X           Y           Z\n " +
                        std::string(69, '-') + "\n";
    for (std::int32_t i = 1; i <= size.natom; ++i) {
        table += formatted("%7d%11d           0    %12.6f%12.6f%12.6f\n", i, atomic_number(i),
                           coordinate(i, 0), coordinate(i, 1), coordinate(i, 2));
    }
    return table + " " + std::string(69, '-') + "\n";
}

std::string scf(const job_size& size) {
    std::string text =
        formatted(" NBasis=%6d RedAO= T EigKep=  2.41D-02  NBF=%6d\n", size.nbasis, size.nbasis);
    for (int cycle = 1; cycle <= 12; ++cycle) {
        text += formatted(
            " Cycle %3d  Pass 1  IDiag  1:\n"
            " E= -76.0160410172%03d     Delta-E=       -0.000000012%03d Rises=F Damp=F\n"
            " DSYEVD-2 returned Info=      21 IAlg= 4 N=%6d NDim=%6d\n",
            cycle, cycle, cycle, size.nbasis, size.nbasis);
    }
    return text + " SCF Done:  E(RHF) =   -76.0160410172     A.U. after   12 cycles\n";
}

std::string forces(const job_size& size) {
    std::string table = size.high_layer > 0
                            ? " Center     Atomic             Integrated Forces (Hartrees/Bohr)\n"
                            : " Center     Atomic                   Forces (Hartrees/Bohr)\n";
    table += " Number     Number              X              Y              Z\n ";
    table += std::string(67, '-') + "\n";
    for (std::int32_t i = 1; i <= size.natom; ++i) {
        table +=
            formatted("%7d%9d    %15.9f%15.9f%15.9f\n", i, atomic_number(i),
                      1e-3 * coordinate(i, 2), 1e-3 * coordinate(i, 1), 1e-3 * coordinate(i, 0));
    }
    return table + " " + std::string(67, '-') + "\n";
}

std::string excited_states(const job_size& size) {
    std::string text = formatted(
        " NBasis=%6d NAE=%6d NBE=%6d NFC=     1 NFV=     0\n"
        " NROrb=%7d NOA=%6d NOB=%6d NVA=%6d NVB=%6d\n"
        " Max sub-space:    40 roots to seek:%6d dimension of matrix:           68\n",
        size.nbasis, size.occupied + 1, size.occupied + 1, size.nbasis - 1, size.occupied,
        size.occupied, size.virtuals(), size.virtuals(), size.roots);
    text +=
        " Ground to excited state transition electric dipole moments (Au):\n"
        "       state          X           Y           Z        Dip. S.      Osc.\n";
    for (std::int32_t root = 1; root <= size.roots; ++root) {
        text += formatted("%10d%16.4f%12.4f%12.4f%12.4f%12.4f\n", root, -0.5354, 0.25, 0.125,
                          0.2867, 0.0655);
    }
    return text;
}

/// Numbers in endless repetition, printed once.
class number_printer {
  public:
    number_printer(char exponent_letter, bool noisy) {
        std::mt19937_64 bits(1);
        std::normal_distribution<double> normal;
        for (std::string& text : texts_) {
            double value = normal(bits) * std::pow(10.0, -static_cast<double>(bits() % 4));
            if (noisy && bits() % 2 == 0) value *= 1e-16;
            char printed[40];
            const int decimals = exponent_letter == 'E' ? 8 : 11;
            std::snprintf(printed, sizeof printed, "%.*E", decimals, std::abs(value));
            text = printed;
            if (exponent_letter == 'D') {
                // 1.36409605669E-16 is printed as 0.136409605669D-15.
                const int exponent = std::atoi(text.c_str() + text.find('E') + 1) + 1;
                text = "0." + text.substr(0, 1) + text.substr(2, 11) +
                       formatted("D%c%02d", exponent < 0 ? '-' : '+', std::abs(exponent));
            }
            text = (value < 0 ? "-" : "") + text;
            const std::size_t width = exponent_letter == 'E' ? 16 : 22;
            text.insert(0, width - text.size(), ' ');
        }
    }

    /// Appends the `i`th number and, after every fifth, the end of the line.
    void append(std::int64_t i, std::string& to) const {
        to += texts_[static_cast<std::size_t>(i) % texts_.size()];
        if (i % 5 == 4) to += '\n';
    }

    void write(std::int64_t count, std::ostream& file) const {
        std::string piece;
        for (std::int64_t i = 0; i < count; ++i) {
            append(i, piece);
            if (i % 100000 == 0) file << std::exchange(piece, {});
        }
        file << piece << '\n';
    }

  private:
    // Too many for a processor to learn their signs by heart.
    std::vector<std::string> texts_ = std::vector<std::string>(200'003);
};

}  // namespace

void write_log(const job_size& size, const std::string& path) {
    std::ofstream log(path);
    write_head(size, log);
    const std::string step = orientation(size) + scf(size) + forces(size);
    const auto length = static_cast<std::int64_t>(step.size());
    for (std::int64_t written = 0; written < size.log_bytes; written += length) log << step;
    log << orientation(size) << scf(size) << excited_states(size) << forces(size)
        << " Normal termination of Gaussian 16 at Thu Jan  1 00:00:00 2026.\n";
}

void write_checkpoint(const job_size& size, const std::string& path) {
    std::ofstream file(path);
    const std::int64_t coefficients = std::int64_t{size.nbasis} * size.nbasis;
    file << "a job made for measuring\nForce     RCIS-FC                       6-31+G(d)\n"
         << formatted("%-43sI%17d\n", "Number of atoms", size.natom)
         << formatted("%-43sI%17d\n", "Number of alpha electrons", size.occupied + 1)
         << formatted("%-43sI%17d\n", "Number of beta electrons", size.occupied + 1)
         << formatted("%-43sI%17d\n", "Number of basis functions", size.nbasis)
         << formatted("%-43sI%17d\n", "Number of independent functions", size.nbasis)
         << formatted("%-43sR   N=%12lld\n", "Alpha MO coefficients",
                      static_cast<long long>(coefficients));
    number_printer('E', true).write(coefficients, file);
}

void write_dump(const job_size& size, const std::string& path) {
    std::ofstream file(path);
    const std::int64_t count =
        size.roots + std::int64_t{size.occupied} * size.virtuals() * 2 * size.roots;
    file << " dumping /fiocom/, unit = 1 NFiles =     1 SizExt =    524288 WInBlk =       512\n\n"
         << formatted(" Dump of file   635 length %10lld (read left to right):\n",
                      static_cast<long long>(count));
    number_printer('D', true).write(count, file);
}

void write_job(const job_size& size, const std::string& stem) {
    write_log(size, stem + ".log");
    write_checkpoint(size, stem + ".fchk");
    write_dump(size, stem + ".cis");
}

std::string number_lines(char exponent_letter, std::int64_t count, bool noisy) {
    const number_printer printer(exponent_letter, noisy);
    std::string lines;
    for (std::int64_t i = 0; i < count; ++i) printer.append(i, lines);
    return lines;
}

}  // namespace bench
