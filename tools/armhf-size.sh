#!/usr/bin/env bash
# What the stripped plug-in costs a device, and what it asks of it; `broker check` tells whether a device has it.
set -euo pipefail

DIRTY_LIMIT=3 # pages of memory that loading may make its own

usage() {
    cat <<'TXT'
usage: armhf-size.sh [--check] PLUGIN [CROSS_PREFIX]

Prints text, data and bss, the pages that loading writes, file and compressed size, relocations, needed
libraries, the newest GLIBC and GLIBCXX versions required, and the plug-in's units, largest first (from the
debug symbols beside it). With --check it fails when these pages are too many.
TXT
}

sizes() { "${PREFIX}size" "$PLUGIN" | awk 'NR == 2 { print $1, $2, $3, $1 + $2 + $3 }'; }

# Pages of the writable segment, which relocations and initial values are written to.
dirty_pages() {
    readelf -lW "$PLUGIN" | awk '$1 == "LOAD" && / RW / { print $3, $6 }' | while read -r address size; do
        echo $(((address + size + 4095) / 4096 - address / 4096))
    done
}

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
    local text data bss total
    read -r text data bss total < <(sizes)
    printf 'text %d, data %d, bss %d: %d bytes\n' "$text" "$data" "$bss" "$total"
    printf 'pages that loading writes: %d of %d\n' "$(dirty_pages)" "$DIRTY_LIMIT"
    printf 'file: %d bytes, compressed (xz) %d\n' "$(stat -c %s "$PLUGIN")" "$(xz -9 -c "$PLUGIN" | wc -c)"
    printf 'relocations: %d\n' "$(relocations)"
    printf 'needed: %s\n' "$(needed | sort | paste -sd ' ')"
    printf 'newest versions: %s %s\n' "$(newest GLIBC)" "$(newest GLIBCXX)"
    [ ! -e "$PLUGIN.debug" ] || { echo 'units:' && units; }
}

check() {
    [ "$(dirty_pages)" -le "$DIRTY_LIMIT" ] || {
        echo "armhf-size.sh: loading writes $(dirty_pages) pages, more than $DIRTY_LIMIT" >&2
        return 1
    }
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
