#!/usr/bin/env bash
# dump.sh NAME...
# Makes of each Gaussian job's NAME.chk and NAME.rwf the text files that stigruz reads: NAME.fchk and
# NAME.cis. Files that are there and not older are left alone. Needs Gaussian's formchk and rwfdump.
set -o pipefail

# make_text OUTPUT INPUT TOOL [ARGUMENTS]: TOOL INPUT OUTPUT ARGUMENTS. The output appears only if the
# tool succeeds.
make_text() {
    local output=$1 input=$2 tool=$3
    shift 3
    if [ -e "$output" ] && [ ! "$input" -nt "$output" ]; then return 0; fi
    if "$tool" "$input" "$output.part" "$@" >"$output.err" 2>&1 && [ -s "$output.part" ]; then
        mv -f "$output.part" "$output" && rm -f "$output.err"
        return
    fi
    rm -f "$output.part"
    echo "$output: FAILED: $tool $input (see $output.err)"
    return 1
}

status=0
for name in "$@"; do
    make_text "$name.fchk" "$name.chk" formchk || status=1
    # The amplitudes are file 635 of the read-write file, dumped as reals.
    make_text "$name.cis" "$name.rwf" rwfdump 635R || status=1
done
exit "$status"
