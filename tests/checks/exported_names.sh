#!/usr/bin/env bash
# What the shared library shows is what the installed headers declare: every function that they do not
# define themselves, and nothing of detail/.
set -euo pipefail
source=$1
build=$2

fail() {
    echo "$*" >&2
    exit 1
}

cd "$source"
library=$build/lib/libflib.so
[ -e "$library" ] || exit 77
mapfile -t headers < <(find lib/src/flib -name '*.h' ! -path '*/detail/*')

# Names of the functions that a header declares without a body, one a line.
declared=$(awk '
    function drop(text) { gsub(/\\./, "", text); gsub(/"[^"]*"/, "", text); gsub(/\047.\047/, "", text); return text }
    function in_body(    i) { for (i = 1; i <= depth; ++i) if (kind[i] == "body") return 1; return 0 }
    FNR == 1 { depth = 0; parentheses = 0; statement = "" }
    /^#/ { next }
    {
        line = drop($0)
        sub(/\/\/.*/, "", line)
        for (i = 1; i <= length(line); ++i) {
            c = substr(line, i, 1)
            if (c == "{") {
                scope = parentheses == 0 && statement ~ /(^|[ \t])(namespace|class|struct)[ \t]/ && statement !~ /\(/ && !in_body()
                kind[++depth] = scope ? "scope" : "body"
                if (scope) statement = ""
            } else if (c == "}") {
                --depth
                if (!in_body() && parentheses == 0 && statement ~ /\(/) statement = ""
            } else if (!in_body()) {
                if (c == "(") ++parentheses
                if (c == ")") --parentheses
                if (c == ";" && parentheses == 0) {
                    if (statement ~ /\(/ && statement !~ /(^|[ \t])(inline|constexpr|template|using|static_assert|friend)[ \t(]|= *(default|delete)/) {
                        name = substr(statement, 1, index(statement, "(") - 1)
                        gsub(/[ \t]+$/, "", name)
                        sub(/.*[^A-Za-z0-9_~]/, "", name)
                        print name
                    }
                    statement = ""
                } else statement = statement c
                if (c == ":" && statement ~ /(public|private|protected):$/) statement = ""
            }
        }
        statement = statement " "
    }' "${headers[@]}" | sort -u)

# shown KIND: the last names of the symbols of this kind.
shown() {
    nm -DC --defined-only --format=posix "$library" | grep -E " [$1] " | sed -E 's/^(typeinfo|typeinfo name|vtable) for //; s/ [A-Za-z] [0-9a-f]+( [0-9a-f]+)?$//' |
        sed -E 's/@.*//; s/\[abi:[a-z0-9]*\]//g; s/\(.*//; s/<.*>//; s/.*:://' | sort -u
}

diff <(echo "$declared") <(shown T) >&2 || fail "declared in installed headers (<) and shown (>) differ"
for name in $(shown VWu); do
    grep -qwF -e "${name#"~"}" "${headers[@]}" || fail "$name is shown, but in no installed header"
done
