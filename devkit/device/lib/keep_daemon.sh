#!/usr/bin/env bash
# The management daemon's parent, in a session of its own, as long as the device lives: starts the daemon,
# and when that has ended or been killed, again for each line that `boxwelld revive` writes into the pipe.
# Standard output is the daemon's log. SIGTERM ends the daemon, and this with its status; a daemon that
# failed ends this, too.
set -u
PIPE=/run/.boxwelld.revive
daemon=

# leave_if_failed STATUS: unless it has ended well, or by a kill.
leave_if_failed() {
    case $1 in
        0 | $((128 + $(kill -l KILL))) | $((128 + $(kill -l TERM)))) ;;
        *) exit "$1" ;;
    esac
}

stop() {
    local status
    [ -n "$daemon" ] || exit 0
    kill -TERM "$daemon"
    wait "$daemon"
    status=$?
    [ "$status" -eq 127 ] || leave_if_failed "$status" # 127: it has been waited for
    exit 0
}

trap stop TERM
mkfifo "$PIPE"
exec 2>/dev/null {requests}<>"$PIPE"
while :; do
    # It ends with this process, where that is killed.
    setpriv --pdeathsig KILL setsid boxwelld serve 2>&1 {requests}>&- &
    daemon=$!
    wait "$daemon"
    status=$?
    daemon=
    leave_if_failed "$status"
    read -r _ <&"$requests"
done
