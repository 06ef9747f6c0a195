#!/usr/bin/env bash
# loop.sh REFERENCE
# Treats the whole set in the working directory, one job after the other, and tells how it went.
# Started again, it goes on with what is not finished.
set -o pipefail
here=$(dirname "$0")
# shellcheck source=/dev/null
. "$here/common.sh"
reference=${1:?"usage: loop.sh REFERENCE"}

"$here/one.sh" "$reference" || exit 1
mapfile -t names < <(job_names "$reference")
number=0
for name in "${names[@]}"; do
    number=$((number + 1))
    printf '[%d/%d] ' "$number" "${#names[@]}"
    "$here/one.sh" "$name" "$reference"
done
exec "$here/report.sh" "$reference"
