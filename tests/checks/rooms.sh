#!/usr/bin/env bash
# Includes point down the house: from tools to what they share, from the Python module, to sgn, to flib, and
# within these in no circle of rooms.
# Headers that are installed show nothing of Eigen, and no detail; nobody else includes a library's detail.
set -euo pipefail
cd "$1"

status=0
complain() {
    echo "$*" >&2
    status=1
}

# arrows: "ROOM ROOM FILE HEADER" for every include of a header of ours; a room is a directory below
# lib/src/flib, lib/src/sgn or tools, detail/ being a part of it.
arrows() {
    grep -roE --include='*.h' --include='*.cpp' '^#include "[^"]+"' lib/src tools |
        sed -nE 's/^([^:]*):#include "([^"]*)"$/\1 \2/p' |
        awk '
            function room(path) {
                sub(/^lib\/src\//, "", path)
                sub(/^tools\//, "", path)
                split(path, part, "/")
                return part[1] == "flib" || part[1] == "sgn" ? part[1] "/" part[2] : "tools/" part[1]
            }
            { from = room($1); to = room($2); if (from != to) print from, to, $1, $2 }'
}

while read -r from to file header; do
    case $from/$to in
        tools/*/tools/common) ;;
        flib/*/sgn/* | flib/*/tools/* | sgn/*/tools/* | tools/common/tools/*) complain "$file includes $header: upwards" ;;
    esac
done < <(arrows)

circle=$(arrows | awk '{ print $1, $2 }' | sort -u | tsort 2>&1 >/dev/null || true)
[ -z "$circle" ] || complain "rooms in a circle: $circle"

inner=$(grep -rnE '^#include "(flib|sgn)/[a-z_]+/detail/' tools python || true
    grep -rnE '^#include "flib/[a-z_]+/detail/' lib/src/sgn || true
    grep -rnE --include='*.h' --exclude-dir=detail '^#include "[a-z_/]*/detail/' lib/src || true)
[ -z "$inner" ] || complain "includes of what is not installed: $inner"

tools=$(grep -rnE '^#include "[a-z_]+/' python | grep -vE '"(flib|sgn)/' || true)
[ -z "$tools" ] || complain "the Python module includes of tools: $tools"

foreign=$(grep -rlE --include='*.h' --exclude-dir=detail '#include [<"](Eigen|CLI|nlohmann)/' lib/src || true)
[ -z "$foreign" ] || complain "installed headers that need other libraries: $foreign"
exit $status
