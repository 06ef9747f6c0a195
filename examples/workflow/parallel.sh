#!/usr/bin/env bash
# parallel.sh REFERENCE [PROCESSES]
# Treats the whole set in the working directory, PROCESSES jobs at a time (as many as there are
# processors), and tells how it went. Started again, it goes on with what is not finished.
set -o pipefail
here=$(dirname "$0")
# shellcheck source=/dev/null
. "$here/common.sh"
reference=${1:?"usage: parallel.sh REFERENCE [PROCESSES]"}
processes=${2:-$(nproc)}

"$here/one.sh" "$reference" || exit 1
number=$(job_names "$reference" | wc -l)
job_names "$reference" | tr '\n' '\0' |
    xargs -0 -r -P "$processes" -I {} "$here/one.sh" {} "$reference" |
    awk -v number="$number" '{ printf "[%d/%d] %s\n", NR, number, $0; fflush() }'
exec "$here/report.sh" "$reference"
