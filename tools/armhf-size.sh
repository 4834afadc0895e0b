#!/usr/bin/env bash
# What the stripped plug-in costs a device, and what it asks of it.
set -euo pipefail

# Bytes of text and data that the device has room for, and the libraries that it has.
LIMIT=${SIZE_LIMIT:-40000}
LIBRARIES='ld-linux-armhf.so.3 libbwdclient.so libc.so.6 libcrypt.so.1 libgcc_s.so.1 libglib-2.0.so.0
    libstdc++.so.6 libsystemd.so.0'

usage() {
    cat <<'TXT'
usage: armhf-size.sh [--check] PLUGIN [CROSS_PREFIX]

Prints text, data, relocations, needed libraries, the newest GLIBC and GLIBCXX versions required, and
the plug-in's units, largest first (from the debug symbols beside it). With --check it fails when text
and data are too large or another library is needed.
TXT
}

sizes() { "${PREFIX}size" "$PLUGIN" | awk 'NR == 2 { print $1, $2, $1 + $2 }'; }

needed() { readelf -dW "$PLUGIN" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p'; }

relocations() { readelf -rW "$PLUGIN" | grep -cE '^[0-9a-f]{8} '; }

# newest PREFIX: of the symbol versions that the plug-in requires.
newest() { readelf -VW "$PLUGIN" | grep -oE "Name: $1_[0-9.]+" | sed 's/Name: //' | sort -Vu | tail -n 1; }

# The code and data of each source file; what the compiler has merged counts where it ended up.
units() {
    "${PREFIX}nm" --print-size --line-numbers "$PLUGIN.debug" 2>/dev/null |
        awk '$2 ~ /^[0-9a-f]{8}$/ || length($2) == 8' |
        while read -r _ size kind _ place; do
            case $kind in [tTwWrRdDuV]) printf '%d %s\n' "0x$size" "${place:-?}" ;; esac
        done |
        awk '{ sub(/:[0-9?]+$/, "", $2); n = split($2, part, "/")
               name = n > 1 ? part[n - 1] "/" part[n] : "(no line)"; bytes[name] += $1 }
             END { for (name in bytes) printf "%7d  %s\n", bytes[name], name }' | sort -rn
}

report() {
    local text data total
    read -r text data total < <(sizes)
    printf 'text %d, data %d: %d bytes; the device has room for %d\n' \
        "$text" "$data" "$total" "$LIMIT"
    printf 'relocations: %d\n' "$(relocations)"
    printf 'needed: %s\n' "$(needed | sort | paste -sd ' ')"
    printf 'newest versions: %s %s\n' "$(newest GLIBC)" "$(newest GLIBCXX)"
    [ ! -e "$PLUGIN.debug" ] || { echo 'units:' && units; }
}

check() {
    local text data total failed=0 surplus
    read -r text data total < <(sizes)
    if [ "$total" -gt "$LIMIT" ]; then
        echo "armhf-size.sh: text and data are $total bytes ($text + $data), $((total - LIMIT)) more than $LIMIT" >&2
        failed=1
    fi
    surplus=$(needed | grep -vxF "$(tr -s ' \n' '\n' <<<"$LIBRARIES")" || true)
    if [ -n "$surplus" ]; then
        echo "armhf-size.sh: no library of a device's: ${surplus//$'\n'/ }" >&2
        failed=1
    fi
    return "$failed"
}

action=report
if [ "${1:-}" = --check ]; then
    action=check
    shift
fi
if [ $# -lt 1 ] || [ $# -gt 2 ]; then
    usage >&2
    exit 2
fi
PLUGIN=$1
PREFIX=${2:-arm-linux-gnueabihf-}
[ -r "$PLUGIN" ] || {
    echo "armhf-size.sh: cannot read $PLUGIN" >&2
    exit 2
}
$action
