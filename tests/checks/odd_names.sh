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
# shellcheck disable=SC2016 # awk's
reverse='/Corrected_tdip/ { printf " Corrected_tdip =  %20.10E%20.10E%20.10E\n", -$3, -$4, -$5; next } 1'
awk "$reverse" "${escape}_01xp.sgn" >"reversed$escape.sgn"
awk "$reverse" "${escape}_02zm.sgn" >"again$escape.sgn"
sed 's/ O  *8 / S      16 /' "${escape}_01xm.sgn" >"sulphur$escape.sgn"
sed "s/ O  / $escape  /" "${escape}_01xm.sgn" >"symbol$escape.sgn"
sed 's/1.00782500/2.00782500/' "${escape}_01xm.sgn" >"mass$escape.sgn"
sed '4,8d' "$escape.sgn" >"cut$escape.sgn"
for file in "$escape".sgn "$escape"_0*.sgn; do
    cp "$file" "moved$file"
    sed "s/ O  / $escape  /" "$file" >"symbols$file"
done
echo mine >"copy${escape}_s1.sgn"
for suffix in fchk log cis; do
    cp "$source/tests/data/crossing/h2ox_ref.$suffix" "near$escape.$suffix"
    cp "$source/tests/data/crossing/h2ox_02yp.$suffix" "nearer$escape.$suffix"
done
echo "ORCA version: 5$escape" >"orca$escape.out"
printf ' %s\n' 'Entering Gaussian System, Link 0=g16' '*****************' "Gaussian 16:  A-G16RevB.01$escape" \
    >"version$escape.log"

# Checkpoints that are not of one run with their log and result file, each in its way.
spoilt() { # NAME SED-SCRIPT [JOB]: a copy of the job, whose checkpoint is edited
    local of=$escape${3:-} suffix
    for suffix in sgn log cis; do cp "$of.$suffix" "$1$of.$suffix"; done
    sed "$2" "$of.fchk" >"$1$of.fchk"
}
target='/ETran scalars/,+1s/^\( *4  *16  *1  *10  *\)1/\12/'
for job in '' _0{1,2,3}{x,y,z}{m,p}; do
    spoilt second "$target" "$job"
    spoilt root "$([ "$job" != _01xp ] || echo "$target")" "$job"
done
spoilt dipole '/ETran state values/,+1s/-5.35[0-9]*E-01/-5.55000000E-01/'
spoilt place '/Current cartesian/,+1s/2.22987683E-01/2.52987683E-01/'
spoilt alike '' _01ym
awk '/ETran state values/ { at = NR } at && NR == at + 1 { x = $2 }
     at && NR == at + 4 { printf "%16s%16s%16s%16s%16s\n", $1, $2, x, 0, 0; next } 1' \
    "${escape}_01ym.fchk" >"alike${escape}_01ym.fchk"
spoilt empty ''
head -n 40 "$escape.log" >"empty$escape.log"
spoilt orbitals '/^Alpha MO coefficients/,/^[B-Z]/s/[0-9]\.[0-9]*E/0.00000000E/g'
# A dump that does not tell its layout, and logs that then lack what is needed.
untold() { # NAME SED-SCRIPT
    local values
    values=$(sed '1,/read left/d' "$escape.cis" | tr -s ' ' '\n' | sed '/^$/d' | tail -n +13)
    {
        sed -n '1,/read left/p' "$escape.cis" | sed "s/length *[0-9]*/length $(wc -l <<<"$values")/"
        echo "$values"
    } >"$1$escape.cis"
    sed "$2" "$escape.log" >"$1$escape.log"
    cp "$escape.fchk" "$1$escape.fchk"
}
untold roots '/roots to seek/d'
untold energies '/Excited State/d'
mkdir there
for suffix in fchk log cis; do
    cp "${escape}_01xp.$suffix" "there/${escape}_01xp.$suffix"
    cp "${escape}_01xp.$suffix" "${escape}_s1.$suffix"
done

