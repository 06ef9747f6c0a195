// Every reader on one damaged file.
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "flib/excited/qm_file_ci_xpy.h"
#include "flib/excited/qm_file_mo_coeff_nbasis_nbsuse.h"
#include "flib/excited/qm_file_nbasis_nbsuse.h"
#include "flib/excited/qm_file_nci.h"
#include "flib/excited/qm_file_state_moments.h"
#include "flib/io/unit.h"
#include "flib/qm_file/qm_file_coord.h"
#include "flib/qm_file/qm_file_force_tdip.h"
#include "flib/qm_file/qm_file_mass.h"
#include "flib/qm_file/qm_file_nat.h"
#include "flib/qm_file/qm_file_natom.h"
#include "flib/qm_file/qm_file_oniom.h"
#include "flib/qm_file/qm_file_type.h"
#include "flib/util/elements.h"
#include "flib/util/gjf.h"
#include "support.h"

namespace {

/// The routine must end as runs end, and leave no unit open.
template <class Routine>
void attempt(Routine&& routine) {
    fuzz::ending_of(routine);
    fuzz::require(!flib::unit_is_open(100), "a unit was left open");
}

void read_atoms(std::string_view file, std::int32_t natom) {
    const auto n = static_cast<std::size_t>(std::max(natom, 0));
    std::int32_t info = 0;
    std::vector<std::int32_t> nat(n);
    std::vector<double> mass(n);
    std::vector<double> vectors(3 * n);
    const flib::matrix_view<double> x(vectors.data(), 3, natom);
    std::vector<double> dipoles(9);
    const flib::matrix_view<double> tdip(dipoles.data(), 3, 3);
    attempt([&] {
        flib::qm_file_nat(file, natom, nat, info);
        std::vector<flib::fixed_text<2>> symbol(n);
        flib::nat_to_symbol(natom, nat, symbol);
    });
    attempt([&] { flib::qm_file_coord(file, natom, x, info); });
    attempt([&] { flib::qm_file_mass(file, natom, mass, info); });
    attempt([&] { flib::qm_file_force_tdip(file, natom, 1, x, tdip, info); });
    attempt([&] { flib::qm_file_force_tdip(file, natom, 3, x, tdip, info); });
}

void read_layers(std::string_view file) {
    std::int32_t info = 0;
    bool ifoniom = false;
    attempt([&] { flib::qm_file_ifoniom(file, ifoniom, info); });
    std::int32_t nqm = 0;
    std::int32_t nqmmm = 0;
    attempt([&] { flib::qm_file_natom_oniom_qm(file, nqm, nqmmm, info); });
    for (const std::int32_t room : {nqm, 1}) {
        std::vector<std::int32_t> idx(static_cast<std::size_t>(room));
        attempt([&] { flib::qm_file_oniom_index(file, room, nqmmm, idx, info); });
        for (const std::int32_t atom : idx) {
            fuzz::require(atom == 0 || (atom >= 1 && atom <= nqmmm),
                          "an index outside the whole system");
        }
    }
}

void read_basis(std::string_view file) {
    std::int32_t info = 0;
    std::int32_t na = 0;
    std::int32_t nb = 0;
    std::int32_t nbasis = 0;
    std::int32_t nbsuse = 0;
    // One branch takes a count from standard input.
    static const fuzz::memory_file input("nbsuse= 22\n");
    static const bool redirected = dup2(input.descriptor(), STDIN_FILENO) == STDIN_FILENO;
    fuzz::require(redirected && lseek(STDIN_FILENO, 0, SEEK_SET) == 0, "no standard input");
    attempt([&] { flib::qm_file_nbasis_nbsuse(file, na, nb, nbasis, nbsuse, info); });
    const std::int32_t n = nbasis < 1 || nbasis > 200 ? 3 : nbasis;
    std::vector<double> values(static_cast<std::size_t>(n * n));
    const flib::matrix_view<double> mo(values.data(), n, n);
    for (const std::int32_t columns : {n, nbsuse}) {
        attempt([&] { flib::qm_file_mo_coeff_nbasis_nbsuse(file, n, columns, mo, info); });
        if (nbsuse == n) break;
    }
}

void read_amplitudes(std::string_view file) {
    std::int32_t info = 0;
    std::int32_t ni = 0;
    std::int32_t nvirtual = 0;
    std::int32_t nci = 0;
    std::int32_t nae = 0;
    std::int32_t nfc = 0;
    std::int32_t nfv = 0;
    attempt([&] { flib::qm_file_nci(file, ni, nvirtual, nci, nae, nfc, nfv, info); });
    std::vector<double> xpy(2 * 2 * 2 * 2);
    attempt([&] { flib::qm_file_ci_xpy(file, 2, 2, 2, xpy, info); });
    attempt([&] { flib::qm_file_ci_xpy(file, 0, 2, INT32_MAX, xpy, info); });
    // By the layout that a dump tells; its numbers cannot be more than the file holds.
    attempt([&] {
        const auto layout = flib::qm_file_dump_layout(file);
        if (!layout) return;
        const std::int32_t roots = layout->roots;
        const std::int32_t amplitudes = layout->amplitudes;
        fuzz::require(layout->states <= roots && roots >= 1 && amplitudes >= 1,
                      "a layout of nothing");
        const std::size_t count = flib::xpy_count(1, amplitudes, roots);
        fuzz::require(count <= 4096, "a layout larger than the file");
        std::vector<double> plus(count);
        attempt([&] { flib::qm_file_ci_xpy(file, 1, amplitudes, roots, plus, info); });
        attempt([&] { flib::qm_file_ci_xmy(file, 1, amplitudes, roots, plus, info); });
        attempt([&] { flib::qm_file_ci_energy(file, roots, plus, info); });
    });
}

void read_moments(std::string_view file) {
    attempt([&] {
        const auto moments = flib::qm_file_state_moments(file);
        if (!moments) return;
        const auto states = static_cast<std::size_t>(moments->states);
        fuzz::require(moments->target >= 1 && moments->target <= moments->states &&
                          moments->spin.size() == states,
                      "a target state that is none");
        const auto are_whole = [](const flib::moment_rows& of, std::size_t rows) {
            return of.energy.size() == rows && of.dipole.size() == 3 * rows &&
                   of.velocity_dipole.size() == 3 * rows && of.magnetic_dipole.size() == 3 * rows &&
                   of.velocity_quadrupole.size() == 6 * rows;
        };
        fuzz::require(are_whole(moments->of_states, states), "moments that are not of all states");
        if (!moments->derivatives) return;
        const std::size_t rows = moments->derivatives->energy.size();
        fuzz::require(rows >= 3 && rows % 3 == 0 && are_whole(*moments->derivatives, rows),
                      "derivatives that are not by the coordinates of atoms");
    });
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned int seed) {
    return fuzz::mutate_text(data, size, most, seed);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static fuzz::memory_file file;
    file.fill({reinterpret_cast<const char*>(data), size});
    const std::string& path = file.path();
    std::int32_t info = 0;
    flib::line_buffer type;
    flib::line_buffer version;
    attempt([&] { flib::qm_file_type(path, type, version, info); });
    read_amplitudes(path);
    attempt([&] {
        std::int32_t count = 0;
        flib::get_gjf_natom(path, count);
        fuzz::require(count >= 0, "a negative number of atom lines");
    });
    // The other readers begin with the type, and all leave a file of unknown type at that: one such
    // file in sixteen is enough.
    if (type.trimmed().empty() && size % 16 != 0) return 0;
    std::int32_t natom = 0;
    attempt([&] { flib::qm_file_natom(path, natom, info); });
    constexpr std::int32_t most_atoms = 1000;
    fuzz::require(natom >= 0 || info == 0, "a count from nowhere");
    // The count of the file itself, and now and then another one.
    if (natom > 0) read_atoms(path, std::min(natom, most_atoms));
    if (natom <= 0 || size % 4 == 0) read_atoms(path, 3);
    read_layers(path);
    read_basis(path);
    read_moments(path);
    return 0;
}
