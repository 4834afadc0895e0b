#!/usr/bin/env bash
# Long work in a line. Sourced by ./dev.

# How many lines of a log a failure quotes.
QUOTED_LINES=30

# quietly NAME TEXT COMMAND...: runs the command, which asks nothing, with its output in build/log/NAME.log,
# and tells TEXT and the time it took; on a terminal how far it is, too. When it fails, ends with its status, and
# tells the log and what it says of the failure.
quietly() {
    local text=$2 log=build/log/$1.log status=0 begin=$SECONDS teller=
    shift 2
    mkdir -p build/log
    : >"$log"
    printf 'dev: %s ...' "$text" >&2
    # The command stays in the foreground, where Ctrl-C reaches it.
    if [ -t 2 ]; then
        tell_progress "$text" "$log" &
        teller=$!
    fi
    "$@" >"$log" 2>&1 </dev/null || status=$?
    [ -z "$teller" ] || end_progress "$teller" "$text"
    if [ "$status" -eq 0 ]; then
        printf ' %d s\n' $((SECONDS - begin)) >&2
        return
    fi
    printf ' failed\n' >&2
    quote "$log" | sed 's/^/    /' >&2
    printf 'dev: %s failed; all of its output is in %s\n' "$text" "$log" >&2
    exit "$status"
}

# tell_progress TEXT LOG: by ninja's last [done/all], where it has one; for as long as this script lives.
tell_progress() {
    local done_of_all begin=$SECONDS
    while sleep 0.5 && kill -0 $$ 2>/dev/null; do
        done_of_all=$(tail -c 4096 "$2" | grep -aoE '^\[[0-9]+/[0-9]+\]' | tail -n 1) || true
        printf '\r\033[Kdev: %s ... %s%d s' "$1" "${done_of_all:+$done_of_all }" $((SECONDS - begin)) >&2
    done
}

end_progress() {
    kill "$1" 2>/dev/null || true
    wait "$1" 2>/dev/null || true
    printf '\r\033[Kdev: %s ...' "$2" >&2
}

# quote LOG: from the first line that tells of a failure, or the last ones.
quote() {
    local first
    first=$(grep -anm 1 -E '^FAILED: |^CMake Error|^E: |(^|: )(fatal )?error: ' "$1" | cut -d : -f 1) || true
    if [ -n "$first" ]; then
        tail -n "+$first" "$1" | head -n "$QUOTED_LINES"
    else
        tail -n "$QUOTED_LINES" "$1"
    fi
}
