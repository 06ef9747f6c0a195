#!/usr/bin/env bash
# Every header of the library compiles by itself, and may be included twice.
set -euo pipefail
source=$1
compiler=$3

compile() {
    printf '#include "%s"\n#include "%s"\n' "$2" "$2" |
        "$1" -std=c++20 -fsyntax-only -Wall -Wextra -I. -x c++ - || { echo "in $2" >&2; return 1; }
}
export -f compile

cd "$source/lib/src"
find flib -name '*.h' -print0 | xargs -0 -P 2 -I {} bash -c 'compile "$@"' - "$compiler" {}
