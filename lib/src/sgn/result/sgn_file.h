// The layout of the result file, which is written and read back here.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "flib/text/fixed_text.h"
#include "flib/util/math.h"
#include "flib/util/matrix.h"

namespace sgn {

/// The parameter block: what a later run needs to know of its reference.
struct sgn_parameters {
    std::int32_t sign = 0;   ///< Transden_sign: 1, -1 or 0
    std::int32_t natom = 0;  ///< atoms treated; of an ONIOM job, those of the high layer
    std::int32_t nmo = 0;    ///< basis functions
    std::int32_t mi = 0;     ///< active occupied orbitals
    std::int32_t ma = 0;     ///< active virtual orbitals
    std::int32_t mci = 0;    ///< roots in the amplitude dump
    std::int32_t nfc = 0;    ///< frozen core orbitals
    std::int32_t nfv = 0;    ///< frozen virtual orbitals
    flib::element_location tden_maxloc{0, 0};  ///< row and column of the chosen density element
    double tden_maxval = 0;                    ///< this job's own value of it, as it is
};

/// A count of the parameter block and the name of its record.
struct named_count {
    std::string_view name;
    std::int32_t sgn_parameters::*value;
};

/// The counts, in the order of their records.
inline constexpr named_count sgn_counts[] = {
    {"natom", &sgn_parameters::natom}, {"nmo", &sgn_parameters::nmo}, {"mi", &sgn_parameters::mi},
    {"ma", &sgn_parameters::ma},       {"mci", &sgn_parameters::mci}, {"NFC", &sgn_parameters::nfc},
    {"NFV", &sgn_parameters::nfv},
};

/// Element symbols as the geometry table shows them.
using report_symbol = flib::fixed_text<2>;

/// The body: geometry, corrected transition dipole and forces of a job.
struct sgn_body {
    std::span<const report_symbol> symbol;
    std::span<const std::int32_t> nat;
    std::span<const double> mass;            ///< u
    flib::matrix_view<const double> x;       ///< 3 x natom, Bohr; written in Angstrom
    std::array<double, 3> corrected_tdip{};  ///< atomic units
    flib::matrix_view<const double> frc;     ///< 3 x natom, Hartree/Bohr
};

/// A result file read back.
struct sgn_contents {
    sgn_parameters parameters;
    std::vector<report_symbol> symbol;
    std::vector<std::int32_t> nat;
    std::vector<double> mass;                ///< u
    std::vector<std::array<double, 3>> x;    ///< Angstrom, as written
    std::array<double, 3> corrected_tdip{};  ///< atomic units
    std::vector<std::array<double, 3>> frc;  ///< Hartree/Bohr
};

/// Writes the eleven records of the parameter block to the output unit `fid`.
void write_sgn_parameters(std::int32_t fid, const sgn_parameters& parameters);

/// Writes the records after the parameter block. Throws flib::run_error, and writes nothing, unless
/// all arrays are of as many atoms as `nat`.
void write_sgn_body(std::int32_t fid, const sgn_body& body);

/// Reads the parameter block of an open result file, without its sign. The records are searched for
/// in their order. Throws flib::stop_run (status 1) if one is missing or out of order, and
/// flib::io_error if a value cannot be read.
sgn_parameters read_sgn_parameters(std::int32_t fid);

/// Whether the file `fname` begins as a result file does. Throws flib::io_error if it cannot be
/// opened.
bool is_sgn_file(std::string_view fname);

/// Reads the whole of the result file `fname`. Throws flib::io_error if it cannot be opened, is
/// not a result file, or is damaged: a record is missing, cut short or out of its place, or holds
/// something else than its values.
sgn_contents read_sgn_file(std::string_view fname);

}  // namespace sgn
