#!/usr/bin/env bash
# Runs the scripts of examples/workflow on the bundled set: from nothing, resumed, with broken jobs.
set -euo pipefail
source=$1
build=$2
work=$(mktemp -d "${TMPDIR:-/tmp}/the workflow XXXXXX")
trap 'rm -rf "$work"' EXIT
workflow=$source/examples/workflow
# shellcheck source=/dev/null
. "$(dirname "$0")/workflow_support.sh"

# From nothing; then one job is broken and another one has been made anew; then all is well again.
new_set loop
expect 0 19 0 0 "$workflow/loop.sh" h2o_ref
expect_text "[18/18] h2o_03zp: done"
expect_text "18 jobs: 18 finished, 0 not"
expect_text "sgn_check: all fine"
expect 0 0 19 0 "$workflow/loop.sh" h2o_ref

cp -p h2o_02xm.cis whole
head -c 3000 whole >h2o_02xm.cis
touch h2o_03zp.log
expect 1 1 17 1 "$workflow/parallel.sh" h2o_ref 3
expect_text "[18/18] h2o_"
expect_text "18 jobs: 17 finished, 1 not"
expect_text "  h2o_02xm: status 2: stigruz: h2o_02xm.cis: line"
[ ! -e h2o_02xm.sgn ] || fail "a result that is out of date was kept"
if command -v make >/dev/null; then
    expect 2 0 18 1 make -f "$workflow/Makefile" REFERENCE=h2o_ref
    expect_text "  h2o_02xm: status 2: stigruz: h2o_02xm.cis: line"
    mv whole h2o_02xm.cis
    ln -s "$workflow" "../the scripts"
    expect 0 1 18 0 make -f "../the scripts/Makefile" -j 3 REFERENCE=h2o_ref
    expect_text "18 jobs: 18 finished, 0 not"
    [ ! -e h2o_02xm.err ] || fail "the old message was kept"
    expect 0 0 9 0 make -f "$workflow/Makefile" REFERENCE=h2o_ref JOBS='h2o_01* h2o_02x?'
    expect_text "8 jobs: 8 finished, 0 not"
    rm h2o_02xm.sgn h2o_ref.log h2o_ref.sgn
    expect 2 0 0 1 make -f "$workflow/Makefile" REFERENCE=h2o_ref
    cp -p "$source/examples/water/h2o_ref.log" .
else
    mv whole h2o_02xm.cis
fi

# A new reference makes all other results out of date; one that says the same does not.
touch h2o_ref.cis
expect 0 2 17 0 "$workflow/parallel.sh" h2o_ref
sed -i 's/-0.5354/-0.5355/g' h2o_ref.log
expect 0 1 0 0 "$workflow/one.sh" h2o_ref
expect 0 18 1 0 "$workflow/loop.sh" h2o_ref.log

# The job array, one task after the other, whose numbers begin at 1 or leave some out; every job is
# taken by one of them.
new_set array
export WORKFLOW=$workflow SLURM_SUBMIT_DIR=$PWD SLURM_ARRAY_TASK_MIN=1 SLURM_ARRAY_TASK_COUNT=4 \
    SLURM_ARRAY_TASK_MAX=4 SLURM_ARRAY_TASK_STEP=1
expect 1 0 0 5 env SLURM_ARRAY_TASK_ID=1 "$workflow/array.slurm" h2o_ref
expect_text "the reference has no result: not run"
expect 0 1 0 0 "$workflow/one.sh" h2o_ref
for share in "1 5" "2 5" "3 4" "4 4"; do
    read -r task jobs <<<"$share"
    expect 0 "$jobs" 0 0 env SLURM_ARRAY_TASK_ID="$task" "$workflow/array.slurm" h2o_ref
done
rm h2o_01xp.sgn
expect 0 1 4 0 env SLURM_ARRAY_TASK_ID=2 "$workflow/array.slurm" h2o_ref
expect 0 0 0 0 "$workflow/report.sh" h2o_ref
expect_text "18 jobs: 18 finished, 0 not"
for result in h2o_0*.sgn; do
    sed 's/5355/5354/' "../loop/$result" | cmp - "$result" || fail "another result"
done
rm h2o_0*.sgn
export SLURM_ARRAY_TASK_MIN=0 SLURM_ARRAY_TASK_MAX=6 SLURM_ARRAY_TASK_STEP=2
for share in "0 5" "2 5" "4 4" "6 4"; do
    read -r task jobs <<<"$share"
    expect 0 "$jobs" 0 0 env SLURM_ARRAY_TASK_ID="$task" "$workflow/array.slurm" h2o_ref
