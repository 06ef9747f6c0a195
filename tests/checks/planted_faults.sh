#!/usr/bin/env bash
# Every row of the table of faults has four fields, and names a file and a text that stands in it once.
set -euo pipefail
cd "$1"

awk -F '\t' '
    function complain(text) { print "row " NR ": " text >"/dev/stderr"; wrong = 1 }
    # The whole of a file; nothing if there is none.
    function contents(file,    line, text) {
        while ((getline line <file) > 0) text = text line "\n"
        close(file)
        return text
    }
    /^#/ || /^$/ { next }
    NF != 4 { complain(NF " fields"); next }
    $1 != file { whole = contents(file = $1) }
    whole == "" { complain("there is no " $1); next }
    {
        text = $2
        gsub(/<nl>/, "\n", text)
        at = index(whole, text)
        if (at == 0 || index(substr(whole, at + 1), text) > 0)
            complain(file ": \"" $2 "\" does not stand there once")
        if ($2 == $3) complain(file ": \"" $2 "\" stays as it is")
    }
    END { exit wrong }' tests/planted_faults.tsv
