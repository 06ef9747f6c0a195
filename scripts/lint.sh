#!/usr/bin/env bash
# Static checks: formatting, compiler warnings of both compilers, headers that compile alone,
# clang-tidy, cppcheck, shellcheck.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh lint
jobs=$(nproc)

mapfile -t sources < <(git ls-files '*.cpp' '*.h')
clang-format --dry-run --Werror "${sources[@]}"
echo "clang-format: clean"

for compiler in g++ clang++; do
    scripts/build.sh "build-warnings-$compiler" all -DCMAKE_CXX_COMPILER="$compiler" \
        -DCMAKE_BUILD_TYPE=Debug -DSTIGRUZ_WERROR=ON -DSTIGRUZ_TESTS=OFF \
        -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON  # they hide what a source forgets to include
    echo "$compiler: no warnings"
done

tests/checks/headers_alone.sh "$PWD" build g++
echo "headers: each compiles alone"

python=()
if [ -d build-warnings-clang++/python/stigruz ]; then python=('python/*.cpp'); fi
git ls-files 'lib/*.cpp' 'tools/*.cpp' "${python[@]}" |
    xargs -P "$jobs" -n 4 clang-tidy -p build-warnings-clang++ --quiet 2>/dev/null
echo "clang-tidy: clean"

cppcheck --quiet --std=c++20 --enable=warning,performance,portability --inline-suppr \
    --suppress=missingIncludeSystem --error-exitcode=1 -j "$jobs" -I lib/src -I tools lib tools python/src
echo "cppcheck: clean"

git ls-files '*.sh' .ci/run | xargs shellcheck
echo "shellcheck: clean"
