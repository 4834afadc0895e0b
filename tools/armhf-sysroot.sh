#!/usr/bin/env bash
# A private sysroot from Debian's armhf packages; neither root nor the host's package state is touched.
set -euo pipefail

usage() {
    cat <<'TXT'
usage: armhf-sysroot [DIR]

Unpacks what the plug-in and its tests are built against on 32-bit ARM into DIR (default:
build/armhf-sysroot of the repository). Does nothing when DIR is complete already.
TXT
}

die() {
    printf 'armhf-sysroot: %s\n' "$*" >&2
    exit 1
}

# What the plug-in is built against, with what those libraries need in turn.
PLUGIN=(
    libc6 libc6-dev linux-libc-dev libgcc-s1 libstdc++6 libcrypt1 libcrypt-dev
    libglib2.0-0 libglib2.0-dev libpcre2-8-0 libpcre2-dev
    libsystemd0 libsystemd-dev libcap2 libgcrypt20 libgpg-error0 liblz4-1 liblzma5 libzstd1 zlib1g
)
# The broker's and the tests' own.
TESTS=(
    libcli11-dev nlohmann-json3-dev
    libelf1 libelf-dev zlib1g-dev libnettle8 nettle-dev libxml2 libxml2-dev libicu72 libicu-dev
    libsqlitecpp-dev libsqlite3-0 libsqlite3-dev libssl3
)

# The host's archives, with the keys they name. Security updates are left out: nothing here is run by
# a device, and apt would pair their libraries with development files of another version.
archives() {
    local list=/etc/apt/sources.list sources=/etc/apt/sources.list.d/debian.sources
    if [ -e "$sources" ]; then
        awk 'BEGIN { RS = ""; ORS = "\n\n" } !/(^|\n)Suites:[^\n]*-security/' "$sources" >"$1/debian.sources"
    elif [ -e "$list" ]; then
        { grep -E '^deb[[:space:]]' "$list" | grep -v -e '-security' || true; } |
            sed -E 's/\barch=[a-z0-9,]+ ?//; s/\[ *\]//' >"$1/debian.list"
    else
        die "neither $sources nor $list exists"
    fi
}

# Packages in the current folder, by an apt that knows no other architecture and no installed package.
download() {
    local state=$1
    shift
    mkdir -p "$state"/{lists,cache/archives}/partial "$state/parts"
    : >"$state/status"
    archives "$state/parts"
    local options=(
        -o "Dir::State=$state" -o "Dir::State::status=$state/status" -o "Dir::State::Lists=$state/lists"
        -o "Dir::Cache=$state/cache" -o Dir::Etc::SourceList=/dev/null -o "Dir::Etc::SourceParts=$state/parts"
        -o APT::Architecture=armhf -o APT::Architectures::=armhf -o "APT::Sandbox::User=$(id -un)"
        -o APT::Update::Error-Mode=any -o Acquire::Retries=3 -o Acquire::Languages=none
    )
    apt-get "${options[@]}" -qq update
    apt-get "${options[@]}" -qq download "$@"
}

# record PACKAGE-FILE DATABASE ROOT: what dpkg-shlibdeps asks for, as dpkg would have it of a package
# installed in ROOT: whose a library is, and which version has each symbol.
record() {
    local name info=$2/info part
    name=$(dpkg-deb -f "$1" Package)
    [ "$(dpkg-deb -f "$1" Multi-Arch)" != same ] || name+=:armhf
    mkdir -p "$info"
    { dpkg-deb -f "$1" | sed '/^Package:/a Status: install ok installed' && echo; } >>"$2/status"
    dpkg-deb --fsys-tarfile "$1" | tar -t | sed "s|^\.|$3|" >"$info/$name.list"
    for part in symbols shlibs; do
        dpkg-deb -I "$1" "$part" >"$info/$name.$part" 2>/dev/null || rm "$info/$name.$part"
    done
}

# Absolute links would lead out of the sysroot.
relative_links() {
    local link target
    find "$1" -type l -lname '/*' | while read -r link; do
        target=$1$(readlink "$link")
        [ ! -e "$target" ] || ln -sfr "$target" "$link"
    done
}

case ${1:-} in
    -h | --help)
        usage
        exit
        ;;
    -*)
        usage >&2
        die "unknown option $1"
        ;;
esac
DIR=$(realpath -m "${1:-$(dirname "$(readlink -f "$0")")/../build/armhf-sysroot}")
# Left in the finished sysroot, where another list makes it anew.
CONTENTS="${PLUGIN[*]} ${TESTS[*]} .dpkg/"

[ "$(cat "$DIR/.packages" 2>/dev/null)" != "$CONTENTS" ] || exit 0
[ ! -e "$DIR" ] || [ -e "$DIR/.packages" ] || [ -z "$(ls -A "$DIR")" ] ||
    die "$DIR holds something else than a sysroot of this script's"

echo "armhf-sysroot: unpacking Debian's armhf packages into $DIR"
mkdir -p "$(dirname "$DIR")"
work=$(mktemp -d "$DIR.XXXXXX")
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/apt" "$work/debs" "$work/root"
(cd "$work/debs" && download "$work/apt" "${PLUGIN[@]}" "${TESTS[@]}")
for package in "$work"/debs/*.deb; do
    dpkg-deb -x "$package" "$work/root"
    record "$package" "$work/root/.dpkg" "$DIR"
done
relative_links "$work/root"
# The emulator prefers a file below the sysroot: the accounts and settings must be the device's.
rm -rf "$work/root"/{etc,var,run} "$work/root/usr/share"/{doc,man,locale}
printf '%s\n' 1 >"$work/root/.dpkg/info/format"
printf '%s\n' amd64 armhf >"$work/root/.dpkg/arch"
printf '%s\n' "$CONTENTS" >"$work/root/.packages"
chmod 755 "$work/root"
rm -rf "$DIR"
mv "$work/root" "$DIR"
