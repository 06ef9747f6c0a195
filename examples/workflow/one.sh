#!/usr/bin/env bash
# one.sh NAME [REFERENCE]
# Treats the job NAME of the set in the working directory; the reference itself without REFERENCE.
# A job whose result is up to date is left alone. Prints one line. What went wrong is kept in
# NAME.err, and the status is then 1. The tool is $STIGRUZ, else stigruz.
set -o pipefail
here=$(dirname "$0")
# shellcheck source=/dev/null
. "$here/common.sh"
name=${1:?"usage: one.sh NAME [REFERENCE]"}
reference=${2-}
tool=${STIGRUZ:-stigruz}

fail() {
    echo "$1" >"$name.err"
    echo "$name: FAILED: $1"
    exit 1
}

if is_finished "$name" "$reference"; then
    rm -f "$name.err"
    echo "$name: up to date"
    exit
fi
command -v "$tool" >/dev/null || fail "$tool is not installed here"
# A result that is out of date must not be taken for one by what comes after.
rm -f "$name.sgn"
if [ -n "$reference" ] && [ ! -e "$reference.sgn" ]; then
    fail "the reference has no result, $reference.sgn"
fi
if [ -e "$name.log" ] && ! tail -n 5 "$name.log" | grep -q "Normal termination"; then
    fail "$name.log does not end with 'Normal termination'"
fi

status=0
message=$("$tool" "$name.fchk" ${reference:+"$reference.sgn"} 2>&1) || status=$?
# Some messages end a run with status 0; only the result file tells.
if [ "$status" -ne 0 ] || [ ! -e "$name.sgn" ]; then
    fail "status $status: ${message//$'\n'/ }"
fi
rm -f "$name.err"
echo "$name: done"