done
for place in "$PWD" none; do
    # A copy, as SLURM runs it; where the scripts are is not told, or the jobs lie beside them.
    mkdir "$work/spool"
    cp "$workflow/array.slurm" "$work/spool/slurm_script"
    if [ "$place" = none ]; then
        expect 1 0 0 0 env -u WORKFLOW SLURM_ARRAY_TASK_ID=6 "$work/spool/slurm_script" h2o_ref
        expect_text "array.slurm: one.sh and common.sh are not found; before sbatch, tell where they are:"
    else
        cp "$workflow"/*.sh .
        expect 0 0 4 0 env -u WORKFLOW SLURM_ARRAY_TASK_ID=6 "$work/spool/slurm_script" h2o_ref
        rm ./*.sh
    fi
    rm -r "$work/spool"
done
expect 1 0 0 0 env SLURM_ARRAY_TASK_ID=6 SLURM_ARRAY_TASK_MAX=9 "$workflow/array.slurm" h2o_ref
expect_text "not at regular distances"

# From the first command to the last: the inputs are of the geometries of the bundled jobs.
if [ -x "$build/tools/sgn_displace" ]; then
    new_set displaced none
    cp "$source/examples/water/h2o.gjf" .
    PATH=$build/tools:$PATH expect 0 0 0 0 sgn_displace h2o.gjf
    expect_text "loop.sh h2o_ref"
    for input in h2o_*.gjf; do
        name=${input%.gjf}
        grep -qxF "%chk=$name.chk" "$input" || fail "$input: another checkpoint"
        [ "$(sed -n '/^0 1$/,/^$/p' "$input" | grep -E '^[OH] ' | xargs)" = \
            "$(sed -n '/Multiplicity = 1/,/^ $/p' "$source/examples/water/$name.log" | grep -E '^ [OH] ' | xargs)" ] ||
            fail "$input: another geometry than that of $name.log"
    done
    expect 1 0 0 1 "$workflow/loop.sh" h2o_ref
    expect_text "h2o_ref: FAILED: there is no h2o_ref.log"
    cp -p "$source"/examples/water/h2o_* .
    rm h2o_02zm.log
    expect 1 18 0 1 "$workflow/loop.sh" h2o_ref
    expect_text "  h2o_02zm: there is no h2o_02zm.log"
fi

# Jobs of several steps, with those of one among them; and one command straight on the jobs.
new_set steps
for file in h2o_0[12]*; do mv "$file" "${file%.*}10000.${file##*.}"; done
PATH=$build/tools:$PATH expect 0 0 0 0 sgn_derive h2o_ref.fchk h2o_0*.fchk
expect_text "All 19 files are fine: no sign is wrong."
expect 0 19 0 0 "$workflow/loop.sh" h2o_ref
expect_text "[1/18] h2o_01xm10000: done"
expect_text "18 jobs: 18 finished, 0 not"
expect_no_text "passed over"

# Forces of another root than the first state, whose signs these are; the route is cut after 70 columns.
new_set roots 01xm 01xp
sed -i 's/^ #p cis(nstates=4,root=1)/ #p cis(nstates=4,ro\n ot = 2)/' h2o_*.log
export SGN_CHECK="$build/tools/sgn_check --no-pairs"
expect 0 3 0 0 "$workflow/loop.sh" h2o_ref
expect_text "roots: the jobs were run for root 2: forces and wavenumbers are those of that state"
sed -i 's/^ ot = 2)/ ot = 3)/' h2o_01xp.log
expect 1 1 2 0 "$workflow/loop.sh" h2o_ref
expect_text "(h2o_ref.log: root 2): the forces are not those of one state: h2o_01xp.log: root 3"
SGN_CHECK=$build/tools/sgn_check

# What can be wrong with a job, one by one; reports name every reason.
new_set broken 01xm 01xp 02yp 02ym
rm h2o_01xm.fchk
sed -i '$d' h2o_01xp.log
mv h2o_02yp.log h2o_02yp.out
expect 1 2 0 3 "$workflow/loop.sh" h2o_ref
expect_text "  h2o_01xm: there is no h2o_01xm.fchk"
expect_text "  h2o_01xp: h2o_01xp.log does not end with 'Normal termination'"
expect_text "  h2o_02yp: there is no h2o_02yp.log, but h2o_02yp.out (ln -s -- 'h2o_02yp.out' 'h2o_02yp.log')"
rm h2o_02ym.sgn
expect 1 0 0 0 "$workflow/report.sh" h2o_ref
expect_text "  h2o_02ym: not run"
expect 1 0 0 1 env STIGRUZ=/none/stigruz "$workflow/one.sh" h2o_02ym h2o_ref
expect_text "/none/stigruz is not installed here"

# What killed runs left is cleared, not what a run may still need, nor anything else.
new_set left 01xm
dead=$(sh -c 'echo $$')
touch -d '2 minutes ago' ".h2o_ref.sgn.$dead-0" ".h2o_01xm.sgn.$dead-12" ".other_s2.sgn.$dead-1" \
    ".h2o_01xm.sgn.$$-0" ".h2o_01xm.sgn.1-0" ".notes.$dead-0" ".h2o_01xm.sgn.$dead-01"
touch ".h2o_ref.sgn.$dead-1"
kept=".h2o_01xm.sgn.$dead-01 .h2o_01xm.sgn.$$-0 .h2o_01xm.sgn.1-0 .h2o_ref.sgn.$dead-1 .notes.$dead-0"
left() { find . -name '.?*' -printf '%P\n' | LC_ALL=C sort | xargs; }
expect 0 1 0 0 "$workflow/one.sh" h2o_ref
[ "$(left)" = "$(tr ' ' '\n' <<<"$kept .h2o_01xm.sgn.$dead-12 .other_s2.sgn.$dead-1" |
    LC_ALL=C sort | xargs)" ] || fail "other files after one.sh: $(left)"
SGN_CHECK="$SGN_CHECK --no-pairs" expect 0 1 1 0 "$workflow/loop.sh" h2o_ref
[ "$(left)" = "$(tr ' ' '\n' <<<"$kept" | LC_ALL=C sort | xargs)" ] || fail "other files after all: $(left)"

# A run that ends with status 0 but without a result has failed.
new_set no_result 01xm
sed -i '/^Number of atoms/d' h2o_ref.fchk
expect 1 0 0 1 "$workflow/loop.sh" h2o_ref
expect_text "status 0:   Error!"
expect 1 0 0 0 "$workflow/report.sh" h2o_ref
expect_files h2o_ref.err

# The text files of jobs, by stand-ins of the programs that make them. Of a file without the record
# that is asked for rwfdump prints no dump, whatever its status.
mkdir "$work/dump" "$work/bin"
cd "$work/dump"
cat >"$work/bin/formchk" <<'END'
#!/bin/sh
cp "$1" "$2"
END
cat >"$work/bin/rwfdump" <<'END'
#!/bin/sh
[ "$3" = 635R ] || exit
grep -q broken "$1" && exit 1
echo " Number 635" >"$2"
case $(cat "$1") in
    *older*) echo " Dump of file   522 length  635 (read left to right):" >>"$2" ;;
    *) echo " Dump of file   635 length  $1 (read left to right):" >>"$2" ;;
esac
END
chmod +x "$work"/bin/*
for name in a.chk a.rwf b.chk "c d.chk" "c d.rwf" e.chk e.rwf f.rwf; do echo "$name" >"$name"; done
echo older >b.chk
echo older >"c d.chk"
echo broken >e.chk
echo broken >e.rwf
export PATH=$work/bin:$PATH
expect 1 7 0 3 "$workflow/dump.sh" a b.rwf ./*.chk f
expect_text "c d.cis: from c d.rwf, not c d.chk: done"
expect_text "f.cis: from f.rwf, not f.chk: done"
expect_text "b.cis: FAILED: rwfdump b.chk 635R (see b.cis.err)"
grep -qx " Dump of file   522 .*" b.cis.err || fail "$(cat b.cis.err)"
expect_text "e.cis: FAILED: rwfdump e.chk 635R (see e.cis.err); rwfdump e.rwf 635R (see e.cis.err)"
expect_text "f.fchk: FAILED: there is no f.chk"
expect_text "5 jobs: 7 files made, 0 up to date, 3 failed"
[ "$(cat ./*.fchk ./*.cis | sed '/Number/d; s/.*length *//; s/ (read.*//' | xargs)" = \
    "a.chk older older broken a.chk c d.rwf f.rwf" ] || fail "other files: $(ls)"
# A newer file with an older date; one that can no longer be had.
sleep 0.02
touch -d yesterday a.chk
rm "c d.chk"
expect 0 2 0 0 "$workflow/dump.sh" a "c d"
expect_text "2 jobs: 2 files made, 2 up to date, 0 failed"
sleep 0.02
touch "c d.rwf"
expect 0 1 0 0 "$workflow/dump.sh" "c d"
printf '#!/bin/sh\necho nothing\n' >"$work/bin/formchk"
rm a.fchk
expect 1 0 0 1 "$workflow/dump.sh" a
expect_text "a.fchk: FAILED: formchk a.chk (see a.fchk.err)"
[ ! -e a.fchk ] || fail "a file was made of nothing"
for script in jobs.sh one.sh loop.sh parallel.sh report.sh; do
    expect 1 0 0 0 "$workflow/$script"
    expect_text "$script: usage: $script "
done
expect 1 0 0 0 "$workflow/dump.sh"
expect_text "usage: dump.sh NAME..."
