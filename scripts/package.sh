#!/usr/bin/env bash
# Makes what can be handed out, in dist/ of build-package:
#   a tarball of statically linked tools, which run on any Linux of this processor as they are;
#   a tarball of the sources (in a clone: those of its last commit);
#   on Debian and its kin, packages: the tools, the shared library, its development files, and the
#   Python module.
# The tarballs need no more than the build of all tools.
set -euo pipefail
cd "$(dirname "$0")/.."

fail() {
    echo "$*" >&2
    exit 1
}

scripts/setup.sh build
# Header libraries may also lie where only CMake finds them; what was not built is told below.
scripts/setup.sh tools || true
version=$(sed -n 's/^project(stigruz VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
dist=$PWD/build-package/dist
rm -rf "$dist"
mkdir -p "$dist"

# Every file is dated by the commit, so that the same sources give the same packages. A tarball of the
# sources keeps that date.
in_clone=0
if [ "$(git rev-parse --show-toplevel 2>/dev/null)" = "$PWD" ]; then in_clone=1; fi
if [ "$in_clone" -eq 1 ]; then date=$(git log -1 --format=%ct); else date=$(stat -c %Y CHANGELOG.md); fi
export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$date}

if [ "$in_clone" -eq 1 ]; then
    git archive --prefix="stigruz-$version/" --output="$dist/stigruz-$version.tar.gz" HEAD
fi

scripts/build.sh build-package/static all -DCMAKE_BUILD_TYPE=Release -DSTIGRUZ_TESTS=OFF \
    -DSTIGRUZ_SHARED=OFF -DSTIGRUZ_STATIC_TOOLS=ON -DSTIGRUZ_PYTHON=OFF
name=stigruz-$version-linux-$(uname -m)
tree=build-package/$name
rm -rf "$tree"
cmake --install build-package/static --component tools --strip --prefix "$tree" >/dev/null
for page in man/*.1.in; do
    tool=$(basename "$page" .1.in)
    [ -x "$tree/bin/$tool" ] || fail "$tool was not built: its libraries are missing (scripts/setup.sh tools)"
    readelf --program-headers "$tree/bin/$tool" >"$tree.headers"
    ! grep -q INTERP "$tree.headers" || fail "$tool is not statically linked"
done
rm -f "$tree.headers"
tar --create --gzip --sort=name --mtime="@$SOURCE_DATE_EPOCH" --owner=0 --group=0 --numeric-owner \
    --file "$dist/$name.tar.gz" -C build-package "$name"

# As a user would: unpacked elsewhere, with nothing else on the path than a plain system has.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
tar --extract --file "$dist/$name.tar.gz" -C "$work"
documents=$work/$name/share/doc/stigruz
cp "$documents"/examples/water/h2o_* "$work"
(cd "$work" && env -i PATH="$work/$name/bin:/usr/bin:/bin" \
    "$documents/examples/workflow/loop.sh" h2o_ref >"$work/said") || fail "$(cat "$work/said")"

if [ "$(id -u)" -eq 0 ] && command -v apt-get >/dev/null; then scripts/setup.sh package; fi
if ! command -v dpkg-shlibdeps >/dev/null || ! command -v file >/dev/null; then
    echo "No Debian packages are made: dpkg-shlibdeps (package dpkg-dev) or file is missing."
else
    scripts/build.sh build-package/debian all -DCMAKE_BUILD_TYPE=Release -DSTIGRUZ_TESTS=OFF \
        -DCMAKE_INSTALL_PREFIX=/usr -DSTIGRUZ_STATIC_TOOLS=OFF -DPython_EXECUTABLE=/usr/bin/python3
    # Files in packages are writable by their owner only.
    (cd build-package/debian && umask 022 && cpack -G DEB -B "$dist" >cpack.log 2>&1) ||
        fail "$(cat build-package/debian/cpack.log)"
    rm -rf "$dist/_CPack_Packages"
    if command -v lintian >/dev/null; then
        lintian --allow-root --fail-on error,warning "$dist"/*.deb
        echo "lintian: clean"
    fi
fi
ls -l "$dist"
