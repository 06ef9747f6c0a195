#!/usr/bin/env bash
# All shell scripts, whatever their names, are without doubtful constructs.
set -euo pipefail
cd "$1"
command -v shellcheck >/dev/null || exit 77
shellcheck completions/* examples/workflow/*.sh examples/workflow/*.slurm scripts/*.sh \
    tests/checks/*.sh .ci/run
