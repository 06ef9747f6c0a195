#!/usr/bin/env bash
# What people do to the scripts of examples/workflow without noticing: checks that do not run, mixed
# references, copies that keep old dates, strays, names with blanks.
set -euo pipefail
source=$1
build=$2
work=$(mktemp -d "${TMPDIR:-/tmp}/the workflow XXXXXX")
trap 'rm -rf "$work"' EXIT
workflow=$source/examples/workflow
# shellcheck source=/dev/null
. "$(dirname "$0")/workflow_support.sh"

# A check that did not run never looks like one that passed.
new_set checks 01xm 01xp
mkdir "$work/tools of mine"
ln -s "$SGN_CHECK" "$work/tools of mine/sgn_check"
printf '#!/bin/sh\nkill -9 $$\n' >"$work/killed"
printf '#!/bin/sh\necho h2o_ref.sgn h2o_01xm.sgn\n' >"$work/forgetful"
chmod +x "$work/killed" "$work/forgetful"
expect 0 3 0 0 "$workflow/loop.sh" h2o_ref
expect_text "sgn_check: all fine"
for script in loop.sh parallel.sh; do
    expect 1 0 3 0 env SGN_CHECK=/none/sgn_check "$workflow/$script" h2o_ref
    expect_text "signs NOT checked: /none/sgn_check is not installed here"
done
while IFS='|' read -r command why; do
    expect 1 0 0 0 env SGN_CHECK="$command" "$workflow/report.sh" h2o_ref
    expect_text "signs NOT checked: $why"
    expect_no_text "all fine"
