#!/usr/bin/env bash
# Does to a copy of the library what CONTRIBUTING.md tells whoever adds a program, and nothing else, builds
# what changed, and asks for the program of the example: the kind, and every quantity that has a row.
set -euo pipefail
source=$1
build=$2
compiler=$3

archive=$build/lib/libflib.a
[ -e "$source/CONTRIBUTING.md" ] && [ -e "$archive" ] || exit 77
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
    echo "$*" >&2
    exit 1
}

cp -r "$source/lib/src/flib" "$work/flib"
cd "$work"

# The section's blocks of code, each in a file of its own that begins with the name of the source told
# before it: at the margin what stands for itself, indented a row of the source's table. And the example.
awk '
    /^## / { inside = /Adding a program to the readers/ }
    !inside { next }
    /^```cpp/ { code = 1; out = sprintf("part_%02d", ++parts); print file >out; next }
    /^```/ { code = 0; next }
    code && /^\.\.\.$/ { out = sprintf("part_%02d", ++parts); print file >out; next }
    code { print >out; next }
    /^    / { if ($1 == "...") print "" >"example"; else if (!parts) print substr($0, 5) >"example" }
    /^$/ && !parts && seen { print "" >"example" }
    { seen = seen || /^    / }
    { while (match($0, /`[a-z_\/]+\.(h|cpp)`/)) { file = substr($0, RSTART + 1, RLENGTH - 2); $0 = substr($0, RSTART + RLENGTH) } }
' "$source/CONTRIBUTING.md"
if [ ! -s example ] || [ ! -e part_01 ]; then fail "no recipe in CONTRIBUTING.md"; fi

changed=()
for part in part_*; do
    name=$(head -n 1 "$part")
    target=flib/qm_file/$name
    [ -e "$target" ] || fail "the recipe names $name, which is not there"
    tail -n +2 "$part" >text
    [ -s text ] || fail "an empty piece of the recipe, for $name"
    if grep -q '^    ' <(head -n 1 text); then
        # At the end of the table: of detections, of kinds in words, or of the reader's.
        awk 'FNR == NR { text = text $0 "\n"; next }
            /^(inline )?constexpr .*\[\] = \{$/ { table = 1 }
            table && /^};$/ { printf "%s", text; table = 0; done = 1 }
            { print }
            END { exit !done }' text "$target" >new || fail "no table in $name"
    elif [[ $name == *.h ]]; then
        awk 'FNR == NR { text = text $0 "\n"; next }
            !done && /^}  \/\/ namespace/ { printf "%s", text; done = 1 }
            { print }' text "$target" >new
    else
        awk 'FNR == NR { text = text $0 "\n"; next }
            !done && /^constexpr .*\[\] = \{$/ { printf "%s", text; done = 1 }
            { print }
            END { exit !done }' text "$target" >new || fail "no table in $name"
    fi
    mv new "$target"
    [[ $name != *.cpp ]] || changed+=("$target")
done
mapfile -t changed < <(printf '%s\n' "${changed[@]}" flib/facts/file_facts.cpp "$source/tests/checks/consumer/new_program.cpp" | sort -u)

# shellcheck disable=SC2016 # the inner shell's own
printf '%s\n' "${changed[@]}" | xargs -P 2 -I {} sh -c '"$1" -std=c++20 -O0 -Wall -Wextra -Werror -I. -c "$2" -o "$(basename "$2" .cpp).o"' - "$compiler" {}
"$compiler" ./*.o "$archive" -o program

expected="PSI4 is a Psi4 output, version 1.3.2
2 atoms, last of 1 tables
8 0.222988 15.994915
1 -0.891951 1.007825"
said=$(./program example) || fail "the program says: $said"
diff <(echo "$expected") <(grep -v '^no ' <<<"$said") >&2 || fail "expected (<) and said (>) differ"
missing=$(grep '^no ' <<<"$said" | grep -v ': not read from a Psi4 output$' | grep -vE '^no (ONIOM layers: not an ONIOM job|dumped record: not a dump of a read-write file)$' || true)
[ -z "$missing" ] || fail "for other reasons than that there is no row: $missing"
