#!/usr/bin/env bash
# Makes the library's interface documentation of its headers, in DIRECTORY/html: docs.sh [DIRECTORY]
# (build-docs). Fails on warnings.
set -euo pipefail
cd "$(dirname "$0")/.."

command -v doxygen >/dev/null || scripts/setup.sh docs
version=$(sed -n 's/^project(stigruz VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
output=${1:-build-docs}
mkdir -p "$output"
sed -e "s:@VERSION@:$version:" -e "s:@OUTPUT@:$output:" docs/Doxyfile.in >"$output/Doxyfile"
doxygen "$output/Doxyfile"
echo "See $output/html/index.html"
