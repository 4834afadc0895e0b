#!/usr/bin/env bash
# launcher_test.sh LAUNCHER BUILD WAY: a device by that way is private, real, and leaves nothing.
# Exit status 77: the way does not work here.
# shellcheck disable=SC2016,SC2317 # what the device's shell expands, and runs
set -u
launcher=$1 build=$2 way=$3
failures=0

check() { # WHAT EXPECTED ACTUAL
    [ "$2" != "$3" ] || return 0
    failures=$((failures + 1))
    printf '%s: expected\n%s\ngot\n%s\n' "$1" "$2" "$3"
}

start=("$launcher" --quiet --build "$build" --way "$way")
device() { "${start[@]}" "$@"; }

# The status and what was said, on one line.
complaint() {
    local text
    text=$(device "$@" 2>&1)
    echo "$? $(paste -sd ' ' <<<"$text")"
}

host() {
    md5sum /etc/passwd /etc/group
    ls -la /opt /var/log /var/lib /run
    cat /proc/self/mountinfo
}

# What a device is, told by itself.
tell() {
    echo "arguments: $(printf '<%s>' "$@")"
    echo "folder, home, environment: $PWD $HOME $OWN"
    read -r line
    echo "standard input: $line"
    for name in alice bob dave; do echo "account: $name $(id -gn "$name")"; done
    echo "log file: $(stat -c %s /var/log/shbroker.log)"
    printf 'MESSAGE=sent\nPRIORITY=4\nCATEGORY=device-test\n' | logger --journald
    journalctl --sync
    journalctl -D "$DEVICE_JOURNAL" -q -o verbose --output-fields PRIORITY,MESSAGE \
        CATEGORY=device-test | sed -n 's/^    /journal: /p' | sort
    echo "daemon and plug-in: $(broker run unregister | cut -d , -f 1)"
    rm /var/lib/device/info/Serial
    echo "information: $(boxwellinfo Model), $(boxwellinfo Serial)"
    /usr/bin/event_push 'a b' '"c"'
    echo "event: $(cat /var/lib/device/events.jsonl)"
    touch /opt/pinned
    chattr +i /opt/pinned 2>/dev/null && pinned=yes || pinned=no
    echo "pinned: $DEVICE_WAY $pinned"
    echo 'eve:x:9:9::/:' >>/etc/passwd
    touch /var/log/x /var/lib/x /dev/shm/x /run/x /usr/bin/x
    rm -r /opt/linkhub /var/lib/device
    echo "changed: $(getent passwd eve)"
    exit 7
}

# left_behind TREE TRACER: what is still there of a device, given the time to go.
left_behind() {
    for _ in {1..200}; do
        pgrep -f "$LINGER" >/dev/null || [ -e "$1" ] || break
        sleep 0.05
    done
    pgrep -fa "$LINGER"
    ls -d "$1" "/tmp/prooted-$2-"* 2>/dev/null
}

# A device that tries to write everywhere, and where the machine then has a file. In a namespace of the
# test's own, where /mnt is a mount with another one in it.
writes() {
    local place places=(/etc /etc/cron.d /usr/local/bin /usr/lib /boot /srv /home "$HOME" /var/cache
        /var/spool /mnt "/mnt/a b" /mnt/current /mnt/temporary "$BUILD" /tmp)
    mount -t tmpfs tmpfs /mnt
    mkdir "/mnt/a b" /mnt/current /mnt/temporary
    mount -t tmpfs tmpfs "/mnt/a b"
    cd /mnt/current || return
    TMPDIR=/mnt/temporary "$@" bash -c '
        for place; do
            echo "initlocalsession bob \"../../../..$place/$PROBE\" 1 --as bob"
        done | broker script - >/dev/null || echo refused
        find /dev -type b
        for setting in /proc/sys/kernel/core_pattern /proc/sysrq-trigger /sys/kernel/uevent_helper; do
            [ ! -w $setting ] || echo $setting
        done' bash "${places[@]}"
    for place in "${places[@]}"; do
        [ ! -e "$place/$PROBE" ] || echo "$place"
        rm -f "$place/$PROBE"
    done
}

