#include "inputs.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>
#include <string_view>
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
        << formatted(size.high_layer > 0
                         ? " #p oniom(cis(nstates=%d,root=1)/6-31+g(d):uff) nosymm force\n"
                         : " #p cis(nstates=%d,root=1)/6-31+g(d) nosymm force\n",
                     size.states)
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

constexpr double ground_state_energy = -76.0160410172;

double excitation_energy(std::int32_t root) {
    return 0.3 + 0.01 * root;
}

/// Of a state, as log and checkpoint list them: dipole, velocity dipole and magnetic dipole, then
/// the velocity quadrupole. The log's four decimals hold them exactly.
std::array<double, 15> transition_moments(std::int32_t state) {
    std::array<double, 15> moments{};
    int k = 3;
    for (double& moment : moments) moment = 1e-4 * ((state * k++ * 7919) % 10000 - 5000);
    return moments;
}

std::string excited_states(const job_size& size) {
    std::string text = formatted(
        " NBasis=%6d NAE=%6d NBE=%6d NFC=     1 NFV=     0\n"
        " NROrb=%7d NOA=%6d NOB=%6d NVA=%6d NVB=%6d\n"
        " Max sub-space:%6d roots to seek:%6d dimension of matrix:%13lld\n",
        size.nbasis, size.occupied + 1, size.occupied + 1, size.nbasis - 1, size.occupied,
        size.occupied, size.virtuals(), size.virtuals(), 10 * size.roots, size.roots,
        static_cast<long long>(2 * size.amplitudes()));
    struct table {
        const char* name;
        std::size_t first;
        std::size_t count;
        const char* heading;
    };
    constexpr const char* xyz = "       state          X           Y           Z";
    constexpr const char* strengths = "        Dip. S.      Osc.";
    for (const auto& [name, first, count, heading] :
         {table{"electric dipole", 0, 3, xyz}, table{"velocity dipole", 3, 3, xyz},
          table{"magnetic dipole", 6, 3, xyz},
          table{"velocity quadrupole", 9, 6,
                "       state          XX          YY          ZZ          XY          XZ          "
                "YZ"}}) {
        text += formatted(" Ground to excited state transition %s moments (Au):\n%s%s\n", name,
                          heading, first < 6 ? strengths : "");
        for (std::int32_t state = 1; state <= size.states; ++state) {
            const auto moments = transition_moments(state);
            text += formatted("%10d    ", state);
            double square = 0;
            for (std::size_t k = first; k < first + count; ++k) {
                text += formatted("%12.4f", moments[k]);
                square += moments[k] * moments[k];
            }
            const double energy = excitation_energy(state);
            const double factor = 2.0 / 3 * (first == 0 ? energy : 1 / energy);
            if (first < 6) text += formatted("%12.4f%12.4f", square, factor * square);
            text += "\n";
        }
    }
    text += " \n Excitation energies and oscillator strengths:\n";
    for (std::int32_t state = 1; state <= size.states; ++state) {
        const double volts = 27.211386 * excitation_energy(state);
        text += formatted(
            " \n Excited State%4d:      Singlet-A    %8.4f eV %7.2f nm  f=0.0655  <S**2>=0.000\n",
            state, volts, 1239.84198 / volts);
        text += formatted("%8d -> %2d        -0.67508\n", size.occupied + 1, size.occupied + 2);
        if (state != 1) continue;
        text += formatted(
            " This state for optimization and/or second-order correction.\n"
            " Total Energy, E(CIS/TDA) = %15.9f\n",
            ground_state_energy + excitation_energy(state));
    }
    return text;
}

/// The log's tables in the digits of a checkpoint.
std::string state_values(const job_size& size) {
    std::string text = formatted("%-43sI%17d\n%-43sI%17d\n%-43sI   N=%12d\n", "ETran NETS", 20,
                                 "ETran NETV", 16 * size.states, "ETran scalars", 20);
    const int scalars[20] = {size.states, 16, 1, 10, 1};
    for (std::size_t i = 0; i < std::size(scalars); ++i) {
        text += formatted("%12d%s", scalars[i], i % 6 == 5 || i == 19 ? "\n" : "");
    }
    for (const char* const name : {"ETran spin", "ETran sym"}) {
        text += formatted("%-43sI   N=%12d\n", name, size.states);
        for (std::int32_t state = 1; state <= size.states; ++state) {
            text += formatted("%12d%s", 0, state % 6 == 0 || state == size.states ? "\n" : "");
        }
    }
    text += formatted("%-43sR   N=%12d\n", "ETran state values", 16 * size.states);
    std::int32_t done = 0;
    const auto append = [&](double value) {
        ++done;
        text += formatted("%16.8E%s", value, done % 5 == 0 || done == 16 * size.states ? "\n" : "");
    };
    for (std::int32_t state = 1; state <= size.states; ++state) {
        append(ground_state_energy + excitation_energy(state));
        for (const double moment : transition_moments(state)) append(moment);
    }
    return text;
}

/// A number as a checkpoint ('E') or a dump ('D') has it: -9.95564210E-01, -0.99556421D+00. A dump
/// leaves the letter out before an exponent of three digits.
std::string field(char exponent_letter, double value) {
    if (exponent_letter == 'E') return formatted("%16.8E", value);
    const std::string printed = formatted("%.7E", std::abs(value));
    const int exponent = value == 0 ? 0 : std::atoi(printed.c_str() + printed.find('E') + 1) + 1;
    const std::string text = (value < 0 ? "-0." : "0.") + printed.substr(0, 1) +
                             printed.substr(2, 7) + (std::abs(exponent) > 99 ? "" : "D") +
                             formatted("%c%02d", exponent < 0 ? '-' : '+', std::abs(exponent));
    return formatted("%20s", text.c_str());
}

