#!/usr/bin/env bash
# All shell scripts, whatever their names, are without doubtful constructs.
set -euo pipefail
cd "$1"
command -v shellcheck >/dev/null || exit 77
mapfile -t completions < <(find completions -maxdepth 1 -type f)
shellcheck "${completions[@]}" examples/workflow/*.sh examples/workflow/*.slurm scripts/*.sh \
    tests/checks/*.sh .ci/run
