#!/usr/bin/env bash
# try-packages.sh: makes this machine's packages twice, in different folders; they must be the same bytes. Then a
# clean Debian 12, with nothing but them and a compiler: the examples are built from /usr alone, run on the
# desk's device, and the demo told. Needs root and the network.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
architecture=$(dpkg --print-architecture)
first=$PWD/build/package/$architecture
mkdir -p build/package
work=$(mktemp -d "$PWD/build/package/try.XXXXXX")
trap 'rm -rf "$work"' EXIT
die() {
    printf 'try-packages: %s\n' "$*" >&2
    exit 1
}

tools/package.sh "$architecture" >/dev/null
TZ=Pacific/Kiritimati LANG=C tools/package.sh "$architecture" "$work/elsewhere" >/dev/null
for file in "$first"/*.deb "$first"/*.spdx.json; do
    cmp "$file" "$work/elsewhere/${file##*/}"
done
echo 'try-packages: the same packages from two folders'

# The commit is told by the debug file, and not by the plug-in.
commit=$(git describe --always --dirty --abbrev=40 --exclude '*')
dpkg-deb -x "$first"/syscmd_*.deb "$work/plugin"
dpkg-deb -x "$first"/syscmd-dbgsym_*.deb "$work/debug"
readelf -p .debug_syscmd_commit "$(find "$work/debug" -name '*.debug')" | grep -qwF "$commit" ||
    die 'the debug file does not tell the commit'
! grep -rqaF "${commit:0:12}" "$work/plugin" || die 'the plug-in tells the commit'

# The machine's archives, and how it reaches them.
apt-config dump Acquire >"$work/apt.conf"
mapfile -t archives < <(find /etc/apt -maxdepth 2 -name '*.sources' -o -name '*.list' -size +0)
TMPDIR=$work mmdebstrap --quiet --variant=apt --aptopt="$work/apt.conf" --format=null \
    --customize-hook="tools/try-packages-inside.sh \"\$1\" '$first'" bookworm /dev/null "${archives[@]}"
echo 'try-packages: installed and tried in a clean root'