/// Fields, five to a line.
class line_printer {
  public:
    explicit line_printer(char exponent_letter) : is_dump_(exponent_letter == 'D') {}

    void append(std::string_view field) {
        if (count_ % 5 == 0 && is_dump_) text_ += ' ';
        text_ += field;
        if (++count_ % 5 == 0) text_ += '\n';
    }

    /// Writes what there is, if it is worth it.
    void write_some(std::ostream& file) {
        if (text_.size() > 2'000'000) file << std::exchange(text_, {});
    }

    std::string rest() {
        if (count_ % 5 != 0) text_ += '\n';
        return std::exchange(text_, {});
    }

  private:
    bool is_dump_;
    std::int64_t count_ = 0;
    std::string text_;
};

/// Numbers to be repeated without end, too many for a processor to learn their signs by heart.
std::vector<double> random_values(bool noisy) {
    std::mt19937_64 bits(1);
    std::normal_distribution<double> normal;
    std::vector<double> values(200'003);
    for (double& value : values) {
        value = normal(bits) * std::pow(10.0, -static_cast<double>(bits() % 4));
        if (noisy && bits() % 2 == 0) value *= 1e-16;
    }
    return values;
}

/// The list of records in which rwfdump says what a file holds, here a part of it.
std::string list_of_records(long long length) {
    struct record {
        int number;
        long long base;
        long long length;
    };
    const record records[] = {{635, 276992, length}, {670, 189440, 518}, {674, 181248, 68},
                              {685, 209920, 2704},   {694, 268800, 100}, {695, 195584, 152}};
    std::string rows[] = {" Number ", " Base   ", " End    ", " End1   ",
                          " Wr Pntr", " Rd Pntr", " Length "};
    for (const record& each : records) {
        const long long end = each.base + each.length;
        const long long values[] = {each.number, each.base, end,        (end + 511) / 512 * 512,
                                    each.base,   each.base, each.length};
        for (std::size_t i = 0; i < std::size(rows); ++i) {
            rows[i] += formatted("%14lld", values[i]);
        }
    }
    std::string list;
    for (const std::string& row : rows) list += row + "\n";
    return list;
}

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
    std::vector<std::string> fields;
    for (const double value : random_values(true)) fields.push_back(field('E', value));
    line_printer printer('E');
    for (std::int64_t i = 0; i < coefficients; ++i) {
        printer.append(fields[static_cast<std::size_t>(i) % fields.size()]);
        printer.write_some(file);
    }
    file << printer.rest() << state_values(size);
}

void write_dump(const job_size& size, const std::string& path) {
    std::ofstream file(path);
    const std::int64_t amplitudes = size.amplitudes();
    const std::int64_t length = 12 + size.roots * (4 * amplitudes + 1);
    file << " File job.chk\n\n\n"
            " dumping /fiocom/, unit = 1 NFiles =    79 SizExt =    524288 WInBlk =      8192\n"
            "                   defal = F LstWrd =     1344000 FType=2 FMxFil=10000\n\n"
         << list_of_records(length)
         << " NUsed=  68 NFree=  11 NWUsed=      313344 NWInt=       50346 NWEnd=      917306 "
            "NHiFil= 999\n"
         << formatted(" Dump of file   635 length%14lld (read left to right):\n",
                      static_cast<long long>(length));
    line_printer printer('D');
    // Integers, printed as if their bits were those of reals.
    for (const std::int64_t word :
         {std::int64_t{size.states}, 2 * amplitudes, std::int64_t{0}, amplitudes, std::int64_t{0},
          amplitudes, std::int64_t{size.roots}, std::int64_t{0}, std::int64_t{0}, std::int64_t{0},
          std::int64_t{0}, std::int64_t{0}}) {
        printer.append(field('D', std::bit_cast<double>(word)));
    }
    // Each root differs from the others by signs only, so that all have the same norm; half the
    // squares belong to either spin.
    std::vector<double> values = random_values(true);
    double squares = 0;
    for (std::int64_t k = 0; k < amplitudes; ++k) {
        const double value = values[static_cast<std::size_t>(k) % values.size()];
        squares += value * value;
    }
    std::vector<std::string> fields[2];
    for (const double value : values) {
        const double scaled = value * std::sqrt(0.5 / squares);
        fields[0].push_back(field('D', scaled));
        fields[1].push_back(field('D', -scaled));
    }
    const auto append_amplitudes = [&](std::int32_t root) {
        std::size_t at = 0;
        for (std::int64_t k = 0; k < amplitudes; ++k) {
            const int ones = std::popcount(static_cast<std::uint64_t>(root & k));
            printer.append(fields[ones % 2][at]);
            if (++at == values.size()) at = 0;
        }
        printer.write_some(file);
    };
    for (int part = 0; part < 2; ++part) {  // X+Y, X-Y: the same in a CIS job
        for (std::int32_t root = 0; root < size.roots; ++root) {
            for (int spin = 0; spin < 2; ++spin) append_amplitudes(root);
        }
    }
    for (std::int32_t root = 1; root <= size.roots; ++root) {
        printer.append(field('D', excitation_energy(root)));
    }
    file << printer.rest();
}

void write_job(const job_size& size, const std::string& stem) {
    write_log(size, stem + ".log");
    write_checkpoint(size, stem + ".fchk");
    write_dump(size, stem + ".cis");
}

std::string number_lines(char exponent_letter, std::int64_t count, bool noisy) {
    std::vector<std::string> fields;
    for (const double value : random_values(noisy)) fields.push_back(field(exponent_letter, value));
    line_printer printer(exponent_letter);
    for (std::int64_t i = 0; i < count; ++i) {
        printer.append(fields[static_cast<std::size_t>(i) % fields.size()]);
    }
    return printer.rest();
}

}  // namespace bench
