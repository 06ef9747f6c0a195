#!/usr/bin/env bash
# The programs that the readers know stand in the table of docs/readers.md, each of their tags once
# and no others, and there is a fixture of every kind among the tests' files.
set -euo pipefail
cd "$1"
qm_file=$2/tools/qm_file
[ -e docs/readers.md ] || exit 77

tags=$(sed -n 's/^inline constexpr std::string_view [a-z0-9_]* = "\(.*\)";$/\1/p' \
    lib/src/flib/qm_file/type_tag.h | sort)
[ -n "$tags" ] || { echo "no tags in type_tag.h" >&2; exit 1; }

# The first column of the table whose heading is "tag".
documented=$(awk -F ' *[|] *' '
    /^[|] *tag *[|]/ { inside = 1; next }
    inside && !/^[|]/ { inside = 0 }
    inside && !/^[|][-: |]*$/ { gsub(/`/, "", $2); print $2 }' docs/readers.md | sort)
if ! diff <(echo "$tags") <(echo "$documented") >&2; then
    echo "type_tag.h (<) and the table of docs/readers.md (>) differ" >&2
    exit 1
fi

# The test for Molpro outputs cannot succeed, so that no file is recognised as one.
recognised=$(find tests/data -mindepth 2 -type f -exec "$qm_file" type {} \; 2>/dev/null | cut -f1 | sort -u)
missing=$(comm -23 <(grep -v '^MOLPRO$' <<<"$tags") <(echo "$recognised"))
[ -z "$missing" ] || { echo "tests/data has no file of: $missing" >&2; exit 1; }
[ -d tests/data/molpro ] || { echo "tests/data has no file of Molpro" >&2; exit 1; }

# Every row tells on how many real files it was tried, and the README claims no program of which there
# are none in any row.
rows=$(awk -F ' *[|] *' '
    /^[|] *tag *[|]/ { inside = 1; columns = NF; real = NF - 1; if ($real != "real files") exit; next }
    inside && !/^[|]/ { inside = 0 }
    inside && !/^[|][-: |]*$/ && NF == columns && $real != "" { print $2 "\t" $real }' docs/readers.md)
[ "$(wc -l <<<"$rows")" = "$(wc -l <<<"$tags")" ] ||
    { echo "a row of docs/readers.md does not tell its real files" >&2; exit 1; }
claim=$(sed -n "s/^| .qm_file. | what the readers see in output of \(.*\);.*/\1/p" README.md)
[ -n "$claim" ] || { echo "README.md claims no programs" >&2; exit 1; }
program_of() { # TAG
    local name
    name=$(sed -n "s/^inline constexpr std::string_view \\([a-z0-9_]*\\) = \"$1\";$/\\1/p" \
        lib/src/flib/qm_file/type_tag.h)
    sed -n "s/^    {tag::$name, \"\\([^\"]*\\)\".*/\\1/p" lib/src/flib/qm_file/type_tag.h
}
tried=$(while IFS=$'\t' read -r tag real; do
    case $real in none*) ;; *) program_of "$tag" ;; esac
done <<<"$rows" | sort -u)
claimed=$(sed 's/, /\n/g; s/ and /\n/g' <<<"$claim" | sort)
if ! diff <(echo "$tried") <(echo "$claimed") >&2; then
    echo "programs with real files (<) and those that README.md claims (>) differ" >&2
    exit 1
fi
