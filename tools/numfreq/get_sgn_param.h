// The parameters of a run.
#pragma once

#include <cstdint>
#include <string_view>

#include "flib/util/math.h"

namespace numfreq {

/// Supplies the run's parameters. Of a mapped run (`ref` true) they are read from the reference's
/// result file `finp`; the number of independent functions is not kept there, so `nbsuse` is then
/// `nbasis`. Of a reference run they are computed from the current job: `finp` is the name of its
/// checkpoint, whose base name gives the log and the checkpoint in the working directory that are
/// read; `tden_maxloc` is (0, 0) and `tden_maxval` 0.
///
/// Ends as sgn::read_sgn_parameters() and the readers do.
void get_sgn_param(bool ref, std::string_view finp, std::int32_t& natom, std::int32_t& nbasis,
                   std::int32_t& nbsuse, std::int32_t& mi, std::int32_t& ma, std::int32_t& mci,
                   std::int32_t& nfc, std::int32_t& nfv, flib::element_location& tden_maxloc,
                   double& tden_maxval);

}  // namespace numfreq
