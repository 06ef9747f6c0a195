#!/usr/bin/env bash
# The programs that the readers know stand in the table of docs/readers.md, each of their tags once and no
# others, with the class, the banners and the quantities of their rows; every tag has words; and there is a
# fixture of every kind among the tests' files.
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

# What the rows say, by the names of the tags: "NAME tag TAG", "NAME words", "NAME class N", "NAME banner TEXT",
# "NAME natom" for a row of that reader, and "NAME coord last".
rooms=lib/src/flib/qm_file
rows_say() {
    sed -nE 's/^inline constexpr std::string_view ([a-z0-9_]*) = "(.*)";$/\1 tag \2/p
        s/^    \{tag::([a-z0-9_]+), "[^"]+", "[^"]+"\},$/\1 words/p' "$rooms/type_tag.h"
    sed -nE 's/^    \{[0-9]+, [0-9]+, .*, tag::([a-z0-9_]+), (-?[0-9]+), .*/\1 class \2/p' "$rooms/qm_file_type.cpp"
    sed -nE 's/^    \{[0-9]+, [0-9]+, "([^"]*)", tag::([a-z0-9_]+), .*/\2 banner \1/p' "$rooms/qm_file_type.cpp"
    for reader in natom nat coord mass; do
        sed -nE "s/^    \\{tag::([a-z0-9_]+),.*/\\1 $reader/p" "$rooms/qm_file_$reader.cpp"
    done
    awk '/^    \{tag::/ { sub(/^    \{tag::/, ""); name = $0; sub(/,.*/, "", name) }
        name != "" && match($0, /the_(first|last)/) { print name " coord " substr($0, RSTART + 4, RLENGTH - 4); name = "" }' \
        "$rooms/qm_file_coord.cpp"
}
wrong=$(awk -F ' *[|] *' '
    FNR == NR {
        split($0, part, " ")
        text = substr($0, length(part[1]) + length(part[2]) + 3)
        if (part[2] == "tag") name[text] = part[1]
        else if (part[2] == "banner") banners[part[1]] = banners[part[1]] text "\n"
        else { said[part[1], part[2]] = 1; if (text != "") said[part[1], part[2]] = text }
        next
    }
    /^[|] *tag *[|]/ { inside = 1; for (i = 2; i < NF; ++i) title[i] = $i; next }
    inside && !/^[|]/ { inside = 0 }
    inside && !/^[|][-: |]*$/ {
        n = name[$2]
        if (!((n, "words") in said)) print $2 ": has no words in type_tag.h"
        if (said[n, "class"] != $4) print $2 ": its class is " said[n, "class"]
        count = split(banners[n], each, "\n")
        for (i = 1; i < count; ++i) if (index($3, "\"" each[i] "\"") == 0) print $2 ": is recognised by " each[i]
        for (i = 5; i <= 8; ++i) {
            reader = i == 5 ? "natom" : i == 6 ? "nat" : i == 7 ? "coord" : "mass"
            if (((n, reader) in said) != ($i != "-")) print $2 ": " title[i] " are " $i ", other than the rows of " reader
        }
        if (match($7, /^\(?(first|last)/)) {
            which = substr($7, RSTART, RLENGTH)
            sub(/\(/, "", which)
            if (said[n, "coord"] != which) print $2 ": the " said[n, "coord"] " coordinates are read"
        }
    }' <(rows_say) docs/readers.md)
[ -z "$wrong" ] || { echo "docs/readers.md does not tell what the rows do: $wrong" >&2; exit 1; }

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
