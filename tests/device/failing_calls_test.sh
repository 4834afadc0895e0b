#!/usr/bin/env bash
# On a device: calls of the plug-in fail as asked, all others are made.
set -u
failures=0

# check EXPECTED FAULTS COMMAND...: exit status, code, and what is said on standard error.
check() {
    local expected=$1 actual faults
    read -ra faults <<<"$2"
    shift 2
    actual=$(broker run "$@" "${faults[@]/#/--fail=}" 2>/run/said)
    actual="$? ${actual%%,*}$(sed 's/^broker: --fail/;/; s/made: .*/made/' /run/said)"
    [ "$actual" != "$expected" ] || return 0
    failures=$((failures + 1))
    printf '%s %s: expected\n  %s\ngot\n  %s\n' "${faults[*]}" "$*" "$expected" "$actual"
}

add=(addremoteuser zoe --as alice)
session=(initlocalsession bob token-1 1 --as bob)
check '1 CODE_FAILED' open:1 "${add[@]}"
check '1 CODE_FAILED' malloc:1:ENOMEM "${add[@]}"
check '1 CODE_FAILED; open:99: not reached, calls made' 'malloc:1 open:99' "${add[@]}"
! boxwelld show | grep -qw zoe || failures=$((failures + 1))
check '0 CODE_SUCCEED; look-up:1: not reached, calls made' look-up:1 "${add[@]}"
boxwelld show | grep -qw zoe || failures=$((failures + 1))
check '0 CODE_SUCCEED' read:1:HALF addremoteuser yan --as alice
check '0 CODE_SUCCEED' write:1 "${session[@]}"
# The clock is the real one, and so is the journal.
[ "$(find /opt/skyhold/etc/local_sessions/token-1 -mmin -5)" ] || failures=$((failures + 1))
journalctl --sync
journalctl -D "$DEVICE_JOURNAL" -q -o cat CATEGORY=shbroker | grep -q 'ERROR:' || failures=$((failures + 1))
exit $((failures > 0))
