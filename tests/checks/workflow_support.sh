# What the checks of the workflow share: sets in a scratch directory, and what commands are expected
# to say. Sourced where the directories of sources, of the build and for the work are known.
# shellcheck shell=bash
: "${source:?}" "${build:?}" "${work:?}"
export STIGRUZ=$build/tools/stigruz SGN_CHECK=$build/tools/sgn_check SGN_DERIVE=
export QM_FILE=$build/tools/qm_file

fail() {
    echo "$*" >&2
    exit 1
}

# new_set NAME [JOB...]: goes to a new directory with the reference and these jobs of the bundled set;
# without any, all of them; with "none", nothing.
new_set() {
    local name
    mkdir "$work/$1"
    cd "$work/$1" || exit
    shift
    if [ "$#" -eq 0 ]; then
        cp -p "$source"/examples/water/h2o_* .
        return
    fi
    if [ "$1" = none ]; then return; fi
    for name in ref "$@"; do
        cp -p "$source/examples/water/h2o_$name".* .
    done
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

expect_text() { grep -qF -e "$1" <<<"$said" || fail "no '$1' in: $said"; }
expect_no_text() { if grep -qF -e "$1" <<<"$said"; then fail "'$1' in: $said"; fi; }

# expect_files NAME...: the files of the directory beside those of jobs.
expect_files() {
    local found
    found=$(find . -mindepth 1 ! -name '*.log' ! -name '*.fchk' ! -name '*.cis' -printf '%P ' |
        tr ' ' '\n' | sort | xargs)
    [ "$found" = "$*" ] || fail "other files: $found instead of $*"
}
