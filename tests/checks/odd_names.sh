#!/usr/bin/env bash
# No control character of a name, an option or a file reaches a terminal: every tool, with an escape
# (~ in the table below) in all that it is given. (CSV is no text for people: names stand there as they
# are.)
set -euo pipefail
source=$1
build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
PATH=$build/tools:$PATH
cd "$work"
escape=$'\e'

# A job ~, its set, and copies that are wrong in one way each.
for file in "$source"/examples/water/h2o_0*; do cp "$file" "${escape}${file##*/h2o}"; done
for suffix in fchk log cis; do
    cp "$source/examples/water/h2o_ref.$suffix" "$escape.$suffix"
    head -n 40 "$escape.$suffix" >"cut$escape.$suffix"
    cp "$escape.$suffix" "copy$escape.$suffix"
done
cp "$source/examples/water/h2o.gjf" "$escape.gjf"
stigruz "$escape.fchk"
for job in "$escape"_0*.fchk; do stigruz "$job" "$escape.sgn"; done
cp "$escape.sgn" "copy$escape.sgn"
sed '/^ *corrected_tdip/,+1s/-5.35/ 5.35/' "${escape}_01xp.sgn" >"reversed$escape.sgn"
sed "s/ O  / $escape  /" "${escape}_01xm.sgn" >"symbol$escape.sgn"
sed 's/1.00782500/2.00782500/' "${escape}_01xm.sgn" >"mass$escape.sgn"
sed '4,8d' "$escape.sgn" >"cut$escape.sgn"
for file in "$escape".sgn "$escape"_0*.sgn; do
    cp "$file" "moved$file"
    sed "s/ O  / $escape  /" "$file" >"symbols$file"
done
echo mine >"${escape}_01ym_s1.sgn"
for suffix in fchk log cis; do
    cp "$source/tests/data/crossing/h2ox_ref.$suffix" "near$escape.$suffix"
    cp "$source/tests/data/crossing/h2ox_02yp.$suffix" "nearer$escape.$suffix"
done
echo "ORCA version: 5$escape" >"orca$escape.out"
printf ' %s\n' 'Entering Gaussian System, Link 0=g16' '*****************' "Gaussian 16:  A-G16RevB.01$escape" \
    >"version$escape.log"
printf '%s\n' "%chk=$escape" "# cis(nstates=4)/6-31g $escape=2 force" '' t '' '0 1' \
    "H$escape 0 0 0" '' >"route$escape.gjf"

status=0
count=0
while read -r line; do
    [ -n "$line" ] || continue
    line=${line//\~/$escape}
    # shellcheck disable=SC2086
    "${line%% *}" ${line#* } </dev/null >out 2>&1 || true
    count=$((count + 1))
    if grep -q "$escape" out; then
        echo "${line//$escape/\~} shows it:" >&2
        grep "$escape" out | head -n 3 | cat -v >&2
        status=1
    fi
done <<'END'
stigruz ~.fchk none~.sgn
stigruz cut~.fchk
stigruz none~.fchk
stigruz ~_01xp.fchk cut~.sgn
stigruz -~
qm_file ~.log ~.fchk ~.sgn ~.cis none~ cut~.sgn orca~.out
qm_file --json=out~.json ~.log ~.log
qm_file --json=~.log ~.log
qm_file orca~.out version~.log
qm_file type orca~.out version~.log
qm_file coord none~ ~.log ~.gjf
qm_file dump ~.cis cut~.cis ~.log
qm_file moments ~.fchk cut~.fchk
qm_file force ~_01xp.log ~_01xm.log
qm_file --xyz ~.log ~_01xp.log
qm_file --~
qm_file probe ~ ~.log
qm_file probe nat ~.log ~
sgn_check ~.sgn *.sgn
sgn_check ~.sgn ~_01xp.sgn ~_01xm.sgn
sgn_check ~_01xp.sgn ~.sgn ~_01xm.sgn ~_02xp.sgn
sgn_check cut~.sgn ~.sgn
sgn_check ~.sgn none~.sgn
sgn_check --min-ratio=~ ~.sgn ~.sgn
sgn_check --~ ~.sgn
sgn_check --json=~.sgn ~.sgn ~_01xp.sgn
sgn_check --json=copy~.sgn ~.sgn ~_01xp.sgn
sgn_derive ~.sgn ~_*.sgn
sgn_derive ~.sgn ~_*.sgn mass~.sgn symbol~.sgn ~_01xp.sgn copy~.sgn
sgn_derive ~.sgn ~_0[23]*.sgn ~_01[yz]*.sgn ~_01xm.sgn reversed~.sgn
sgn_derive ~_01xp.sgn ~.sgn ~_0*.sgn
sgn_derive ~.sgn ~_01xp.sgn
sgn_derive cut~.sgn ~_01xp.sgn
sgn_derive ~.sgn none~.sgn
sgn_derive --~ ~.sgn
sgn_derive --json=~_01xp.sgn ~.sgn ~_0*.sgn
sgn_derive --json=mine~ --csv=mine~ ~.sgn ~_0*.sgn
sgn_derive --csv=~.gjf ~.sgn ~_0*.sgn
sgn_derive --csv=- ~.sgn ~_0*.sgn
sgn_derive symbols~.sgn symbols~_0*.sgn
sgn_derive --molden=- symbols~.sgn symbols~_0*.sgn
sgn_derive --fcc=f~ --template=~.fchk moved~.sgn moved~_0*.sgn
sgn_derive --molden=- ~.sgn ~_0*.sgn
sgn_derive --fchk=d~.fchk --template=cut~.fchk ~.sgn ~_0*.sgn
sgn_derive --fchk=d~.fchk --template=~.fchk ~.sgn ~_0*.sgn
sgn_derive --judge=d~.fchk
sgn_derive --judge=cut~.fchk
sgn_derive --fcc=f~ reversed~.sgn ~_0*.sgn
sgn_derive --state=2 ~.fchk ~_0*.fchk
sgn_derive --state=9 ~.fchk ~_0*.fchk
sgn_derive ~.fchk ~_0*.fchk cut~.fchk
sgn_states ~.fchk ~_0*.fchk
sgn_states ~.fchk cut~.fchk none~.fchk copy~.fchk
sgn_states cut~.fchk ~.fchk
sgn_states --states=~ ~.fchk ~_01xp.fchk
sgn_states --states=9 ~.fchk ~_01xp.fchk
sgn_states --states=3-~ ~.fchk ~_01xp.fchk
sgn_states --jobs=~ ~.fchk ~_01xp.fchk
sgn_states --mixed-below=~ ~.fchk ~_01xp.fchk
sgn_states --json=~.log ~.fchk ~_01xp.fchk
sgn_states --write ~.fchk ~_01xp.fchk
sgn_states --write ~.fchk ~_01ym.fchk
sgn_states near~.fchk nearer~.fchk
sgn_displace ~.gjf
sgn_displace ~.gjf
sgn_displace --list ~.gjf
sgn_displace none~.gjf
sgn_displace route~.gjf
sgn_displace --atoms=~ ~.gjf
sgn_displace --step=~ ~.gjf
sgn_displace --directory=none~ ~.gjf
END
if [ "$count" -lt 55 ]; then
    echo "only $count calls" >&2
    status=1
fi
exit "$status"
