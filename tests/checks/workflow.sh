#!/usr/bin/env bash
# Runs the scripts of examples/workflow on the bundled set: from nothing, resumed, with broken jobs.
set -euo pipefail
source=$1
build=$2

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export STIGRUZ=$build/tools/stigruz SGN_CHECK=$build/tools/sgn_check
workflow=$source/examples/workflow

fail() {
    echo "$*" >&2
    exit 1
}

# new_set NAME: goes to a directory with the jobs of the bundled set.
new_set() {
    mkdir "$work/$1"
    cd "$work/$1"
    cp -p "$source"/examples/water/h2o_* .
}

# expect STATUS DONE UP-TO-DATE FAILED COMMAND...: how the command ends, and how many jobs it says
# that it treated, left alone, or could not treat. What it says stays in $said.
expect() {
    local status=0 counts
    local expected="status $1, $2 done, $3 up to date, $4 failed"
    shift 4
    said=$("$@" 2>&1) || status=$?
    counts="status $status, $(grep -c ': done$' <<<"$said" || true) done,"
    counts+=" $(grep -c ': up to date$' <<<"$said" || true) up to date,"
    counts+=" $(grep -c '^[^ ].*: FAILED: ' <<<"$said" || true) failed"
    [ "$counts" = "$expected" ] || fail "$*: $counts instead of $expected:" "$said"
}

expect_text() { grep -qF "$1" <<<"$said" || fail "no '$1' in: $said"; }

# From nothing; then one job is broken and another one has been made anew; then all is well again.
new_set loop
expect 0 19 0 0 "$workflow/loop.sh" h2o_ref
expect_text "18 jobs: 18 finished, 0 not"
expect_text "sgn_check: all fine"
expect 0 0 19 0 "$workflow/loop.sh" h2o_ref

cp -p h2o_02xm.cis whole
head -c 3000 whole >h2o_02xm.cis
touch h2o_03zp.log
expect 1 1 17 1 "$workflow/parallel.sh" h2o_ref 3
expect_text "18 jobs: 17 finished, 1 not"
expect_text "  h2o_02xm: status 2: stigruz: h2o_02xm.cis: line"
[ ! -e h2o_02xm.sgn ] || fail "a result that is out of date was kept"
if command -v make >/dev/null; then
    expect 2 0 0 1 make -f "$workflow/Makefile" REFERENCE=h2o_ref
    expect_text "  h2o_02xm: status 2: stigruz: h2o_02xm.cis: line"
    mv whole h2o_02xm.cis
    expect 0 1 0 0 make -f "$workflow/Makefile" -j 3 REFERENCE=h2o_ref
    expect_text "18 jobs: 18 finished, 0 not"
    [ ! -e h2o_02xm.err ] || fail "the old message was kept"
    expect 0 0 0 0 make -f "$workflow/Makefile" REFERENCE=h2o_ref
fi

# A new reference makes all other results out of date.
sleep 0.02
touch h2o_ref.cis
expect 0 19 0 0 "$workflow/parallel.sh" h2o_ref

# The job array, one task after the other; every job is taken by one of them.
new_set array
export WORKFLOW=$workflow SLURM_SUBMIT_DIR=$PWD SLURM_ARRAY_TASK_MIN=1 SLURM_ARRAY_TASK_COUNT=4
expect 1 0 0 5 env SLURM_ARRAY_TASK_ID=1 "$workflow/array.slurm" h2o_ref
expect_text "the reference has no result"
"$workflow/one.sh" h2o_ref >said
for share in "1 5" "2 5" "3 4" "4 4"; do
    read -r task jobs <<<"$share"
    expect 0 "$jobs" 0 0 env SLURM_ARRAY_TASK_ID="$task" "$workflow/array.slurm" h2o_ref
done
rm h2o_01xp.sgn
expect 0 1 4 0 env SLURM_ARRAY_TASK_ID=2 "$workflow/array.slurm" h2o_ref
expect 0 0 0 0 "$workflow/report.sh" h2o_ref
expect_text "18 jobs: 18 finished, 0 not"
for result in *.sgn; do
    cmp "$result" "../loop/$result"
done

# What can be wrong with a job, one by one; reports name every reason.
new_set broken
rm h2o_01xm.fchk
sed -i '$d' h2o_01xp.log
expect 1 17 0 2 "$workflow/loop.sh" h2o_ref
expect_text "  h2o_01xm: status 2: stigruz: h2o_01xm.fchk: "
expect_text "  h2o_01xp: h2o_01xp.log does not end with 'Normal termination'"
rm h2o_02ym.sgn
expect 1 0 0 0 "$workflow/report.sh" h2o_ref
expect_text "  h2o_02ym: not run"
expect 1 0 0 1 env STIGRUZ=/none/stigruz "$workflow/loop.sh" h2o_01xm

# A run that ends with status 0 but without a result has failed.
new_set no_result
sed -i '/^Number of atoms/d' h2o_ref.fchk
expect 1 0 0 1 "$workflow/loop.sh" h2o_ref
expect_text "status 0:   Error!"
expect 1 0 0 0 "$workflow/report.sh" h2o_ref

# The text files of jobs, by stand-ins of the programs that make them.
mkdir "$work/dump" "$work/bin"
cd "$work/dump"
cat >"$work/bin/formchk" <<'END'
#!/bin/sh
cp "$1" "$2"
END
cat >"$work/bin/rwfdump" <<'END'
#!/bin/sh
[ "$3" = 635R ] && cp "$1" "$2"
END
chmod +x "$work"/bin/*
echo a | tee a.chk a.rwf b.chk >said
PATH=$work/bin:$PATH expect 1 0 0 1 "$workflow/dump.sh" a b
expect_text "b.cis: FAILED: rwfdump b.rwf"
[ "$(echo ./*.fchk ./*.cis)" = "./a.fchk ./b.fchk ./a.cis" ] || fail "other files: $(ls)"