# Inputs, with names that a set may have.
cp "$source/examples/water/h2o.gjf" plain.gjf
input() { # NAME LINK0 ROUTE CHARGES [LAST-LINE]
    printf '%s\n' "$2" "$3" '' t '' "$4" 'H 0 0 0' 'H 0 0 1' '' ${5:+"$5" ''} >"$1.gjf"
}
input route '%mem=1GB' "# cis(nstates=4)/6-31g $escape=2 force nosymm" '0 1'
input nothing '%mem=1GB' "# cis(nstates=4)/6-31g nosymm $escape=" '0 1'
input open '%mem=1GB' "# cis(nstates=4) ub3lyp$escape/6-31g nosymm force" '0 1'
input read "%chk=$escape" "# cis(nstates=4)/6-31g nosymm guess=read force" '0 1'
input charges '%mem=1GB' '# cis(nstates=4)/6-31g nosymm force' "0 $escape"
input link "$escape" '# cis(nstates=4)/6-31g nosymm force' '0 1'
input included '%mem=1GB' '# cis(nstates=4)/gen nosymm force' '0 1' "@basis$escape"

status=0
count=0
while read -r line; do
    [ -n "$line" ] || continue
    line=${line//\~/$escape}
    # shellcheck disable=SC2086
    "${line%% *}" ${line#* } </dev/null >out 2>&1 || true
    count=$((count + 1))
    # What is written for people to read, too.
    cat -- *made* >>out 2>/dev/null || true
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
sgn_check ~.sgn reversed~.sgn ~_01xm.sgn
sgn_check symbols~.sgn symbols~_0*.sgn
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
sgn_derive ~.sgn ~_01[yz]*.sgn ~_01xm.sgn reversed~.sgn ~_02[xy]*.sgn ~_02zp.sgn again~.sgn ~_03*.sgn
sgn_derive ~.sgn sulphur~.sgn
sgn_derive ~.sgn ~_0[123][xyz]p.sgn
sgn_derive root~.sgn root~_0*.sgn
sgn_derive second~.sgn second~_0*.sgn
sgn_derive dipole~.sgn ~_0*.sgn
sgn_derive place~.sgn ~_0*.sgn
sgn_derive ~.sgn alike~_01ym.sgn ~_01yp.sgn ~_01[xz]*.sgn ~_0[23]*.sgn
sgn_derive dipole~.fchk ~_0*.fchk
sgn_derive place~.fchk ~_0*.fchk
sgn_derive --csv=- ~.sgn ~_0*.sgn
sgn_derive --csv=- symbols~.sgn symbols~_0*.sgn
sgn_derive --html=- symbols~.sgn symbols~_0*.sgn
sgn_derive --fchk=- ~.sgn ~_0*.sgn
sgn_derive --fcc=made~ ~.sgn ~_0*.sgn
sgn_derive --fcc=made~ symbols~.sgn symbols~_0*.sgn
sgn_derive --fcc=made~ --template=~.fchk symbols~.sgn symbols~_0*.sgn
sgn_derive symbols~.sgn symbols~_0*.sgn
sgn_derive --molden=- symbols~.sgn symbols~_0*.sgn
sgn_derive --fcc=f~ --template=~.fchk moved~.sgn moved~_0*.sgn
sgn_derive --molden=- ~.sgn ~_0*.sgn
sgn_derive --fchk=d~.fchk --template=cut~.fchk ~.sgn ~_0*.sgn
sgn_derive --fchk=d~.fchk --template=place~.fchk ~.sgn ~_0*.sgn
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
sgn_states --write ~.fchk copy~.fchk
sgn_states near~.fchk nearer~.fchk
sgn_states --lost-below=2 near~.fchk nearer~.fchk
sgn_states ~.fchk ~_01xp.fchk there/~_01xp.fchk orbitals~.fchk empty~.fchk
sgn_states ~.fchk roots~.fchk energies~.fchk
sgn_states --write ~.fchk ~_s1.fchk
sgn_displace ~.gjf
sgn_displace none~.gjf
sgn_displace --atoms=~ plain.gjf
sgn_displace --step=~ plain.gjf
sgn_displace --steps=0.01,~ plain.gjf
sgn_displace --directory=none~ plain.gjf
sgn_displace --force route.gjf
sgn_displace --force nothing.gjf
sgn_displace --force open.gjf
sgn_displace --force read.gjf
sgn_displace --force charges.gjf
sgn_displace --force link.gjf
sgn_displace --force --directory=there included.gjf
END
if [ "$count" -lt 85 ]; then
    echo "only $count calls" >&2
    status=1
fi
exit "$status"
