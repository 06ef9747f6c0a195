#!/usr/bin/env bash
# Installs into a scratch directory, moves the tree, and builds and runs the programs of docs/library.md,
# docs/install.md and docs/sgn.md against it: by find_package() and by pkg-config, with the static and with the
# shared library.
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

reference=$source/examples/water/h2o_ref.log
head -n 50 "$reference" >"$work/cut.log"
echo "no output of any program" >"$work/notes"

# says PROGRAM FILE STATUS PATTERN: what the program prints, and how it ends.
says() {
    local said status=0
    said=$(LD_LIBRARY_PATH=$library_directory "$1" "$2" 2>&1) || status=$?
    # shellcheck disable=SC2053
    [[ "$status: $said" == $3:\ $4 ]] || fail "$1 $2 says: $status: $said"
}

# runs PROGRAM: a file that is whole, cut short, unknown or missing, and a directory.
runs() {
    if [[ $1 == *count_atoms* ]]; then
        says "$1" "$reference" 0 "3 atoms, the first at z = 0.2230"
        says "$1" "$work/cut.log" 1 "no geometry: line 50: the file ends where an item was expected"
        says "$1" "$work/notes" 1 "no geometry: the program is not recognised"
    else
        says "$1" "$reference" 0 "state 1: 0.2867"
    fi
    says "$1" "$work/none.log" 2 "$work/none.log: cannot be opened: *"
    says "$1" "$work" 2 "$work: *"
}

for program in count_atoms dipole_strength; do
    for page in library install; do
        shown=$(<"$source/docs/$page.md")
        [[ $shown == *"$(<"$source/tests/checks/consumer/$program.cpp")"* ]] ||
            [ "$page $program" = "install dipole_strength" ] || fail "docs/$page.md shows another $program"
    done
done

cmake -S "$source/tests/checks/consumer" -B "$work/consumer" -DCMAKE_PREFIX_PATH="$work/prefix" \
    -DCMAKE_CXX_COMPILER="$compiler" >"$work/log"
cmake --build "$work/consumer" -j 2 >>"$work/log" || fail "$(cat "$work/log")"
programs=("$work"/consumer/*_with_*)
for program in "${programs[@]}"; do
    [[ $program == *.so* ]] || runs "$program"
done

# judges PROGRAM: the bundled set as it is, with a sign reversed, and without a file.
judges() {
    local said
    said=$(LD_LIBRARY_PATH=$library_directory "$1" "${set[@]}") || fail "$1 fails: $said"
    [[ $said == "  0.0000   0.0000   0.4816"$'\n'*$'\n'"the sums hold" ]] || fail "$1 says: $said"
    sed 's/\(Corrected_tdip *= *\)-/\1 /' h2o_01zp.sgn >reversed.sgn
    said=$(LD_LIBRARY_PATH=$library_directory "$1" "${set[@]/h2o_01zp/reversed}")
    [[ $said == *$'\n'"the sums fail"$'\n'"wrong: reversed.sgn" ]] || fail "$1 says: $said"
    if said=$(LD_LIBRARY_PATH=$library_directory "$1" h2o_ref.sgn none.sgn) || [[ $said != "none.sgn: cannot be opened"* ]]; then
        fail "$1 says: $said"
    fi
}

# The result files of the bundled set, the reference first.
results() {
    ln -s "$source"/examples/water/h2o_* .
    "$work/prefix/bin/stigruz" h2o_ref.fchk
    for checkpoint in h2o_0*.fchk; do "$work/prefix/bin/stigruz" "$checkpoint" h2o_ref.sgn; done
    set=(h2o_ref.sgn h2o_0*.sgn)
}

if [ -e "$work/consumer/judge_set" ]; then
    for program in judge_set follow_states; do
        [[ $(<"$source/docs/sgn.md") == *"$(<"$source/tests/checks/consumer/$program.cpp")"* ]] ||
            fail "docs/sgn.md shows another $program"
        [ "$(wc -l <"$source/tests/checks/consumer/$program.cpp")" -le 25 ] || fail "$program is long"
    done
    cd "$work"
    results
    judges consumer/judge_set
    said=$(consumer/follow_states h2o_ref.fchk h2o_01zp.fchk none.fchk) || fail "follow_states fails: $said"
    [[ $said == "h2o_01zp: state 1 is root 1, overlap -1.0000"*"none.fchk: cannot be opened"* ]] ||
        fail "follow_states says: $said"
fi

shared=$library_directory/libflib.so
if [ -e "$shared" ]; then
    [ "${#programs[@]}" -eq 4 ] || fail "no program was built with the shared library"
    # Shown are the names of the library's namespace only.
    others=$(nm -DC --defined-only --format=posix "$shared" |
        grep -Ev '^((typeinfo|typeinfo name|vtable) for )?flib::|^FLIB_2 A ' || true)
    [ -z "$others" ] || fail "the shared library shows foreign names:" "$others"
    readelf -d "$shared" | grep -q 'soname: \[libflib\.so\.[0-9]*\]' || fail "no versioned soname"
fi

[ -z "$(find "$work/prefix" -name detail)" ] || fail "internal headers are installed"

if command -v pkg-config >/dev/null; then
    export PKG_CONFIG_PATH=$library_directory/pkgconfig
    [ "$(pkg-config --modversion flib)" = "$(sed -n 's/^project(stigruz VERSION \([0-9.]*\).*/\1/p' \
        "$source/CMakeLists.txt")" ] || fail "pkg-config knows another version"
    read -ra flags <<<"$(pkg-config --cflags --libs flib)"
    "$compiler" -std=c++20 "$source/tests/checks/consumer/count_atoms.cpp" "${flags[@]}" \
        -o "$work/count_atoms_with_pkg_config"
    runs "$work/count_atoms_with_pkg_config"
    if [ -e "$work/consumer/judge_set" ]; then
        read -ra flags <<<"$(pkg-config --cflags --libs sgn)"
        "$compiler" -std=c++20 "$source/tests/checks/consumer/judge_set.cpp" "${flags[@]}" -o judge_set
        judges ./judge_set
    fi
fi

for tool in stigruz qm_file sgn_check sgn_states; do
    [ -x "$work/prefix/bin/$tool" ] || fail "$tool is not installed"
    [ -e "$work/prefix/share/man/man1/$tool.1" ] || fail "$tool has no manual page"
    [ -e "$work/prefix/share/bash-completion/completions/$tool" ] || fail "$tool is not completed"
done