done <<END
sgn_chekc --no-pairs|sgn_chekc is not installed here
$SGN_CHECK --no-such-option|sgn_check: no option '--no-such-option'
$SGN_CHECK --help|'$SGN_CHECK --help' says nothing of h2o_01xm.sgn
$work/forgetful|'$work/forgetful' says nothing of h2o_01xp.sgn
true|'true' says nothing of h2o_01xm.sgn
$work/killed|
END
expect 0 0 0 0 env SGN_CHECK="$work/tools of mine/sgn_check --no-pairs" "$workflow/report.sh" h2o_ref
expect_text "sgn_check: all fine"
expect 1 0 2 0 "$workflow/loop.sh" h2o_ref h2o_01xp
expect_text "sgn_check: there is doubt, see h2o_ref_sgn_check.txt"
rm ./*.sgn
expect 1 0 0 0 env STIGRUZ=/none "$workflow/report.sh" h2o_ref
expect_text "signs NOT checked: there is no result of the reference"
"$workflow/one.sh" h2o_ref >said
expect 1 0 0 0 "$workflow/report.sh" h2o_ref
expect_text "signs NOT checked: there is no result"

# Where there is nothing to do: nothing but the reference, a directory for each job, other names.
new_set nothing
mkdir h2o_01xm
mv h2o_01xm.log h2o_01xm.fchk h2o_01xm.cis h2o_01xm
rm h2o_0*.*
for script in loop.sh parallel.sh report.sh array.slurm; do
    WORKFLOW=$workflow expect 1 0 0 0 "$workflow/$script" h2o_ref
    expect_text "$script: there are no jobs to do beside h2o_ref: the files of all jobs must stand in"
done
rm -r h2o_01xm
cp h2o_ref.log disp.out
expect 1 0 0 0 "$workflow/loop.sh" h2o_ref
expect_text "logs must be called NAME.log, not disp.out"
rm disp.out
expect 1 0 0 0 "$workflow/loop.sh" h2o_ref
expect_text "there are no jobs to do beside h2o_ref in $PWD"
expect_files

# Results of two references are not mixed, whichever of them is asked for.
new_set references 01xm 01xp
expect 0 3 0 0 "$workflow/loop.sh" h2o_ref
cp -p h2o_01xm.sgn before
for script in loop.sh parallel.sh report.sh array.slurm; do
    WORKFLOW=$workflow expect 1 0 0 0 "$workflow/$script" h2o_01xm h2o_ref h2o_01xp
    expect_text "h2o_01xm.sgn was mapped on the reference h2o_ref, not made as a reference itself"
    expect_text "To start anew with h2o_01xm: rm -f -- *.sgn *.made"
done
expect 1 0 0 1 "$workflow/one.sh" h2o_01xm
cmp h2o_01xm.sgn before
rm h2o_01xm.sgn
expect 1 0 0 0 "$workflow/loop.sh" h2o_01xm
expect_text "h2o_01xp.sgn was mapped on the reference h2o_ref, not h2o_01xm"
rm h2o_01xp.sgn
expect 1 0 0 0 "$workflow/loop.sh" h2o_01xm
expect_text "h2o_ref.sgn was made as a reference, not mapped on h2o_01xm"
rm -f -- *.sgn *.made
SGN_CHECK="$SGN_CHECK --no-pairs" expect 0 3 0 0 "$workflow/loop.sh" h2o_01xm
# Made by hand with another reference: not known to the scripts, and made anew.
rm -f -- *.sgn *.made
"$STIGRUZ" h2o_01xp.fchk
"$STIGRUZ" h2o_ref.fchk h2o_01xp.sgn
"$STIGRUZ" h2o_01xm.fchk h2o_ref.sgn
expect 1 0 0 0 "$workflow/report.sh" h2o_ref
expect_text "The reference h2o_ref has no result: h2o_ref.sgn was not made by these scripts"
expect 0 3 0 0 "$workflow/loop.sh" h2o_ref
cmp h2o_01xm.sgn before
"$STIGRUZ" h2o_01xm.fchk
expect 0 1 2 0 "$workflow/loop.sh" h2o_ref
# What cannot be made again is not thrown away.
rm h2o_01xm.made h2o_01xm.cis
expect 1 0 2 1 "$workflow/loop.sh" h2o_ref
expect_text "there is no h2o_01xm.cis; what the h2o_01xm.sgn here was made from is not known"
cmp h2o_01xm.sgn before

# Copies with the same size and dates, but other contents, are seen, files that were removed do not count.
new_set dates 01xm 01xp
expect 0 3 0 0 "$workflow/loop.sh" h2o_ref
sed 's/0\.5353/0.5352/' "$source/examples/water/h2o_01xm.log" >"$work/other.log"
touch -r h2o_01xm.log "$work/other.log"
cp -p "$work/other.log" h2o_01xm.log
expect 1 0 0 0 "$workflow/report.sh" h2o_ref
expect_text "  h2o_01xm: not run since its files or the reference changed"
expect 0 1 2 0 "$workflow/loop.sh" h2o_ref
grep -q -e '-5.3520000000E-01' h2o_01xm.sgn
rm h2o_01xp.cis
expect 0 0 3 0 "$workflow/loop.sh" h2o_ref

# Each job is shown when it ends: the first one's line comes while the second one is still running.
new_set shown 01xm 01xp
cat >"$work/slow" <<'END'
#!/bin/sh
while [ "$1" = h2o_01xp.fchk ] && [ ! -e seen ]; do
    sleep 0.05
    tries=x$tries
    [ "$tries" != "$(printf '%0200d' 0 | tr 0 x)" ] || exit 9
done
exec "$TOOL" "$@"
END
chmod +x "$work/slow"
env TOOL="$STIGRUZ" STIGRUZ="$work/slow" "$workflow/parallel.sh" h2o_ref 2 >said 2>&1 &
tries=0
until grep -qF '[1/2] h2o_01xm: done' said 2>/dev/null || [ "$((tries += 1))" -gt 400 ]; do sleep 0.05; done
touch seen
wait "$!" || fail "a job waited for the line of another: $(cat said)"

# Jobs by name, by pattern and from a list; strays, and names with blanks.
new_set names 01xm 01xp
for end in log fchk cis; do
    cp -p "h2o_01xm.$end" "another job.$end"
    cp -p "h2o_01xp.$end" "[1] h2o.$end"
done
touch opt.log h2o_01xp_old.log
echo input >h2o_03zm.gjf
expect 1 3 0 1 "$workflow/loop.sh" h2o_ref
expect_text "  h2o_03zm: there is no h2o_03zm.log"
expect_text "passed over, not named like jobs of this set: [1] h2o another job h2o_01xp_old opt"
export SGN_CHECK="$SGN_CHECK --no-pairs"
expect 0 1 2 0 "$workflow/loop.sh" h2o_ref.fchk 'another*' h2o_01xm.log './h2o_01xm.cis'
expect_text "2 jobs: 2 finished"
printf 'another job\r\n\n[1] h2o.log\nh2o_01x?' >list
expect 1 1 2 1 "$workflow/parallel.sh" h2o_ref 2 @list
expect_text "  h2o_01x?: there is no h2o_01x?.log"
expect 0 0 3 0 "$workflow/parallel.sh" h2o_ref '[1] h2o' "another job"
expect 0 0 3 0 "$workflow/loop.sh" h2o_ref 'h2o_01x?'
for wrong in "'../h2o_01xm' names no job" "no job has a name like 'disp_*'" "the list 'none' cannot be read"; do
    argument=${wrong#*\'}
    argument=${argument%%\'*}
    expect 1 0 0 0 "$workflow/loop.sh" h2o_ref "${argument/#none/@none}"
    expect_text "$wrong"
done
if command -v make >/dev/null; then
    expect 0 0 4 0 make -f "$workflow/Makefile" -j2 REFERENCE="h2o_ref" JOBS="another* [[]* h2o_01xm"
fi

# A dump whose numbers cannot be amplitudes; dumps that nobody looked at, or that do not tell their
# layout.
new_set dumps 01xm 01xp
cp "$source/tests/data/gaussian/roots.cis" right
for name in h2o_ref h2o_01xm h2o_01xp; do cp right $name.cis; done
cat >"$work/signs" <<'END'
#!/bin/sh
echo INFORMATION >"${1%.fchk}.sgn"
END
cat >"$work/check" <<'END'
#!/bin/sh
echo "$*"
END
chmod +x "$work/signs" "$work/check"
export STIGRUZ=$work/signs SGN_CHECK=$work/check SGN_DERIVE=$work/check
expect 0 3 0 0 "$workflow/loop.sh" h2o_ref
expect_text "dumps: no doubt"
expect_text "derivatives: in h2o_ref_derivatives.txt"
sed 's/0.10000000D+01/0.14000000D+01/g' right >h2o_01xm.cis
expect 1 1 2 0 "$workflow/loop.sh" h2o_ref
expect_text "dumps: there is doubt whether these are amplitudes, see h2o_ref_dumps.txt:"
expect_text "  ./h2o_01xm.cis: state   1    8.4355 eV  singlet  (X+Y)(X-Y) 0.600000, 0.600000  doubt: not 1/2"
expect_text "derivatives NOT made: there is doubt about the dumps"
sed 's/file   635/file   522/' right >h2o_01xm.cis
expect 1 1 2 0 "$workflow/loop.sh" h2o_ref
expect_text "dumps NOT looked at: '$QM_FILE' finds no amplitudes in ./h2o_01xm.cis (see h2o_ref_dumps.txt)"
sed '$d' right >h2o_01xm.cis
expect 1 1 2 0 "$workflow/loop.sh" h2o_ref
expect_text "dumps NOT looked at: qm_file: ./h2o_01xm.cis: no dumped record: line 21: the file ends"
cp "$source/tests/data/gaussian/water.cis" h2o_01xm.cis
expect 0 1 2 0 "$workflow/loop.sh" h2o_ref
expect_text "dumps: 1 of 3 do not tell their layout, so nothing in them was checked"
rm h2o_01xm.cis h2o_01xp.cis
expect 1 0 0 0 env QM_FILE=/none/qm_file "$workflow/report.sh" h2o_ref
expect_text "dumps NOT looked at: /none/qm_file is not installed here"
expect 0 0 0 0 "$workflow/report.sh" h2o_ref
expect_no_text dumps
export STIGRUZ=$build/tools/stigruz SGN_CHECK="$build/tools/sgn_check --no-pairs" SGN_DERIVE=

# The derivatives come last, when all jobs are there and the tool is.
new_set derivatives
cat >"$work/derive tool" <<'END'
#!/bin/sh
echo "table of $*"
exit "$DERIVE_STATUS"
END
chmod +x "$work/derive tool"
export SGN_DERIVE="$work/derive tool --json=derivatives.json" DERIVE_STATUS=0
SGN_CHECK=${SGN_CHECK% *}
expect 0 19 0 0 "$workflow/loop.sh" h2o_ref
expect_text "derivatives: in h2o_ref_derivatives.txt"
read -ra words <h2o_ref_derivatives.txt
[ "${words[*]:0:5} ${#words[@]}" = "table of --json=derivatives.json h2o_ref.sgn h2o_01xm.sgn 22" ] ||
    fail "other arguments: ${words[*]}"
DERIVE_STATUS=1 expect 1 0 0 0 "$workflow/report.sh" h2o_ref
expect_text "derivatives: in h2o_ref_derivatives.txt, but there is doubt"
DERIVE_STATUS=2 expect 1 0 0 0 "$workflow/report.sh" h2o_ref
expect_text "derivatives NOT made: table of "
[ ! -e h2o_ref_derivatives.txt ] || fail "derivatives of a failed run were kept"
SGN_DERIVE=/none/derive expect 1 0 0 0 "$workflow/report.sh" h2o_ref
expect_text "derivatives NOT made: /none/derive is not installed here"
SGN_DERIVE='' expect 0 0 0 0 "$workflow/report.sh" h2o_ref
expect_no_text derivatives
unset SGN_DERIVE
PATH=/usr/bin:/bin expect 0 0 0 0 "$workflow/report.sh" h2o_ref
expect_text "derivatives: left out, as sgn_derive is not installed here"
if [ -x "$build/tools/sgn_derive" ]; then
    # Of two sets in one directory each keeps its own.
    for file in h2o_*.{log,fchk,cis}; do ln -s "$file" "other${file#h2o}"; done
    for set in h2o other; do
        SGN_DERIVE=$build/tools/sgn_derive "$workflow/loop.sh" "${set}_ref" >said || fail "$(cat said)"
    done
    for name in dumps.txt sgn_check.txt derivatives.{txt,json,html}; do
        if grep -q other_ "h2o_ref_$name" || grep -q h2o_ "other_ref_$name"; then
            fail "what is said of two sets is mixed in $name"
        fi
    done
    rm other*
    PATH=$build/tools:$PATH expect 0 0 0 0 "$workflow/report.sh" h2o_ref
    expect_text "derivatives: in h2o_ref_derivatives.txt"
    for form in json html; do
        if grep -q -e "--$form=" <("$build/tools/sgn_derive" --help); then [ -s "h2o_ref_derivatives.$form" ]; fi
    done
fi
rm h2o_03zp.sgn
expect 1 0 0 0 "$workflow/report.sh" h2o_ref
expect_text "derivatives NOT made: jobs are missing"
