#!/usr/bin/env bash
# dump.sh NAME...
# Makes of each Gaussian job's NAME.chk and NAME.rwf the text files that stigruz reads: NAME.fchk and
# NAME.cis. For NAME the name of any file of the job may stand, so that a whole set is treated by
#
#   dump.sh *.rwf        all jobs that have a read-write file
#   dump.sh h2o_*.gjf    all jobs that should have one: what is missing is told
#
# Files that are there and not older are left alone. Needs Gaussian's formchk and rwfdump. Status 1:
# not all files could be made.
set -o pipefail
# shellcheck source=/dev/null
. "$(dirname "$0")/common.sh"
if [ "$#" -eq 0 ]; then
    complain "makes NAME.fchk and NAME.cis of NAME.chk and NAME.rwf; usage: dump.sh NAME...
(a whole set: dump.sh *.rwf)"
fi

made=0
kept=0
failed=0

# make_text OUTPUT INPUT TOOL [ARGUMENTS]: TOOL INPUT OUTPUT ARGUMENTS. The output appears only if the
# tool succeeds.
make_text() {
    local output=$1 input=$2 tool=$3
    shift 3
    # The time of the last change counts: copies may keep the older time of modification.
    if [ -e "$output" ] && [ -z "$(find -L "$input" -newercc "$output" 2>/dev/null)" ]; then
        kept=$((kept + 1))
        return
    fi
    if [ ! -e "$input" ]; then
        echo "$output: FAILED: there is no $input"
    elif ! command -v "$tool" >/dev/null; then
        echo "$output: FAILED: $tool is not installed here"
    elif "$tool" "$input" "$output.part" "$@" >"$output.err" 2>&1 && [ -s "$output.part" ] &&
        mv -f "$output.part" "$output"; then
        rm -f "$output.err"
        echo "$output: done"
        made=$((made + 1))
        return
    else
        rm -f "$output.part"
        echo "$output: FAILED: $tool $input (see $output.err)"
    fi
    failed=$((failed + 1))
}

declare -A seen=()
for argument in "$@"; do
    name=$(job_name "$argument") || exit 1
    [ -z "${seen[$name]-}" ] || continue
    seen[$name]=1
    make_text "$name.fchk" "$name.chk" formchk
    # The amplitudes are file 635 of the read-write file, dumped as reals.
    make_text "$name.cis" "$name.rwf" rwfdump 635R
done
echo "${#seen[@]} jobs: $made files made, $kept up to date, $failed failed"
[ "$failed" -eq 0 ]
