#!/usr/bin/env bash
# package.sh ARCHITECTURE [FOLDER]: Debian packages of the repository's files as they stand, with a software bill
# of materials, in FOLDER (default: build/package/ARCHITECTURE). The same files make the same bytes, wherever and
# whenever.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
architecture=$1
folder=$(readlink -m "${2:-build/package/$architecture}")
options=()
if [ "$architecture" != "$(dpkg --print-architecture)" ]; then
    SYSCMD_SYSROOT=$PWD/build/armhf-sysroot
    export SYSCMD_SYSROOT
    options=(--host-arch "$architecture" --no-check-builddeps) # they are in the sysroot
fi
version=$(sed -n 's/^project(syscmd VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
SYSCMD_COMMIT=$(git describe --always --dirty --abbrev=40 --exclude '*')
export SYSCMD_COMMIT LC_ALL=C.UTF-8 TZ=UTC
umask 022
# A compiler cache may change the paths in debug information.
unset "${!CMAKE_@}" CFLAGS CXXFLAGS CPPFLAGS LDFLAGS

rm -rf "$folder"
tree=$folder/syscmd-$version
mkdir -p "$tree"
git ls-files -z | xargs -0 cp --parents -t "$tree"
mv "$tree/packaging/debian" "$tree/debian"
(cd "$tree" && dpkg-buildpackage --build=binary --unsigned-source --unsigned-changes "${options[@]}") \
    >"$folder/build.log" 2>&1 || {
    tail -n 30 "$folder/build.log" >&2
    exit 1
}
lintian --allow-root --fail-on error,warning "$folder/syscmd_${version}_$architecture.changes" >&2
SOURCE_DATE_EPOCH=$(cd "$tree" && dpkg-parsechangelog -S Timestamp) tools/sbom \
    ${SYSCMD_SYSROOT:+--admindir "$SYSCMD_SYSROOT/.dpkg"} "$folder"/*.deb >"$folder/syscmd_${version}_$architecture.spdx.json"
rm -rf "$tree"
ls "$folder"
