#!/usr/bin/env bash
# No file of the repository is larger than 400 kB.
set -euo pipefail
cd "$1"
git rev-parse --is-inside-work-tree >/dev/null 2>&1 || exit 77
large=$(git ls-files -z | sed -z 's:^:./:' |
    xargs -0 sh -c 'find "$@" -maxdepth 0 -size +400000c' -)
[ -z "$large" ] || { echo "too large: $large" >&2; exit 1; }
