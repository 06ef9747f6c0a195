#!/usr/bin/env bash
# Fuzzers: replays the regression corpora and the seeds, then fuzzes. fuzz.sh [N|coverage]
#   without an argument   some ten seconds each
#   N                     N executions each
#   coverage              no fuzzing: which lines the inputs gathered so far reach
# What is found, and every input that reached something new, is kept below build-fuzz/; FUZZ_ONLY
# names a single fuzzer.
set -euo pipefail
cd "$(dirname "$0")/.."

amount=${1:-}
root=$PWD
work=$root/build-fuzz/inputs

scripts/setup.sh fuzz
scripts/build.sh build-fuzz fuzzers -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DSTIGRUZ_FUZZERS=ON -DSTIGRUZ_TESTS=OFF

# Seeds: the fixtures of the tests, made-up jobs, and the result file of one.
mkdir -p "$work"/{readers,items,job,result,displace} build-fuzz/found
find tests/data -type f | while read -r file; do
    cp "$file" "$work/readers/seed-$(tr / - <<<"${file#tests/data/}")"
done
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
(cd "$scratch" && "$root/build-fuzz/fuzz/fuzz_seeds" "$work/job" "$work/items")
cp "$scratch"/a.{log,fchk,cis} "$work/readers"
cp "$scratch"/a.sgn "$work/result"
cp examples/water/h2o.gjf "$work/displace"

# An absurd allocation gives no memory, as it does outside the sanitizer. A quarantine larger than
# what one execution frees and a stack kept for each block only cost time: findings are replayed
# with them.
export ASAN_OPTIONS=allocator_may_return_null=1:max_allocation_size_mb=512
ASAN_OPTIONS+=:quarantine_size_mb=2:malloc_context_size=0

# run DIRECTORY NAME OPTIONS...: one fuzzer on its corpora. To weigh thousands of inputs by their
# rareness (-entropic) or to look for other fuzzers' inputs (-reload) takes as long as to execute
# them. Paths are absolute because fuzz_job changes its directory.
run() {
    local fuzzers=$1 name=$2
    shift 2
    "$fuzzers/fuzz_$name" "$@" -max_len=4096 -timeout=20 -rss_limit_mb=2500 \
        -malloc_limit_mb=100000 -entropic=0 -reload=0 -dict=fuzz/keywords.dict \
        -verbosity=0 -print_final_stats=1 -artifact_prefix="$root/build-fuzz/found/$name-" \
        "$work/$name" "$root/fuzz/corpus/$name" 2>&1 |
        grep -E 'number_of_executed|average_exec|FINDING|ERROR|runtime error|written to' |
        sed "s/^/$name: /"
}

fuzzers=build-fuzz/fuzz
if [ "$amount" = coverage ]; then
    scripts/build.sh build-fuzz-coverage fuzzers -DCMAKE_CXX_COMPILER=clang++ \
        -DCMAKE_BUILD_TYPE=Debug -DSTIGRUZ_FUZZERS=ON -DSTIGRUZ_TESTS=OFF \
        -DSTIGRUZ_FUZZ_COVERAGE=ON
    fuzzers=build-fuzz-coverage/fuzz
fi
for name in ${FUZZ_ONLY:-readers items job result displace}; do
    case "$amount" in
        "") run $fuzzers "$name" -max_total_time=10 ;;
        coverage) LLVM_PROFILE_FILE="$scratch/$name.profraw" run $fuzzers "$name" -runs=0 ;;
        *) run $fuzzers "$name" -runs="$amount" ;;
    esac
done

if [ "$amount" = coverage ]; then
    llvm-profdata merge "$scratch"/*.profraw -o "$scratch/all.profdata"
    objects=()
    for name in ${FUZZ_ONLY:-readers items job result displace}; do
        objects+=(-object "$fuzzers/fuzz_$name")
    done
    llvm-cov report "${objects[@]}" -instr-profile="$scratch/all.profdata" \
        -ignore-filename-regex='/fuzz/|/usr/' -show-region-summary=false \
        -show-branch-summary=false
fi
