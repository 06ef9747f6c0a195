#!/usr/bin/env bash
# Builds everything and runs all tests: test.sh [-j N] [--sanitize] [CTEST-OPTIONS...]
# As users get it, or with AddressSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."

jobs=$(nproc)
if [ "${1:-}" = -j ]; then
    jobs=${2:?-j needs a number}
    shift 2
fi

directory=build
options=(-DSTIGRUZ_TESTS=ON)
if [ "${1:-}" = --sanitize ]; then
    shift
    directory=build-sanitize
    options+=(--preset sanitize)
fi

# All that is missing is named at once; but the headers of the other tools can be done without.
if ! scripts/setup.sh test tools; then
    scripts/setup.sh test 2>/dev/null
    echo "Going on without them: all tools but stigruz are left out."
fi
if [ "$directory" = build ]; then
    scripts/setup.sh python-test || echo "Going on without them: the Python module or its tests are left out."
fi
scripts/build.sh -j "$jobs" "$directory" all "${options[@]}"
ctest --test-dir "$directory" -j "$jobs" --output-on-failure --no-tests=error "$@"
