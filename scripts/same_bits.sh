#!/usr/bin/env bash
# Checks that both compilers, with and without optimisation, give the same result files for all
# bundled jobs, byte for byte; and that their parameter blocks are those that the public routines
# give, which hold all of a density in memory and read numbers one by one.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh fuzz
root=$PWD
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for compiler in g++ clang++; do
    for level in -O0 -O3; do
        name=$compiler$level
        # Release would add an -O3 of its own behind these flags.
        scripts/build.sh "build-bits-$name" stigruz -DCMAKE_CXX_COMPILER="$compiler" \
            -DCMAKE_BUILD_TYPE=None -DCMAKE_CXX_FLAGS="$level" -DSTIGRUZ_TESTS=OFF
        mkdir "$work/$name"
        cp examples/water/h2o_* "$work/$name"
        cd "$work/$name"
        tool=$root/build-bits-$name/tools/stigruz
        "$tool" h2o_ref.fchk
        for checkpoint in h2o_0*.fchk; do
            "$tool" "$checkpoint" h2o_ref.sgn
        done
        sha256sum ./*.sgn >"$work/$name.sums"
        cd "$root"
        cmp "$work/g++-O0.sums" "$work/$name.sums"

        "$compiler" "$level" -std=c++20 -ffp-contract=off -Ilib/src -Itools -Itests \
            scripts/whole_run.cpp "build-bits-$name"/tools/libnumfreq.a \
            "build-bits-$name"/lib/libsgn_job.a "build-bits-$name"/lib/libflib.a -o "$work/whole_run"
        (
            cd "$work/$name"
            for checkpoint in h2o_*.fchk; do
                reference=(h2o_ref.sgn)
                [ "$checkpoint" != h2o_ref.fchk ] || reference=()
                "$work/whole_run" "$checkpoint" whole "${reference[@]}"
                head -n 11 "${checkpoint%.fchk}.sgn" | cmp - whole
            done
        )
        echo "$name: $(wc -l <"$work/$name.sums") results, the same bits, also as a whole"
    done
done
