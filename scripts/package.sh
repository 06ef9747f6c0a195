#!/usr/bin/env bash
# Makes what can be handed out, in dist/ of build-package:
#   a tarball of statically linked tools, which run on any Linux of this processor as they are;
#   on Debian and its kin, packages: the tools, the shared library, and its development files.
# The tarball needs no more than the build.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh build
version=$(sed -n 's/^project(stigruz VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
dist=$PWD/build-package/dist
mkdir -p "$dist"
# Every file is dated by the commit, so that the same sources give the same packages.
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct 2>/dev/null || date +%s)}
export SOURCE_DATE_EPOCH

fail() {
    echo "$*" >&2
    exit 1
}

scripts/build.sh build-package/static all -DCMAKE_BUILD_TYPE=Release -DSTIGRUZ_TESTS=OFF \
    -DSTIGRUZ_SHARED=OFF -DSTIGRUZ_STATIC_TOOLS=ON
name=stigruz-$version-linux-$(uname -m)
tree=build-package/$name
rm -rf "$tree"
cmake --install build-package/static --component tools --strip --prefix "$tree" >/dev/null
for tool in "$tree"/bin/*; do
    readelf --program-headers "$tool" >"$tree.headers"
    ! grep -q INTERP "$tree.headers" || fail "$tool is not statically linked"
done
rm -f "$tree.headers"
tar --create --gzip --sort=name --mtime="@$SOURCE_DATE_EPOCH" --owner=0 --group=0 --numeric-owner \
    --file "$dist/$name.tar.gz" -C build-package "$name"

# As a user would: unpacked elsewhere, with nothing else on the path than a plain system has.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
tar --extract --file "$dist/$name.tar.gz" -C "$work"
cp examples/water/* "$work"
(cd "$work" && env -i PATH="$work/$name/bin:/usr/bin:/bin" \
    "$work/$name/share/doc/stigruz/examples/workflow/loop.sh" h2o_ref >"$work/said") ||
    fail "$(cat "$work/said")"

if [ "$(id -u)" -eq 0 ] && command -v apt-get >/dev/null; then scripts/setup.sh package; fi
if ! command -v dpkg-shlibdeps >/dev/null; then
    echo "No Debian packages are made: there is no dpkg-shlibdeps (package dpkg-dev)."
else
    scripts/build.sh build-package/debian all -DCMAKE_BUILD_TYPE=Release -DSTIGRUZ_TESTS=OFF \
        -DCMAKE_INSTALL_PREFIX=/usr -DSTIGRUZ_STATIC_TOOLS=OFF
    # Files in packages are writable by their owner only.
    (cd build-package/debian && umask 022 && cpack -G DEB -B "$dist" >cpack.log 2>&1) ||
        fail "$(cat build-package/debian/cpack.log)"
    rm -rf "$dist/_CPack_Packages"
fi
ls -l "$dist"
