#!/usr/bin/env bash
# report.sh REFERENCE
# Tells how the set in the working directory stands: how many jobs have a result, which do not and
# why, and whether sgn_check finds the results trustworthy (its table is in sgn_check.txt).
# Status 0: all jobs are finished and fine. The tool is $SGN_CHECK, else sgn_check; it may have
# options: SGN_CHECK="sgn_check --no-pairs".
set -o pipefail
# shellcheck source=/dev/null
. "$(dirname "$0")/common.sh"
reference=${1:?"usage: report.sh REFERENCE"}
read -ra check <<<"${SGN_CHECK:-sgn_check}"

if ! is_finished "$reference"; then
    echo "The reference $reference has no result: $(reason "$reference")"
    exit 1
fi
mapfile -t names < <(job_names "$reference")
results=()
missing=()
for name in "${names[@]}"; do
    if is_finished "$name" "$reference"; then
        results+=("$name.sgn")
    else
        missing+=("$name")
    fi
done

echo "${#names[@]} jobs: ${#results[@]} finished, ${#missing[@]} not"
for name in "${missing[@]}"; do
    echo "  $name: $(reason "$name")"
done
status=0
if [ "${#missing[@]}" -gt 0 ]; then status=1; fi

if [ "${#results[@]}" -gt 0 ] && command -v "${check[0]}" >/dev/null; then
    if "${check[@]}" "$reference.sgn" "${results[@]}" >sgn_check.txt 2>&1; then
        echo "sgn_check: all fine"
    else
        echo "sgn_check: there is doubt, see sgn_check.txt"
        status=1
    fi
fi
exit "$status"
