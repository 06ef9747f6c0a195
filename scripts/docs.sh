#!/usr/bin/env bash
# Makes the library's interface documentation of its headers, in build-docs/html. Fails on warnings.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh docs
version=$(sed -n 's/^project(stigruz VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
output=build-docs
mkdir -p "$output"
sed -e "s:@VERSION@:$version:" -e "s:@OUTPUT@:$output:" docs/Doxyfile.in >"$output/Doxyfile"
doxygen "$output/Doxyfile"
echo "See $output/html/index.html"
