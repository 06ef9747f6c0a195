#!/usr/bin/env bash
# The documentation of the library's interface is made without warnings.
set -euo pipefail
command -v doxygen >/dev/null || exit 77
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$1/scripts/docs.sh" "$work" >/dev/null
# Routines of every room are in it.
for routine in read_record find_last search_word_back qm_file_coord get_ci_density_nbasis_nbsuse \
    nat_to_symbol; do
    grep -rqF ">$routine<" "$work/html" || { echo "$routine is not in it" >&2; exit 1; }
done
