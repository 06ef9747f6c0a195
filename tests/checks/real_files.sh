#!/usr/bin/env bash
# Real files, which the programs themselves wrote, read as a person reads them. They are not among
# the sources: they lie in the directory that REAL_FILES names or in ../shared/real beside the
# sources, and without them there is nothing to check.
set -euo pipefail
cd "$1"
qm_file=$2/tools/qm_file
[ -x "$qm_file" ] || exit 77
qm_file=$(realpath "$qm_file")
real=${REAL_FILES:-../shared/real}
[ -d "$real/more" ] || exit 77
cd "$real/more"

failed=0

# expect WHAT EXPECTED FOUND
expect() {
    if [ "$2" != "$3" ]; then
        echo "$1:" >&2
        diff <(echo "$2") <(echo "$3") >&2 || true
        failed=1
    fi
}

# high_rows FILE: the atoms whose rows end with the layer H, as awk reads them; of a log those below
# the charges.
high_rows() {
    sed 's/([^)]*)//' "$1" | awk -v log_file="$2" '
        log_file && /Multiplicity =/ && !done { inside = 1; next }
        !log_file && /^ *-?[0-9]+ +-?[0-9]+ / && NF % 2 == 0 && !inside && !done { inside = 1; next }
        inside && NF < 5 { inside = 0; done = 1 }
        inside { all++; if ($6 == "H") { high++; list = list " " all } }
        END { print high + 0 " of " all " atoms in the high layer:" list }'
}

for log in oniom/*.out oniom/*.log; do
    expect "layers of $log" "$(high_rows "$log" 1)" "$("$qm_file" oniom "$log")"
done
for input in oniom/*.gjf rwfdump/oniom.gjf; do
    expect "layers of $input" "$(high_rows "$input" '')" "$("$qm_file" oniom "$input")"
done
expect "layers of a checkpoint" "3 of 6 atoms in the high layer: 1 2 3" \
    "$("$qm_file" oniom rwfdump/oniom.fchk)"
# The log and the checkpoint are of two runs of one job: the lower states have the same energies, spins
# and strengths, but other signs and, at one energy, other directions.
# strengths TABLE LOG: sums of squares of its first twenty rows.
strengths() {
    awk -v table="$1" '
        index($0, "transition " table) { at = NR }
        at && NR > at + 1 && NR < at + 22 { printf "%.2f\n", $2 ^ 2 + $3 ^ 2 + $4 ^ 2 }' "$2"
}
co=../Gaussian/basicGaussian09/CO_TD_delta.log
co_checkpoint=../FChk/basicGaussian09/CO_TD_delta.fchk
expect "states of a checkpoint" \
    "$(sed -n 's/^ Excited State *\([0-9]*\): *\([A-Z]\)\([a-z]*\)-[^ ]* *\([0-9.]*\) eV.*/\1 \L\2\E\3 \4/p' "$co" | head -n 7)" \
    "$("$qm_file" "$co_checkpoint" | awk '/ eV / && $2 <= 7 { print $2, $3, $4 }')"
for moment in electric velocity magnetic; do
    expect "$moment dipoles of a checkpoint" "$(strengths "$moment dipole" "$co")" \
        "$("$qm_file" moments "$co_checkpoint" | awk -v moment="$moment" '
            $3 == moment && $4 == "dipole" && $2 <= 20 { printf "%.2f\n", $5 ^ 2 + $6 ^ 2 + $7 ^ 2 }')"
done
expect "states of an ONIOM job's checkpoint" "1 singlet -76.449816 0.000000 0.000000 0.266000" \
    "$("$qm_file" rwfdump/oniom.fchk | awk '$1 == "state" && $2 == 1 { $1 = ""; print substr($0, 2) }')"
expect "a checkpoint without orbitals" 1 \
    "$("$qm_file" rwfdump/oniom.fchk | grep -c '0 basis functions')"
