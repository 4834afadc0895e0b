#!/usr/bin/env bash
# launcher_test.sh LAUNCHER BUILD WAY: a device by that way is private, real, and leaves nothing.
# Exit status 77: the way does not work here.
# shellcheck disable=SC2016 # what the device's shell expands
set -u
launcher=$1 build=$2 way=$3
failures=0

check() { # WHAT EXPECTED ACTUAL
    [ "$2" != "$3" ] || return 0
    failures=$((failures + 1))
    printf '%s: expected "%s", got "%s"\n' "$1" "$2" "$3"
}

device() { "$launcher" --quiet --build "$build" --way "$way" "$@"; }

# The launcher's last line on standard error, and its status.
complaint() {
    local text
    text=$(device "$@" 2>&1 >/dev/null)
    echo "$? $(head -n 1 <<<"$text")"
}

device true 2>/dev/null || {
    device true
    exit 77
}
work=$(mktemp -d /tmp/launcher.XXXXXX)
trap 'rm -rf "$work"' EXIT
before=$(md5sum /etc/passwd /etc/group; ls -la /opt /var/log /var/lib /dev/shm; cat /proc/self/mountinfo)

# What passes through.
device sh -c 'exit 7'
check 'exit status' 7 $?
device sh -c 'kill -SEGV $$' 2>/dev/null
check 'exit status of a signal' 139 $?
check 'standard input' 'a line' "$(device cat <<<'a line')"
check 'environment, folder, home' "own $work $HOME" \
    "$(cd "$work" && OWN=own device sh -c 'echo "$OWN $PWD $HOME"')"
check 'arguments' '<a b><><*>' "$(device printf '<%s>' 'a b' '' '*')"

# What is private.
check 'accounts' 'alice admin / bob sky-hold / dave share' "$(device sh -c '
    for name in alice bob dave; do echo "$name $(id -gn $name)"; done' | paste -sd / | sed 's,/, / ,g')"
check 'a change of the device' 'changed' "$(device sh -c '
    echo "eve:x:9:9::/:" >>/etc/passwd && getent passwd eve >/dev/null && rm -r /opt/* /var/lib/device &&
    touch /var/log/x /dev/shm/x /run/x /usr/bin/x && echo changed')"
check 'log file' no "$(device --no-log-file sh -c '[ -e /var/log/shbroker.log ] || echo no')"
if [ "$way" != root ]; then
    check 'pinning' 'Operation not permitted' "$(device sh -c '
        touch /opt/x && chattr +i /opt/x 2>&1' | grep -o 'Operation not permitted')"
fi

# What is real: the journal, by its own protocol; the daemon; the tools.
check 'journal' 'device-test 4 sent' "$(device sh -c '
    printf "MESSAGE=sent\nPRIORITY=4\nCATEGORY=device-test\n" | logger --journald && journalctl --sync &&
    journalctl -D "$DEVICE_JOURNAL" -q -o json CATEGORY=device-test' |
    python3 -c 'import json, sys
e = json.load(sys.stdin); print(e["CATEGORY"], e["PRIORITY"], e["MESSAGE"])')"
check 'daemon and plug-in' 'CODE_NOREPLY' "$(device broker run unregister | cut -d , -f 1)"
check 'information' 'BX-4200 ERROR: no such key' \
    "$(device sh -c 'boxwellinfo Model; rm /var/lib/device/info/Serial; boxwellinfo Serial' | paste -sd ' ')"
check 'events' '["a b", "\"c\""]' "$(device sh -c '/usr/bin/event_push "a b" "\"c\""
    cat /var/lib/device/events.jsonl')"

# Nothing stays behind, whatever ends the launcher.
left_behind() {
    for _ in {1..100}; do
        pgrep -f "sleep 98765$$" >/dev/null || break
        sleep 0.05
    done
    pgrep -fa "sleep 98765$$"
    [ ! -e "$tree" ] || echo "$tree"
}
# The command's process, one that leaves its session and one that outlives the command.
export LINGER="sleep 98765$$"
for ending in none INT TERM HUP KILL; do
    rm -f "$work/ready"
    mkfifo "$work/ready"
    # Not by the function: $! is to be the launcher.
    "$launcher" --quiet --build "$build" --way "$way" sh -c 'setsid $LINGER & $LINGER & echo "${DEVICE_TREE:-/nowhere}" >"$1"
        [ "$2" = none ] || exec $LINGER' sh "$work/ready" "$ending" &
    read -r tree <"$work/ready"
    [ "$ending" = none ] || kill "-$ending" $!
    wait $! 2>/dev/null
    check "status after $ending" "$([ $ending = none ] && echo 0 || echo $((128 + $(kill -l $ending))))" $?
    check "left behind after $ending" '' "$(left_behind)"
done
# A terminal's Ctrl-C is the command's to handle.
check "Ctrl-C" 9 "$( (sleep 3; printf '\003') |
    script -qec "$launcher --quiet --build $build --way $way sh -c 'trap \"exit 9\" INT; sleep 20; exit 1'" \
        /dev/null >/dev/null; echo $?)"

# What is refused, and why.
check 'bad option' '2 device: unknown option --wai' "$(complaint --wai)"
check 'bad way' '2 device: --way is root, userns or proot, not x' "$(complaint --way x)"
check 'no seed' '125 device: cannot read the seed /no/seed' "$(complaint --seed /no/seed)"
echo '{"accounts": [{"name": "x"}]}' >"$work/seed.json"
check 'bad seed' "125 device: boxwelld refused $work/seed.json" "$(complaint --seed "$work/seed.json")"
cp "$build/device-keeper" "$build/libproot-sockets.so" "$work"
printf '#!/bin/sh\necho boom; exit 3\n' >"$work/boxwelld"
chmod +x "$work/boxwelld"
build=$work
check 'no daemon' '125 device: boxwelld ended before it opened /run/boxwelld.sock device:   boom' \
    "125 $(device true 2>&1 | paste -sd ' ')"

check 'the host' "$before" \
    "$(md5sum /etc/passwd /etc/group; ls -la /opt /var/log /var/lib /dev/shm; cat /proc/self/mountinfo)"
exit $((failures > 0))
