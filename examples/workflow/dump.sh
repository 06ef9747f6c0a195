#!/usr/bin/env bash
# dump.sh NAME...
# Makes of each Gaussian job's NAME.chk the text files that stigruz reads: NAME.fchk and NAME.cis. For
# NAME the name of any file of the job may stand, so that a whole set is treated by
#
#   dump.sh *.chk        all jobs that have a checkpoint
#   dump.sh h2o_*.gjf    all jobs that should have one: what is missing is told
#
# Where a checkpoint gives no amplitudes, they come from NAME.rwf, if that is there. Files that are there
# and not older are left alone. Needs Gaussian's formchk and rwfdump. Status 1: not all files could be
# made.
set -o pipefail
# shellcheck source=/dev/null
. "$(dirname "$0")/common.sh"
if [ "$#" -eq 0 ]; then
    complain "makes NAME.fchk and NAME.cis of NAME.chk; usage: dump.sh NAME...
(a whole set: dump.sh *.chk)"
fi

made=0
kept=0
failed=0

# is_current OUTPUT INPUT...: whether OUTPUT is there and no INPUT is newer. The time of the last change
# counts: copies may keep the older time of modification.
is_current() {
    local output=$1
    shift
    [ -e "$output" ] && [ -z "$(find -L "$@" -newercc "$output" 2>/dev/null)" ]
}

# has_line FILE LINE: whether there is a line like LINE; else shows the end of the file.
has_line() {
    grep -q -e "$2" "$1" && return
    echo "without a line like '$2':"
    tail -n 5 "$1"
    return 1
}

# make_text OUTPUT LINE INPUT TOOL [ARGUMENTS]: TOOL INPUT OUTPUT ARGUMENTS. OUTPUT appears only if the
# tool succeeds and there is a line like LINE in it; else `why` tells why not.
make_text() {
    local output=$1 line=$2 input=$3 tool=$4
    shift 4
    if [ ! -e "$input" ]; then
        why="there is no $input"
    elif ! command -v "$tool" >/dev/null; then
        why="$tool is not installed here"
    elif { "$tool" "$input" "$output.part" "$@" && has_line "$output.part" "$line"; } \
        >>"$output.err" 2>&1 && mv -f "$output.part" "$output"; then
        rm -f "$output.err"
        return 0
    else
        rm -f "$output.part"
        why="$tool $input${1:+ $1} (see $output.err)"
    fi
    return 1
}

tell_made() {
    echo "$1: done"
    made=$((made + 1))
}
tell_failed() {
    echo "$1: FAILED: $2"
    failed=$((failed + 1))
}

# The amplitudes are record 635, dumped as reals. What rwfdump prints of a file without it is no dump.
amplitudes_from() { make_text "$name.cis" '^ *Dump of file  *635 ' "$1" rwfdump 635R; }

declare -A seen=()
for argument in "$@"; do
    name=$(job_name "$argument") || exit 1
    [ -z "${seen[$name]-}" ] || continue
    seen[$name]=1
    if is_current "$name.fchk" "$name.chk"; then
        kept=$((kept + 1))
    else
        rm -f "$name.fchk.err"
        if make_text "$name.fchk" . "$name.chk" formchk; then
            tell_made "$name.fchk"
        else
            tell_failed "$name.fchk" "$why"
        fi
    fi
    if is_current "$name.cis" "$name.chk" "$name.rwf"; then
        kept=$((kept + 1))
        continue
    fi
    rm -f "$name.cis.err"
    if amplitudes_from "$name.chk"; then
        tell_made "$name.cis"
    elif first=$why; [ ! -e "$name.rwf" ]; then
        tell_failed "$name.cis" "$first"
    elif amplitudes_from "$name.rwf"; then
        tell_made "$name.cis: from $name.rwf, not $name.chk"
    else
        tell_failed "$name.cis" "$first; $why"
    fi
done
echo "${#seen[@]} jobs: $made files made, $kept up to date, $failed failed"
[ "$failed" -eq 0 ]
