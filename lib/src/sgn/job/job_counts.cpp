#include "sgn/job/job_counts.h"

#include "flib/excited/qm_file_nbasis_nbsuse.h"
#include "flib/excited/qm_file_nci.h"
#include "flib/qm_file/qm_file_natom.h"
#include "flib/qm_file/qm_file_oniom.h"

namespace sgn {
namespace {

/// All but the excitation space.
job_counts count_basis(std::string_view flog, std::string_view ffch) {
    job_counts counts;
    bool ifoniom = false;
    std::int32_t info = 0;
    flib::qm_file_ifoniom(flog, ifoniom, info);
    if (ifoniom) {
        std::int32_t nqmmm = 0;
        flib::qm_file_natom_oniom_qm(flog, counts.natom, nqmmm, info);
    } else {
        flib::qm_file_natom(ffch, counts.natom, info);
    }
    std::int32_t na = 0;
    std::int32_t nb = 0;
    flib::qm_file_nbasis_nbsuse(ffch, na, nb, counts.nbasis, counts.nbsuse, info);
    return counts;
}

}  // namespace

job_counts count_job(std::string_view flog, std::string_view ffch) {
    job_counts counts = count_basis(flog, ffch);
    std::int32_t nae = 0;
    std::int32_t info = 0;
    flib::qm_file_nci(flog, counts.mi, counts.ma, counts.mci, nae, counts.nfc, counts.nfv, info);
    return counts;
}

job_counts count_orbitals(std::string_view flog, std::string_view ffch) {
    job_counts counts = count_basis(flog, ffch);
    const flib::excitation_space space = flib::qm_file_excitation_space(flog);
    counts.mi = space.ni;
    counts.ma = space.na;
    counts.mci = space.nci.value_or(0);
    counts.nfc = space.nfc;
    counts.nfv = space.nfv;
    return counts;
}

}  // namespace sgn
