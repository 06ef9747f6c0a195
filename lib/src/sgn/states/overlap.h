// How much the states of two jobs have in common.
#pragma once

#include <memory>
#include <vector>

#include "sgn/job/job.h"

namespace sgn {

/// A row per state of the reference, in it the overlap with each root of a job.
using overlap_rows = std::vector<std::vector<double>>;

/// The states of the reference, with which every job is compared.
///
/// The transition density of root t of a job, in the orbitals of the reference and the metric of
/// its basis functions, is A_v X1_t A_o^T: X1 the amplitudes (component 1, ma x mi), A = C0^-1 C1
/// with the orbitals of both jobs as columns, or (C0^T C0)^-1 C0^T C1 where there are fewer
/// orbitals than basis functions, A_v and A_o its columns of active virtual and active occupied
/// orbitals. Its overlap with state s of the reference is
///
///   O(s, t) = sum over a, i of X0_s(a, i) (A_vv X1_t A_oo^T)(a, i) / (|X0_s| |A_v X1_t A_o^T|),
///
/// where A_vv and A_oo have the rows of the reference's active orbitals only. The phases of
/// orbitals cancel; 1 or -1 is the same state, and no magnitude is above 1.
class overlap_reference {
  public:
    /// Factorises the orbitals of the reference, once for all jobs, and keeps nothing of it.
    /// Throws flib::run_error if they are linearly dependent.
    explicit overlap_reference(const job& reference);
    ~overlap_reference();
    overlap_reference(overlap_reference&&) noexcept;

    /// The overlaps with all states of a job of the same sizes. Throws flib::run_error if its
    /// orbitals are linearly dependent.
    overlap_rows overlaps(const job& now) const;

  private:
    struct factorised;
    std::unique_ptr<const factorised> reference_;
};

}  // namespace sgn
