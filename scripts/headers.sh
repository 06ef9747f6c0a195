#!/usr/bin/env bash
# Prints the map of the headers that are installed, docs/headers.md: what the first line of each says.
#   scripts/headers.sh >docs/headers.md
set -euo pipefail
cd "$(dirname "$0")/.."

cat <<END
# The headers

What is in which header, as its first line tells it; \`scripts/headers.sh\` makes this page. By task:
[library.md](library.md), [sgn.md](sgn.md).
END
room=''
find lib/src -name '*.h' ! -path '*/detail/*' | LC_ALL=C sort | while read -r path; do
    header=${path#lib/src/}
    if [ "${header%/*}" != "$room" ]; then
        room=${header%/*}
        printf '\n## %s\n\n| Header | |\n|---|---|\n' "$room"
    fi
    # shellcheck disable=SC2016
    printf '| `%s` | %s |\n' "${header##*/}" "$(sed -n '1s:^// ::p' "$path")"
done
