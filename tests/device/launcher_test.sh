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

device() { "$launcher" --quiet --build "$build" --way "$way" "$@"; }

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

# What is still there of a device, given the time to go.
left_behind() {
    for _ in {1..200}; do
        pgrep -f "$LINGER" >/dev/null || [ -e "$1" ] || return 0
        sleep 0.05
    done
    pgrep -fa "$LINGER"
    ls -d "$1"
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
check 'a signal, no log file' '139 device: the command ended by SIGSEGV' \
    "$(complaint --no-log-file sh -c '[ ! -e /var/log/shbroker.log ] && kill -SEGV $$')"

# Whatever ends the launcher: the command's process, one that leaves its session and one that would
# outlive the command.
export LINGER="sleep 98765$$"
mkfifo "$work/ready"
for ending in 0 INT TERM HUP KILL; do
    # Not by the function: $! is to be the launcher.
    "$launcher" --quiet --build "$build" --way "$way" sh -c 'setsid $LINGER & $LINGER &
        echo "${DEVICE_TREE:-/no/tree}" >"$1"; [ "$2" = 0 ] || exec $LINGER' sh "$work/ready" $ending &
    read -r tree <"$work/ready"
    [ $ending = 0 ] || kill -$ending $!
    wait $! 2>/dev/null
    status=$?
    [ $ending = 0 ] || status=$(kill -l $status)
    check 'status of the ended launcher' $ending "$status"
    check "left behind after $ending" '' "$(left_behind "$tree")"
done
# A terminal's Ctrl-C is the command's to handle. exec: script's shell is not to have it too.
check 'Ctrl-C' 9 "$( (read -r _ <"$work/ready"; printf '\003') |
    script -qec "exec env --default-signal=INT $launcher --quiet --build $build --way $way \
        sh -c 'trap \"exit 9\" INT; echo >ready; sleep 60'" /dev/null >/dev/null; echo $?)"

check 'a bad option' '2 device: unknown option --wai' "$(complaint --wai)"
check 'a bad way' '2 device: --way is root, userns or proot, not x' "$(complaint --way x)"
check 'no seed' '125 device: cannot read the seed /no/seed' "$(complaint --seed /no/seed)"
echo '{"accounts": [{"name": "x"}]}' >seed.json
check 'a bad seed' "125 device: boxwelld refused $work/seed.json" \
    "$(complaint --seed seed.json | sed 's/ device:   .*//')"
cp "$build/device-keeper" "$build/libproot-sockets.so" .
printf '#!/bin/sh\necho boom; exit 3\n' >boxwelld
chmod +x boxwelld
check 'no daemon' '125 device: boxwelld ended before it opened /run/boxwelld.sock device:   boom' \
    "$(complaint --build .)"

check 'the host' "$before" "$(host)"
exit $((failures > 0))
