#!/usr/bin/env bash
# Every header of the libraries compiles by itself, and may be included twice; those that are installed
# without Eigen.
set -euo pipefail
source=$1
compiler=$3

compile() {
    printf '#include "%s"\n#include "%s"\n' "$2" "$2" |
        "$1" -std=c++20 -fsyntax-only -Wall -Wextra -I. -x c++ - || { echo "in $2" >&2; return 1; }
}
export -f compile

cd "$source/lib/src"
find flib sgn -name '*.h' ! -path 'sgn/*/detail/*' -print0 | xargs -0 -P 2 -I {} bash -c 'compile "$@"' - "$compiler" {}
