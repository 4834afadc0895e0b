#!/usr/bin/env bash
# What the stripped plug-in costs a device, and what it asks of it.
set -euo pipefail

# Bytes of text, data and bss that the device has room for, pages of memory that loading may make its own,
# and the libraries that it has.
LIMIT=${SIZE_LIMIT:-46000}
DIRTY_LIMIT=3
LIBRARIES='ld-linux-armhf.so.3 libbwdclient.so libc.so.6 libcrypt.so.1 libgcc_s.so.1 libglib-2.0.so.0
    libstdc++.so.6 libsystemd.so.0'

usage() {
    cat <<'TXT'
usage: armhf-size.sh [--check] PLUGIN [CROSS_PREFIX]

Prints text, data and bss, the pages that loading writes, file and compressed size, relocations, needed
libraries, the newest GLIBC and GLIBCXX versions required, and the plug-in's units, largest first (from the
debug symbols beside it). With --check it fails when the sum or the pages are too many, another library is
needed, or the hardening is not whole: stack protector, checked C calls, read-only relocations, bound at
load, no relocation of code, no library path.
TXT
}

sizes() { "${PREFIX}size" "$PLUGIN" | awk 'NR == 2 { print $1, $2, $3, $1 + $2 + $3 }'; }

# Pages of the writable segment, which relocations and initial values are written to.
dirty_pages() {
    readelf -lW "$PLUGIN" | awk '$1 == "LOAD" && / RW / { print $3, $6 }' | while read -r address size; do
        echo $(((address + size + 4095) / 4096 - address / 4096))
    done
}

# What of the hardening is missing, a line each.
unhardened() {
    local symbols dynamic
    symbols=$(readelf -W --dyn-syms "$PLUGIN")
    dynamic=$(readelf -dW "$PLUGIN")
    grep -q ' __stack_chk_fail' <<<"$symbols" || echo 'no stack protector'
    grep -q ' __snprintf_chk' <<<"$symbols" || echo 'no checked C calls'
    grep -q GNU_RELRO <<<"$(readelf -lW "$PLUGIN")" || echo 'relocations stay writable'
    grep -q BIND_NOW <<<"$dynamic" || echo 'not bound at load'
    ! grep -q TEXTREL <<<"$dynamic" || echo 'code is relocated'
    ! grep -qE 'R(UN)?PATH' <<<"$dynamic" || echo 'a library path'
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
    printf 'text %d, data %d, bss %d: %d bytes; the device has room for %d\n' \
        "$text" "$data" "$bss" "$total" "$LIMIT"
    printf 'pages that loading writes: %d of %d\n' "$(dirty_pages)" "$DIRTY_LIMIT"
    printf 'file: %d bytes, compressed (xz) %d\n' "$(stat -c %s "$PLUGIN")" "$(xz -9 -c "$PLUGIN" | wc -c)"
    printf 'relocations: %d\n' "$(relocations)"
    printf 'needed: %s\n' "$(needed | sort | paste -sd ' ')"
    printf 'newest versions: %s %s\n' "$(newest GLIBC)" "$(newest GLIBCXX)"
    printf 'hardening: %s\n' "$(unhardened | paste -sd , | sed 's/^$/whole/')"
    [ ! -e "$PLUGIN.debug" ] || { echo 'units:' && units; }
}

# complain TEXT: unless it is empty; then the check fails.
complain() {
    [ -n "$1" ] || return 0
    echo "armhf-size.sh: $1" >&2
    failed=1
}

check() {
    local text data bss total failed=0 surplus
    read -r text data bss total < <(sizes)
    [ "$total" -le "$LIMIT" ] ||
        complain "text, data and bss are $total bytes ($text + $data + $bss), $((total - LIMIT)) more than $LIMIT"
    [ "$(dirty_pages)" -le "$DIRTY_LIMIT" ] || complain "loading writes $(dirty_pages) pages, more than $DIRTY_LIMIT"
    surplus=$(needed | grep -vxF "$(tr -s ' \n' '\n' <<<"$LIBRARIES")" || true)
    complain "${surplus:+a device has no library: ${surplus//$'\n'/ }}"
    complain "$(unhardened | paste -sd ,)"
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
