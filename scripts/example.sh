#!/usr/bin/env bash
# Builds the tool, runs the bundled example (water, 18 displaced geometries) and shows the transition
# dipole of each geometry as its job printed it and as the result file gives it: example.sh [-j N]
set -euo pipefail
cd "$(dirname "$0")/.."

jobs=$(nproc)
if [ "${1:-}" = -j ]; then
    jobs=${2:?-j needs a number}
    shift 2
fi

scripts/setup.sh build
scripts/build.sh -j "$jobs" build stigruz -DSTIGRUZ_TESTS=OFF

stigruz=$PWD/build/tools/stigruz
jobs=$PWD/examples/water
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
ln -s "$jobs"/h2o_* .

# The x component of state 1's transition dipole, as the log has it last.
printed_dipole() {
    awk '/Ground to excited state transition electric dipole/ { getline; getline; x = $2 }
         END { print x }' "$1"
}

corrected_dipole() { awk '/Corrected_tdip/ { printf "%.4f", $3 }' "$1"; }

show() {
    printf '%-10s %12s %8s %12s\n' "$1" "$(printed_dipole "$1.log")" \
        "$(awk '/Transden_sign/ { print $3 }' "$1.sgn")" "$(corrected_dipole "$1.sgn")"
}

echo
echo "Transition dipole of the first excited state of water, x component (a.u.)"
printf '%-10s %12s %8s %12s\n' geometry "as printed" sign corrected
"$stigruz" h2o_ref.fchk
show h2o_ref
for checkpoint in h2o_0*.fchk; do
    job=${checkpoint%.fchk}
    "$stigruz" "$checkpoint" h2o_ref.sgn
    show "$job"
done
echo
echo "The printed sign jumps from job to job; the corrected dipole can be differentiated."
echo
echo "The tool is $stigruz"
echo "scripts/install.sh installs it, and with it the tools that make the inputs of a set"
echo "(sgn_displace), check its signs (sgn_check) and make the derivatives (sgn_derive)."
