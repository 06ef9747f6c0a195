#!/usr/bin/env bash
# Builds all tools and the libraries and installs them: install.sh [-j N] [PREFIX]
# PREFIX is /usr/local for root, else ~/.local. The build is that of example.sh and test.sh.
set -euo pipefail
cd "$(dirname "$0")/.."

jobs=$(nproc)
if [ "${1:-}" = -j ]; then
    jobs=${2:?-j needs a number}
    shift 2
fi

if [ "$(id -u)" -eq 0 ]; then prefix=/usr/local; else prefix=$HOME/.local; fi
prefix=${1:-$prefix}
if [[ $prefix = -* ]]; then
    echo "usage: install.sh [-j N] [PREFIX]" >&2
    exit 2
fi

# All that is missing is named at once; but the headers of the other tools can be done without.
if ! scripts/setup.sh build tools; then
    scripts/setup.sh build 2>/dev/null
    echo "Going on without them: all tools but stigruz are left out."
fi
scripts/setup.sh python || echo "Going on without them: the Python module is left out."
scripts/build.sh -j "$jobs" build all -DSTIGRUZ_TESTS=OFF
cmake --install build --prefix "$prefix" >/dev/null

echo "Installed in $prefix: $(cd build/tools && find . -maxdepth 1 -type f -perm -u+x |
    sed 's:^\./::' | sort | tr '\n' ' ')"
if [ -d build/python/stigruz ]; then
    echo "The Python module: $(find "$prefix" -path '*-packages/stigruz' -prune -print 2>/dev/null | head -n 1)"
fi
case ":$PATH:" in
    *":$prefix/bin:"*) ;;
    *) echo "Put $prefix/bin on the PATH: export PATH=$prefix/bin:\$PATH   # in ~/.bashrc, too" ;;
esac
