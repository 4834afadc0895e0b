#!/usr/bin/env bash
# strict_test.sh LAUNCHER BUILD: what one command of a member, or of nobody, does to a device: all that
# docs/security.md tells of, on the contract's build and on the strict one.
# shellcheck disable=SC2016,SC2317 # what a root shell would expand; called by name
set -u
launcher=$1 build=$2

# attack NAME DONE ARG...: whether the command did what DONE, a condition, looks for; else what the log
# says, where the attacker's text must not be.
attack() {
    local name=$1 done=$2
    shift 2
    boxwelld seed "$SEED" >/dev/null
    cp /var/lib/device/owner "$OWNER"
    : >/var/log/shbroker.log
    before=$(boxwelld show; cat "$OWNER")
    broker run "$@" --plugin "$PLUGIN" >/dev/null
    if eval "$done"; then
        echo "$name succeeds"
        return
    fi
    sed -n "s/.*ERROR \[syscmd:[a-zA-Z]*\]:/$name:/p" /var/log/shbroker.log | head -1
    [ "$before" = "$(boxwelld show; cat "$OWNER")" ] || echo "$name changes the device"
    ! grep -E 'id>|markup|<owner>b' /var/log/shbroker.log
}

owner_is() { grep -q "<owner>$1</owner>" "$OWNER"; }
# Whether an entry of the journal begins with what the attacker wrote.
forged() { journalctl --sync; journalctl -D "$DEVICE_JOURNAL" -q -o cat CATEGORY=shbroker | grep -q "^forged $1"; }

attacks() {
    cp "$OWNER" /var/lib/device/owner
    pair=$(broker hash secret)
    evil=$(printf 'S:H]]></SysHash><Group_Name>admin</Group_Name><!--markup' | base64 -w 0)
    attack a '[ -s /run/p ]' updateuser bob "$pair" '$(id>/run/p)' dave --as bob
    attack b 'owner_is bob' initlocalsession '<owner>bob</owner>' ../registration.conf 1 --as bob
    attack c '[ "$(id -gn abcdefghijklmnopqrstuvwxyz01234)" = admin ]' updateuser bob "$evil" \
        'abcdefghijklmnopqrstuvwxyz01234--><Email_Address><![CDATA[markup' b-p2p --as bob 2>/dev/null
    attack 'd, operation' 'forged a' $'x\nforged a\n'
    attack 'd, login' 'forged b' deleteuser bob '' --as $'x\nforged b\n'
    attack e 'owner_is bob' updateuser alice "$pair" bob b-p2p --as bob
}

# by PLUGIN: the attacks, on a device of their own.
by() {
    PLUGIN=$build/$1 SEED=$(dirname "$launcher")/seed.json OWNER=/opt/skyhold/etc/registration.conf \
        "$launcher" --quiet --build "$build" bash -uc "$(declare -f attack owner_is forged attacks); attacks" 2>&1
}

diff - <(by libsyscmd.so) <<'TXT' && diff - <(by libsyscmd_strict.so) <<'TXT2'
a succeeds
b succeeds
c succeeds
d, operation succeeds
d, login succeeds
e succeeds
TXT
a: updateuser refused: email holds what it may not
b: initlocalsession refused: username holds what it may not
c: updateuser refused: password_hash holds what it may not
d, operation: unknown operation: x\x0aforged a\x0a
d, login: ACCESS DENIED for SYS: operation=deleteuser login=x\x0aforged b\x0a is_owner=0 is_sh=0
e: updateuser refused: username is not the member's own
TXT2