# owner SEED: owner and remote-access owner in the owner file, and what the plug-in lets the first do.
owner() {
    local report='sed -n "s/.*<owner>\(.*\)<.owner>.*<p2powner>\(.*\)<.p2powner>.*/\1 \2/p" \
        /opt/skyhold/etc/registration.conf 2>/dev/null || echo none'
    echo "$1" >seed.json
    device --seed seed.json bash -c "set -- \$($report); echo \"\$*\"
        broker run addremoteuser zoe --as \"\$1\"" | cut -d , -f 1 | paste -sd ' '
}

# The daemon dies, comes back, and has what it had.
revive() {
    boxwelld revive
    boxwelld order reply kept --skip 1
    boxwelld order die
    broker run unregister | cut -d , -f 1
    echo ? | boxwelld send - || boxwelld revive
    for request in first second; do boxwelld send - <<<"$request" | cut -c 1-5; done
    boxwelld transcript | sed -n 's/^ordered: //p'
    kill "$(pgrep -P "$(</run/.boxwelld.pid)")"
    while [ -e /run/boxwelld.sock ]; do sleep 0.01; done
    boxwelld revive && boxwelld show | grep -c '@example.com$'
}

# A revived daemon that fails, killed as it may be.
fail_revived() {
    boxwelld order die
    echo ? | boxwelld send -
    boxwelld revive
    kill -SEGV "$(pgrep -P "$(</run/.boxwelld.pid)")"
}

if text=$(device true 2>&1); then :; else
    echo "$text"
    exit 77
fi
work=$(mktemp -d /tmp/launcher.XXXXXX)
trap 'rm -rf "$work"' EXIT
before=$(host)

cd "$work" || exit
pins=$([ "$way" = root ] && echo yes || echo no)
check 'the device' "arguments: <a b><><*>
folder, home, environment: $work $HOME own
standard input: a line
account: alice admin
account: bob sky-hold
account: dave share
log file: 0
journal: MESSAGE=sent
journal: PRIORITY=4
daemon and plug-in: CODE_NOREPLY
information: BX-4200, ERROR: no such key
event: [\"a b\", \"\\\"c\\\"\"]
pinned: $way $pins
changed: eve:x:9:9::/:
status: 7" "$(OWN=own device bash -c "$(declare -f tell); tell \"\$@\"" bash 'a b' '' '*' <<<'a line' 2>&1
    echo "status: $?")"
if [ "$way" != proot ]; then
    export BUILD=$build PROBE=probe.$$
    own=(unshare --mount)
    [ "$(id -u)" -eq 0 ] || own+=(--user --map-root-user)
    check 'where it writes' "/mnt/current /mnt/temporary $([ ! -w "$build" ] || echo "$build ")/tmp" \
        "$("${own[@]}" bash -c "$(declare -f writes); writes \"\$@\"" bash "${start[@]}" 2>&1 | paste -sd ' ')"
fi
check 'a signal, no log file' '139 device: the command ended by SIGSEGV' \
    "$(complaint --no-log-file sh -c '[ ! -e /var/log/shbroker.log ] && kill -SEGV $$')"

check 'a revived daemon' "boxwelld: a daemon is running already
CODE_FAILED
boxwelld: no daemon listens at /run/boxwelld.sock; boxwelld revive starts a device's again
kept
<?xml
die
reply kept
3" "$(device bash -c "$(declare -f revive); revive" 2>&1)"
check 'a revived daemon fails' '125 device: boxwelld ended with status N' \
    "$(complaint bash -c "$(declare -f fail_revived); fail_revived 2>&1 >/dev/null | grep -v connection" |
        sed 's/ device:   .*//; s/status [0-9]*/status N/')"

