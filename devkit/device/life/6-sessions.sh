#!/usr/bin/env bash
# shellcheck disable=SC2016 # command lines are expanded when they are run
chapter 'Local sessions'
: >"$SESSIONS.probe"
if chattr +i "$SESSIONS.probe" 2>/dev/null; then
    pins=yes
    chattr -i "$SESSIONS.probe"
else
    pins=no
    tell 'Nothing can be pinned on this device: that sets the immutable attribute, which takes the' \
        'right of a real root on a file system that has it. Here the kernel refuses, and the log shows' \
        'it; everything else is as always.'
fi
rm -f "$SESSIONS.probe"

# expect_sessions NAME...: the sessions there are, a pinned one with a + behind its name.
expect_sessions() {
    local expected=$*
    [ "$pins" = yes ] || expected=${expected//+/}
    expect 'the sessions' "$expected" "$(sessions | sed 's/.*immutable.*/&+/; s/.* //' | paste -sd ' ')"
}

tell 'A session is a record named by its token; it lives for a day.'
ask 'initlocalsession bob@example.com token-1 1 --as bob@example.com' CODE_SUCCEED success
expect_sessions token-1

tell 'Two days later the next session sweeps it, with the shared memory of its name.' "$(
    if [ "$pins" = yes ]; then
        echo 'The new one is pinned: no sweep removes it.'
    else
        echo 'The new one asks to be pinned, and stays an ordinary one.'
    fi
)"
run 'touch -d "2 days ago" /opt/skyhold/etc/local_sessions/token-1'
run 'echo data >/dev/shm/token-1; ls /dev/shm'
ask 'initlocalsession bob@example.com token-2 0 --as bob@example.com' CODE_SUCCEED success
run 'ls /dev/shm'
expect 'the shared memory of token-1' '' "$(ls /dev/shm)"
expect_sessions token-2+
if [ "$pins" = yes ]; then
    run 'rm -f /opt/skyhold/etc/local_sessions/token-2'
else
    expect_log 'ioctl failed on'
fi

if [ "$pins" = yes ]; then
    tell "Bob's next pinned session unpins the one before, which from now on ages as any other."
else
    tell "Bob's next session, with nothing to unpin: the one before ages as any other."
fi
ask 'initlocalsession bob@example.com token-3 0 --as bob@example.com' CODE_SUCCEED success
expect_sessions token-2 token-3+
run 'touch -d "2 days ago" /opt/skyhold/etc/local_sessions/token-2'
ask 'initlocalsession zoe@home.example token-4 1 --as alice@home.example' CODE_SUCCEED success
expect_sessions token-3+ token-4
