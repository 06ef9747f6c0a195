#!/usr/bin/env bash
# loop.sh REFERENCE [JOB...]
# Treats the whole set in the working directory, one job after the other, and tells how it went (see
# report.sh). Started again, it goes on with what is not finished. Which jobs: see jobs.sh.
set -o pipefail
here=$(dirname "$0")
# shellcheck source=/dev/null
. "$here/common.sh"
[ "$#" -gt 0 ] || complain "usage: loop.sh REFERENCE [JOB...]"
reference=$(job_name "$1") || exit 1
shift
jobs=()
select_jobs "$reference" "$@"
require_one_set "$reference" "${jobs[@]}"

"$here/one.sh" "$reference" || exit 1
number=0
for name in "${jobs[@]}"; do
    number=$((number + 1))
    printf '[%d/%d] ' "$number" "${#jobs[@]}"
    "$here/one.sh" "$name" "$reference"
done
exec "$here/report.sh" "$reference" "$@"
