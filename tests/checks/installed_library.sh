#!/usr/bin/env bash
# Installs into a scratch directory, moves the tree, and builds and runs a program against it: by
# find_package() and by pkg-config, with the static and with the shared library.
set -euo pipefail
source=$1
build=$2
compiler=$3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/first" >/dev/null
mv "$work/first" "$work/prefix"
library_directory=$(dirname "$(find "$work/prefix" -name libflib.a)")

fail() {
    echo "$*" >&2
    exit 1
}

# runs PROGRAM: it reads, and an error thrown in the library is caught outside.
runs() {
    local said
    said=$(LD_LIBRARY_PATH=$library_directory "$1" "$source/examples/water/h2o_ref.log")
    [ "$said" = "3 atoms, the first at z = 0.2230" ] || fail "$1 says: $said"
    said=$(LD_LIBRARY_PATH=$library_directory "$1" "$work/none.log")
    [[ $said == caught:*none.log* ]] || fail "$1 says: $said"
}

cmake -S "$source/tests/checks/consumer" -B "$work/consumer" -DCMAKE_PREFIX_PATH="$work/prefix" \
    -DCMAKE_CXX_COMPILER="$compiler" >"$work/log"
cmake --build "$work/consumer" >>"$work/log" || fail "$(cat "$work/log")"
programs=("$work"/consumer/with_*)
for program in "${programs[@]}"; do
    [[ $program == *.so* ]] || runs "$program"
done

shared=$library_directory/libflib.so
if [ -e "$shared" ]; then
    [ "${#programs[@]}" -eq 2 ] || fail "no program was built with the shared library"
    # Shown are the names of the library's namespace only.
    others=$(nm -DC --defined-only --format=posix "$shared" |
        grep -Ev '^((typeinfo|typeinfo name|vtable) for )?flib::|^FLIB_1 A ' || true)
    [ -z "$others" ] || fail "the shared library shows foreign names:" "$others"
    readelf -d "$shared" | grep -q 'soname: \[libflib\.so\.[0-9]*\]' || fail "no versioned soname"
fi

if command -v pkg-config >/dev/null; then
    export PKG_CONFIG_PATH=$library_directory/pkgconfig
    [ "$(pkg-config --modversion flib)" = "$(sed -n 's/^project(stigruz VERSION \([0-9.]*\).*/\1/p' \
        "$source/CMakeLists.txt")" ] || fail "pkg-config knows another version"
    read -ra flags <<<"$(pkg-config --cflags --libs flib)"
    "$compiler" -std=c++20 "$source/tests/checks/consumer/count_atoms.cpp" "${flags[@]}" \
        -o "$work/with_pkg_config"
    runs "$work/with_pkg_config"
fi

for tool in stigruz qm_file sgn_check; do
    [ -x "$work/prefix/bin/$tool" ] || fail "$tool is not installed"
    [ -e "$work/prefix/share/man/man1/$tool.1" ] || fail "$tool has no manual page"
    [ -e "$work/prefix/share/bash-completion/completions/$tool" ] || fail "$tool is not completed"
done
