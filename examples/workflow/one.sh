#!/usr/bin/env bash
# one.sh NAME [REFERENCE]
# Treats the job NAME of the set in the working directory; the reference itself without REFERENCE.
# A job whose result was made from the files that are there is left alone. Prints one line. What went
# wrong is kept in NAME.err, and the status is then 1. The tool is $STIGRUZ, else stigruz.
set -o pipefail
here=$(dirname "$0")
# shellcheck source=/dev/null
. "$here/common.sh"
[ "$#" -gt 0 ] || complain "usage: one.sh NAME [REFERENCE]"
name=$(job_name "$1") || exit 1
reference=${2:+$(job_name "$2")} || exit 1
tool=${STIGRUZ:-stigruz}

fail() {
    echo "$1" >"$name.err"
    echo "$name: FAILED: $1"
    exit 1
}

if said=$(is_of_another_set "$name" "$reference"); then
    echo "$name: FAILED: $said (to start anew: rm -f -- *.sgn *.made)"
    exit 1
fi
if is_finished "$name" "$reference"; then
    rm -f "$name.err"
    echo "$name: up to date"
    exit
fi
command -v -- "$tool" >/dev/null || fail "$tool is not installed here"
if said=$(missing_file "$name"); then
    [ ! -e "$name.sgn" ] || said+="; what the $name.sgn here was made from is not known"
    fail "$said"
fi
clear_left_over "$name"
# A result that is out of date must not be taken for one by what comes after.
rm -f "$name.sgn" "$name.made"
if [ -n "$reference" ] && ! is_finished "$reference"; then
    fail "the reference has no result: $(reason "$reference")"
fi
if ! tail -n 5 "$name.log" | grep -q "Normal termination"; then
    fail "$name.log does not end with 'Normal termination'"
fi

status=0
made_from=$(made_from "$name" "$reference")
message=$("$tool" "$name.fchk" ${reference:+"$reference.sgn"} 2>&1) || status=$?
# Some messages end a run with status 0; only the result file tells.
if [ "$status" -ne 0 ] || [ ! -e "$name.sgn" ]; then
    fail "status $status: ${message//$'\n'/ }"
fi
if ! printf '%s\nresult %s\n' "$made_from" "$(cksum <"$name.sgn")" >"$name.made.part" ||
    ! mv -f "$name.made.part" "$name.made"; then
    fail "$name.made cannot be written"
fi
rm -f "$name.err"
echo "$name: done"
