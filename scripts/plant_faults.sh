#!/usr/bin/env bash
# Plants faults, one at a time, in a copy of the tree and tells which of them the tests do not see.
#   plant_faults.sh [-j JOBS] [-t TABLE] [-d DIRECTORY] [-s] [-n] [PATTERN...]
# A PATTERN is a part of a file's name (a room, a file): only faults in such files are planted. Each
# job has a copy of its own in DIRECTORY, which is kept for the next time if it is named. The
# working tree is only read. At first all tests must pass without a fault; -s leaves that out. With
# -n only the programs of tests that are nearest to a fault are run, which is quick, and may do the others
# injustice.
#
# The table (tests/planted_faults.tsv) has a fault a line, its fields separated by tabs: the file,
# a text that stands there once, the text instead of it (<nl> is the end of a line in both), and what
# would go wrong. Status 1: a fault was not seen, or a row of the table is no longer right.
set -euo pipefail
cd "$(dirname "$0")/.."

jobs=1 table=tests/planted_faults.tsv directory='' sound='' near_only=
while getopts j:t:d:sn option; do
    case $option in
        j) jobs=$OPTARG ;;
        t) table=$OPTARG ;;
        d) directory=$OPTARG ;;
        s) sound=yes ;;
        n) near_only=yes ;;
        *) exit 2 ;;
    esac
done
shift $((OPTIND - 1))
patterns=("$@")

longest_run=300 # seconds; a program of tests that takes longer hangs
if [ -z "$directory" ]; then
    directory=$(mktemp -d)
    trap 'rm -rf "$directory"' EXIT
fi
mkdir -p "$directory"
directory=$(cd "$directory" && pwd)
options=(-DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG= -DSTIGRUZ_SHARED=OFF
    -DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST)
if command -v ninja >/dev/null; then options+=(-G Ninja); fi
if command -v ld.lld >/dev/null; then options+=(-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld); fi
if command -v ccache >/dev/null; then
    options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    export CCACHE_BASEDIR=$directory CCACHE_NOHASHDIR=1
    export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
fi

# copy_tree TO: brings a copy up to date; what has not changed keeps its time, so that it need not
# be built again.
copy_tree() {
    local file
    git ls-files -co --exclude-standard -- . ':!fuzz/corpus' |
        while read -r file; do [ ! -f "$file" ] || echo "$file"; done | sort >"$1.files"
    mkdir -p "$1"
    (cd "$1" && find . -path ./build -prune -o -type f -print) | sed 's:^\./::' | sort |
        comm -13 "$1.files" - | while read -r file; do rm "$1/$file"; done
    while read -r file; do
        cmp -s "$file" "$1/$file" || { mkdir -p "$1/$(dirname "$file")" && cp "$file" "$1/$file"; }
    done <"$1.files"
}

build() { # build TREE TARGET
    cmake --build "$1/build" --target "$2" -j 2 >"$1.log" 2>&1
}

# programs_for TREE FILE: the programs of tests, those first that are nearest to a file, then the
# others, fast ones first.
programs_for() {
    local near='' room found
    case "$2" in
        lib/src/sgn/result/*) near="numfreq program hostile" ;;
        lib/src/sgn/job/job.* | lib/src/sgn/states/*) near="job states sgn_states" ;;
        lib/src/sgn/job/*) near="job numfreq program hostile" ;;
        lib/src/sgn/set/*) near="set sgn_check sgn_derive" ;;
        lib/src/sgn/*) near="sgn_derive sgn_check" ;;
        lib/*/text/*) near="util search io qm_file" ;;
        lib/*density* | lib/*_product*) near=excited ;;
        lib/*/mo_columns*) near="job numfreq" ;;
        lib/*/excited/*dump* | lib/*/excited/root_norms* | lib/*/excited/qm_file_ci_xpy*)
            near="excited qm_file job numfreq"
            ;;
        lib/*/excited/* | lib/*/qm_file/*) near="qm_file excited" ;;
        lib/*/facts/*) near="qm_file qm_file_tool" ;;
        lib/*/util/units.h) near="sgn_states util qm_file" ;;
        lib/*/util/*) near="util qm_file" ;;
        lib/*/io/detail/unfinished_file*) near="common faults" ;;
        lib/*/io/atomic_file* | lib/*/io/detail/text_file*) near="io hostile faults" ;;
        lib/*/io/*) near="io search" ;;
        lib/*) near=$(cut -d / -f 4 <<<"$2") ;;
        tools/qm_file/*) near=qm_file_tool ;;
        tools/numfreq/run_driver* | tools/numfreq/stigruz*) near="program numfreq hostile faults" ;;
        tools/numfreq/*) near="numfreq program hostile" ;;
        tools/common/*) near="common sgn_check qm_file_tool" ;;
        tools/*) near=$(cut -d / -f 2 <<<"$2") ;;
    esac
    found=$(cmake --build "$1/build" --target help | grep -oE '\b[a-z_]+_tests\b' |
        sed 's/_tests$//' | sort -u)
    if [ -n "$near_only" ]; then
        for room in $near; do echo "${room}_tests"; done
        return
    fi
    for room in $near util io common qm_file excited program search \
        $(grep -vxE 'numfreq|hostile|faults' <<<"$found") numfreq hostile faults; do
        if grep -qx "$room" <<<"$found"; then echo "${room}_tests"; fi
    done | awk '!printed[$0]++'
}

# run_tests TREE FILE: the first test that fails, or nothing.
run_tests() {
    local program status failed
    if [[ $2 == python/* ]]; then
        for program in stigruz_python stigruz qm_file sgn_derive sgn_states sgn_displace; do
            build "$1" "$program" || { echo "?"; return; }
        done
        ctest --test-dir "$1/build" -R '^python\.' --timeout $longest_run >"$1.log" 2>&1 ||
            sed -n 's/.* \(python\.[a-z_]*\) .*Failed.*/\1/p' "$1.log" | head -n 1
        return
    fi
    for program in $(programs_for "$1" "$2"); do
        build "$1" "$program" || { echo "?"; return; }
        rm -rf "$1.tmp"
        mkdir "$1.tmp"
        status=0
        # What a fault makes of sizes is not to bring the machine down.
        (ulimit -v 16000000 && cd "$1.tmp" && TMPDIR=$1.tmp timeout -k 5 $longest_run \
            "$1/build/tests/$program" --gtest_brief=1 --gtest_fail_fast) >"$1.log" 2>&1 </dev/null ||
            status=$?
        case $status in
            0) continue ;;
            124 | 137) echo "$program, which hangs" ;;
            *)
                failed=$(sed -n 's/^\[  FAILED  \] \([^ ,]*\).*/\1/p' "$1.log" | head -n 1)
                echo "${failed:-$program, status $status}"
                ;;
        esac
        return
    done
    rm -rf "$1.tmp"
    if [ -n "$near_only" ]; then return; fi
    build "$1" all || { echo "?"; return; }
    ctest --test-dir "$1/build" -R '^checks\.' -E 'installed_library' -j 2 --timeout $longest_run \
        >"$1.log" 2>&1 || sed -n 's/.* \(checks\.[a-z_]*\) .*Failed.*/\1/p' "$1.log" | head -n 1
}

