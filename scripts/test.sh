#!/usr/bin/env bash
# Builds everything and runs all tests, first as users get it, then with AddressSanitizer and
# UndefinedBehaviorSanitizer. Arguments are passed on to ctest.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh test
scripts/build.sh build all -DSTIGRUZ_TESTS=ON
ctest --test-dir build -j "$(nproc)" --output-on-failure "$@"

scripts/build.sh build-sanitize all --preset sanitize
ctest --test-dir build-sanitize -j "$(nproc)" --output-on-failure "$@"
