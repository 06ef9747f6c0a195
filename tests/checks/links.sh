#!/usr/bin/env bash
# Every link on a page leads to a file, here and among the installed pages.
set -euo pipefail
source=$1
build=$2

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --component tools --prefix "$work" >/dev/null

# links PAGE: where its links lead, without those to other sites and without places on a page.
links() {
    # Without blocks of code.
    sed "/^[\`]\{3\}/,/^[\`]\{3\}/d" "$1" | grep -oE '\]\([^)]+\)' |
        sed -e 's/^](//' -e 's/)$//' -e 's/#.*//' | grep -v '://' || true
}

status=0
cd "$source"
for page in ./*.md docs/*.md examples/*/*.md; do
    while read -r link; do
        for tree in "$source" "$work/share/doc/stigruz"; do
            if [ -n "$link" ] && [ ! -e "$tree/$(dirname "$page")/$link" ]; then
                echo "$page: no $link in $tree" >&2
                status=1
            fi
        done
    done < <(links "$page")
done
exit "$status"
