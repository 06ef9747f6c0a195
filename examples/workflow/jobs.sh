#!/usr/bin/env bash
# jobs.sh REFERENCE [JOB...]
# Lists the jobs of the set in the working directory, those that all scripts take: without a JOB those
# of the reference SET_ref that are named as sgn_displace names them (SET_01xp, ...), else all that
# have a log. JOB is a name, a pattern in quotes ('disp_*'), or @FILE with a name on each line.
set -o pipefail
# shellcheck source=/dev/null
. "$(dirname "$0")/common.sh"
[ "$#" -gt 0 ] || complain "usage: jobs.sh REFERENCE [JOB...]"
reference=$(job_name "$1") || exit 1
shift
jobs=()
select_jobs "$reference" "$@"
printf '%s\n' "${jobs[@]}"