report() { # report ROOM VERDICT FILE TEXT
    printf '%s\t%s\t%s: %s\n' "$1" "$2" "$3" "$4" >>"$directory/results"
    printf '%-9s %s: %s\n' "$2" "$3" "$4"
}

# plant TREE FILE TEXT INSTEAD REASON: one row of the table.
plant() {
    local tree=$1 file=$2 text instead whole rest room seen
    text=${3//<nl>/$'\n'} instead=${4//<nl>/$'\n'}
    room=$(sed -E 's:^lib/src/((flib|sgn)/[^/]*).*:\1:; s:^((tools|python)/[^/]*).*:\1:' <<<"$file")
    if [ ! -f "$tree/$file" ]; then
        report "$room" table "$file" "no such file ($5)"
        return
    fi
    whole=$(cat "$tree/$file" && echo x)
    whole=${whole%x}
    rest=${whole#*"$text"}
    if [ "$rest" = "$whole" ] || [ "${rest#*"$text"}" != "$rest" ]; then
        report "$room" table "$file" "'$3' does not stand there once ($5)"
        return
    fi
    printf '%s' "${whole%%"$text"*}$instead$rest" >"$tree/$file"
    seen=$(run_tests "$tree" "$file")
    printf '%s' "$whole" >"$tree/$file"
    case $seen in
        '') report "$room" unseen "$file" "$5" ;;
        \?) report "$room" broken "$file" "does not compile: $4" ;;
        *) report "$room" seen "$file" "$5 ($seen)" ;;
    esac
}

# rows OF: the rows of one job.
rows() {
    awk -F '\t' -v of="$1" -v jobs="$jobs" -v patterns="${patterns[*]}" '
        BEGIN { n = split(patterns, pattern, " ") }
        /^#/ || NF == 0 { next }
        NF != 4 { print "row of " NF " fields: " $0 >"/dev/stderr"; exit 2 }
        {
            wanted = n == 0
            for (i = 1; i <= n; ++i) if (index($1, pattern[i]) > 0) wanted = 1
            # Not tabs: the shell would take two of them for one.
            if (wanted && row++ % jobs == of) { gsub(/\t/, "\037"); print }
        }' "$table"
}

rows 0 >/dev/null
# What came of an earlier call stays beside.
if [ -s "$directory/results" ]; then
    mv "$directory/results" "$directory/results-$(date -r "$directory/results" +%F-%H%M%S)"
fi
: >"$directory/results"
for ((job = 0; job < jobs; ++job)); do
    tree=$directory/tree-$job
    copy_tree "$tree"
    if ! cmake -S "$tree" -B "$tree/build" "${options[@]}" >"$tree.log" 2>&1; then
        cat "$tree.log" >&2
        exit 2
    fi
done
if [ -z "$sound" ] && failed=$(run_tests "$directory/tree-0" README.md) && [ -n "$failed" ]; then
    echo "$failed fails without any fault" >&2
    exit 2
fi
for ((job = 0; job < jobs; ++job)); do
    rows $job | while IFS=$'\037' read -r file text instead reason; do
        plant "$directory/tree-$job" "$file" "$text" "$instead" "$reason"
    done &
done
wait

echo
awk -F '\t' '
    { ++count[$2]; ++all[$1, $2]; if (!($1 in order)) { order[$1]; room[++rooms] = $1 } }
    function rate(seen, unseen) { return seen + unseen ? 100 * seen / (seen + unseen) : 0 }
    END {
        for (i = 1; i <= rooms; ++i) {
            s = all[room[i], "seen"]; u = all[room[i], "unseen"]
            printf "%-22s %3d of %3d seen (%.0f %%)\n", room[i], s, s + u, rate(s, u)
        }
        printf "%-22s %3d of %3d seen (%.0f %%)", "all", count["seen"], count["seen"] + count["unseen"],
            rate(count["seen"], count["unseen"])
        printf "; %d do not compile, %d rows are not right\n", count["broken"], count["table"]
        exit count["unseen"] + count["table"] > 0
    }' "$directory/results"
