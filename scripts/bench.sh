#!/usr/bin/env bash
# Builds and runs all benchmarks; arguments go to Google Benchmark, such as
# --benchmark_filter=density. Inputs are made in $TMPDIR (or /tmp), at most some 2 GB at a time.
set -euo pipefail
cd "$(dirname "$0")/.."

if [ ! -e /usr/include/benchmark/benchmark.h ]; then
    if [ "$(id -u)" -ne 0 ]; then
        echo "bench.sh: libbenchmark-dev is not installed" >&2
        exit 1
    fi
    # OpenBLAS is only a yardstick for the density.
    apt-get install -y -q libbenchmark-dev libopenblas-dev >/dev/null
fi

scripts/setup.sh build
scripts/build.sh build-bench all -DSTIGRUZ_BENCHMARKS=ON -DSTIGRUZ_TESTS=OFF \
    -DCMAKE_BUILD_TYPE=Release
build-bench/bench/number_check 5
build-bench/bench/stigruz_bench "$@"