expect "point charges" 1 "$("$qm_file" rwfdump/hm.fchk | tr -s ' \n' ' ' | grep -c 'atomic number: 4 5 6')"

# forces FILE HEADING ATOM...: rows of the last table below the heading.
forces() {
    local file=$1 heading=$2
    shift 2
    awk -v heading="$heading" -v atoms=" $* " '
        index($0, heading) { n = 0; inside = 1; next }
        inside && $1 ~ /^[0-9]+$/ && NF == 5 { row[$1] = $3 " " $4 " " $5; n = $1 }
        inside && n && /^ *---/ { inside = 0 }
        END { for (i = 1; i <= n; i++) if (index(atoms, " " i " ")) print row[i] }' "$file"
}
for file in oniom/ONIOM_QR_5hls_DFTMM_R1.out oniom/garleek_A_5_freq_UFF.out; do
    heading='  Forces (Hartrees/Bohr)'
    ! grep -q 'Integrated Forces' "$file" || heading='Integrated Forces (Hartrees/Bohr)'
    read -r -a atoms <<<"$("$qm_file" oniom "$file" | sed 's/.*: //')"
    expect "forces of $file" "$(forces "$file" "$heading" "${atoms[@]}")" \
        "$("$qm_file" force "$file" 2>/dev/null | awk '{ printf "%.9f %.9f %.9f\n", $2, $3, $4 }' || true)"
done

# geometry FILE: the last table of Angstrom coordinates, without symbols.
for file in gamess/*.out; do
    expect "geometry of $file" \
        "$(awk '/COORDINATES OF ALL ATOMS ARE/ { at = NR; n = 0 }
            at && NR > at + 2 && NF == 5 { row[++n] = $3 " " $4 " " $5 }
            at && NR > at + 2 && !NF { at = 0 }
            END { for (i = 1; i <= n; i++) print row[i] }' "$file")" \
        "$("$qm_file" --xyz "$file" 2>/dev/null | awk 'NR > 2 { print $2, $3, $4 }')"
done
expect "the count of a CIF" 1 "$("$qm_file" cif/LiFePO4.cif | grep -c 'tags and blank lines')"
# Dumps, and a run on a real job: with any phases of its orbitals it has this element.
expect "a dump of three states" "record 635: 3864 values; 3 states, 12 roots of 80 amplitudes per spin
3 singlet 0.500000, 0.500000" "$("$qm_file" dump rwfdump/635R.dat | head -n 1)
$("$qm_file" dump rwfdump/635R.dat | awk '$5 == "singlet" { n++; sums = $7 " " $8 } END { print n, "singlet", sums }')"
job=$(mktemp -d)
trap 'rm -rf "$job"' EXIT
cp ../gaussian_td/ch2o* "$job"
cd "$job"
stigruz=$(dirname "$qm_file")/stigruz
sgn_states=$(dirname "$qm_file")/sgn_states
"$stigruz" ch2o.fchk
expect "a run on a real job" "mci 40; 1 at 11 27: 1.3078459126E-01" \
    "$(awk '$1 == "mci" { mci = $3 } $1 == "Transden_sign" { sign = $3 } $1 == "tden_maxloc" { at = $3 " " $4 }
        $1 == "tden_maxval" { print "mci " mci "; " sign " at " at ": " $3 }' ch2o.sgn)"
# The log as printed has no line of roots to seek and no forces. Energies and spins are those of the
# log.
if [ -x "$sgn_states" ]; then
    for suffix in fchk cis; do cp "ch2o.$suffix" "ch2o_as_printed.$suffix"; done
    expect "states of a real job" \
        "$(sed -n 's/^ Excited State *\([0-9]*\): *\([A-Z]\)\([a-z]*\)-.* \([0-9.]*\) eV.*/\1 \L\2\E\3 \4/p' ch2o.log)" \
        "$("$sgn_states" ch2o_as_printed.fchk ch2o_as_printed.fchk | awk '$NF == "same" { print $2, $3, $7 }')"
fi

exit "$failed"
