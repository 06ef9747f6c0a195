#!/usr/bin/env bash
# parallel.sh REFERENCE [PROCESSES] [JOB...]
# Treats the whole set in the working directory, PROCESSES jobs at a time (as many as there are
# processors), and tells how it went (see report.sh). Started again, it goes on with what is not
# finished. Which jobs: see jobs.sh.
set -o pipefail
here=$(dirname "$0")
# shellcheck source=/dev/null
. "$here/common.sh"
[ "$#" -gt 0 ] || complain "usage: parallel.sh REFERENCE [PROCESSES] [JOB...]"
reference=$(job_name "$1") || exit 1
shift
processes=$(nproc)
if [[ ${1-} =~ ^[1-9][0-9]*$ ]]; then
    processes=$1
    shift
fi
jobs=()
select_jobs "$reference" "$@"
require_one_set "$reference" "${jobs[@]}"

"$here/one.sh" "$reference" || exit 1
number=0
while IFS= read -r line; do
    number=$((number + 1))
    printf '[%d/%d] %s\n' "$number" "${#jobs[@]}" "$line"
done < <(printf '%s\0' "${jobs[@]}" |
    xargs -0 -P "$processes" -I {} "$here/one.sh" {} "$reference")
exec "$here/report.sh" "$reference" "$@"
