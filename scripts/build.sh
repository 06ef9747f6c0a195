#!/usr/bin/env bash
# Configures and builds a directory: build.sh [-j N] DIRECTORY TARGET [CMAKE-OPTIONS...]
# N processes at a time, else as many as there are processors.
# What CMake says of the configuration is shown only if it fails or leaves something out.
set -euo pipefail
cd "$(dirname "$0")/.."

jobs=$(nproc)
if [ "${1:-}" = -j ]; then
    jobs=${2:?-j needs a number}
    shift 2
fi

directory=$1
target=$2
shift 2
log=$(mktemp)
trap 'rm -f "$log"' EXIT

# A directory keeps the generator it was first configured with.
generator=()
if [ ! -e "$directory/CMakeCache.txt" ] && command -v ninja >/dev/null; then
    generator=(-G Ninja)
fi

echo "Building $target in $directory"
if ! cmake -S . -B "$directory" "${generator[@]}" "$@" >"$log" 2>&1; then
    cat "$log" >&2
    exit 1
fi
grep 'left out' "$log" || true
cmake --build "$directory" --target "$target" -j "$jobs"
