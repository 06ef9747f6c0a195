#!/usr/bin/env bash
# The manual pages render without complaints, and they and the completions offer what --help does:
# the same options, quantities and routines.
set -euo pipefail
source=$1
build=$2
pages=$build/man

fail() {
    echo "$*" >&2
    exit 1
}

rendered=0
for page in "$pages"/*.[1-9]; do
    if command -v mandoc >/dev/null; then
        said=$(mandoc -Tlint -Wwarning "$page") || fail "$page: $said"
        rendered=1
    fi
    if command -v groff >/dev/null; then
        said=$(groff -man -ww -z -Tutf8 "$page" 2>&1)
        [ -z "$said" ] || fail "$page: $said"
        rendered=1
    fi
done

# section SECTION PAGE: a section of a page without markup, one line per tag of a list.
section() {
    awk -v wanted="$1" '
        /^\.SH/ { gsub(/"/, ""); sub(/^\.SH /, ""); inside = ($0 == wanted); next }
        inside' "$pages/$2" | sed -e 's/\\-/-/g' -e 's/\\f.//g'
}

# tags SECTION PAGE: the first word of every tag in a section.
tags() {
    section "$@" | awk '/^\.TP/ { getline; sub(/^\.[A-Z]+ /, ""); sub(/=.*/, "="); print $1 }' | sort
}

same() {
    diff <(echo "$2") <(echo "$3") >&2 || fail "$1: --help (<) and the other (>) differ"
}

words_of() { tr -s '[:space:]' '\n' | grep . | sort -u; }

# completed TOOL VARIABLE: the words of a variable in a completion.
completed() {
    tr '\n' ' ' <"$source/completions/$1" | sed -n "s/.*local $2=\"\([^\"]*\)\".*/\1/p" | words_of
}

for tool in qm_file sgn_check sgn_derive sgn_displace sgn_states; do
    [ -x "$build/tools/$tool" ] || continue
    help=$("$build/tools/$tool" --help)
    options=$(grep -oE -e '--[a-z][a-z-]*=?' <<<"$help" | sort -u)
    [ -n "$options" ] || fail "$tool --help shows no options"
    same "options of $tool, manual page" "$options" "$(tags OPTIONS "$tool.1")"
    same "options of $tool, completion" "$options" "$(completed "$tool" options)"
    version=$("$build/tools/$tool" --version)
    head -n 1 "$pages/$tool.1" | grep -qF "stigruz ${version#"$tool "}\"" ||
        fail "the page of $tool is of another version"
done

help=$("$build/tools/qm_file" --help)
quantities=$(awk '/^QUANTITY/ { inside = 1; next } inside && !NF { exit } inside { print $1 }' \
    <<<"$help" | sort)
same "quantities, manual page" "$quantities" "$(tags QUANTITIES qm_file.1)"
same "quantities, completion" "$quantities" "$(completed qm_file quantities)"

routines=$(sed -n 's/^  qm_file probe //p' <<<"$help" | sort)
same "routines and their inputs, manual page" "$routines" "$(section ROUTINES qm_file.1 |
    awk '/^\.TP/ { getline; gsub(/"/, ""); $1 = ""; print substr($0, 2) }' | tr -s ' ' | sort)"
same "routines, completion" "$(cut -d' ' -f1 <<<"$routines" | sort -u)" \
    "$(completed qm_file routines)"

# Numbers in parentheses are the defaults; both list the thresholds in the same order.
same "defaults of sgn_check" \
    "$("$build/tools/sgn_check" --help | grep -oE '\([0-9.]+\)$')" \
    "$(section OPTIONS sgn_check.1 | grep -oE '\([0-9.]+\)$')"
[ "$rendered" -eq 1 ] || exit 77