# Whatever ends the launcher: the command's process, one that leaves its session and one that would
# outlive the command.
export LINGER="sleep 98765$$"
mkfifo "$work/ready"
for ending in 0 INT TERM HUP KILL; do
    # Not by the function: $! is to be the launcher.
    "${start[@]}" sh -c 'setsid $LINGER & $LINGER &
        echo "${DEVICE_TREE:-/no/tree} $(sed -n s/TracerPid:.//p /proc/self/status)" >"$1"
        [ "$2" = 0 ] || exec $LINGER' sh "$work/ready" $ending &
    read -r tree tracer <"$work/ready"
    [ $ending = 0 ] || kill -$ending $!
    wait $! 2>/dev/null
    status=$?
    [ $ending = 0 ] || status=$(kill -l $status)
    check 'status of the ended launcher' $ending "$status"
    check "left behind after $ending" '' "$(left_behind "$tree" "$tracer")"
done
# Output that nobody reads any more, and none at all.
check 'closed output' 'one status 141' "$( ({
    timeout --kill-after 5 120 "${start[@]}" sh -c '$LINGER & echo one; exec yes'
    echo "status $?" >status
} 2>&1 | head -1; cat status) | paste -sd ' ')"
check 'left behind after closed output' '' "$(left_behind /no/tree 0)"
check 'no standard streams' 0 "$( (device sh -c '[ "$(readlink /proc/$$/fd/[012] | sort -u)" = /dev/null ]' \
    <&- >&- 2>&-); echo $?)"
# A terminal's Ctrl-C is the command's to handle. exec: script's shell is not to have it too.
check 'Ctrl-C' 9 "$( (read -r _ <"$work/ready"; printf '\003') |
    script -qec "exec env --default-signal=INT ${start[*]} \
        sh -c 'trap \"exit 9\" INT; echo >ready; sleep 60'" /dev/null >/dev/null; echo $?)"
# Its Ctrl-\ ends all that have no handler.
(read -r _ <"$work/ready"; printf '\034') | script -qec "exec env --default-signal=QUIT ${start[*]} \
    sh -c 'echo \${DEVICE_TREE:-/no/tree} >tree; echo >ready; exec $LINGER'" /dev/null >/dev/null
check 'left behind after Ctrl-backslash' '' "$(left_behind "$(<tree)" 0)"

check 'a bad option' '2 device: unknown option --wai' "$(complaint --wai)"
check 'a bad way' '2 device: --way is root, userns or proot, not x' "$(complaint --way x)"
check 'the cloud owner' 'pat pat-p2p CODE_SUCCEED' "$(owner '{"groups": [{"name": "admin"}], "accounts":
    [{"name": "olga", "group": "admin"}, {"name": "pat", "group": "admin"}], "cloud_owner": "pat"}')"
check 'the administrator' 'olga far CODE_SUCCEED' "$(owner '{"groups": [{"name": "admin"}], "accounts":
    [{"name": "olga", "group": "admin", "p2p_user_name": "far"}]}')"
check 'no owner' 'none CODE_FAILED' "$(owner '{"groups": [{"name": "share"}], "accounts":
    [{"name": "olga", "group": "share"}]}')"
check 'no seed' '125 device: cannot read the seed /no/seed' "$(complaint --seed /no/seed)"
echo '{"accounts": [{"name": "x"}]}' >seed.json
check 'a bad seed' "125 device: boxwelld refused $work/seed.json" \
    "$(complaint --seed seed.json | sed 's/ device:   .*//')"
mkdir -p 'a checkout'/{build,devkit}
cp -R "$(dirname "$launcher")" 'a checkout/devkit/device'
cp "$build"/{boxwelld,device-keeper,libproot-sockets.so} 'a checkout/build'
check 'a path with a blank' '0 admin' "$(start=('a checkout/devkit/device/device' --quiet --way "$way")
    complaint id -gn alice)"
cp "$build"/{device-keeper,libproot-sockets.so} .
printf '#!/bin/sh\necho boom; exit 3\n' >boxwelld
chmod +x boxwelld
check 'no daemon' '125 device: boxwelld ended before it opened /run/boxwelld.sock device:   boom' \
    "$(complaint --build .)"

check 'the host' "$before" "$(host)"
exit $((failures > 0))
