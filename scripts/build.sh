#!/usr/bin/env bash
# Configures and builds a directory, and shows what the compiler said only if it failed:
# build.sh DIRECTORY TARGET [CMAKE-OPTIONS...]
set -euo pipefail
cd "$(dirname "$0")/.."

directory=$1
target=$2
shift 2
log=$(mktemp)
trap 'rm -f "$log"' EXIT

echo "Building $target in $directory"
if ! { cmake -S . -B "$directory" "$@" &&
    cmake --build "$directory" --target "$target" -j "$(nproc)"; } >"$log" 2>&1; then
    cat "$log" >&2
    exit 1
fi
