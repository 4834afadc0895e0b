#!/usr/bin/env bash
# shellcheck disable=SC2016 # command lines are expanded when they are run
chapter 'The device leaves its owner'
tell 'Anybody may ask for it, without credentials. The daemon forgets the cloud owner; the owner file' \
    'stays as it is, and the answer is that there is none.'
ask 'unregister' CODE_NOREPLY 'system command failed'
expect 'the cloud owner' '(none)' "$(boxwelld show | awk '/^cloud owner/ {getline; print $1}')"
expect 'the owner' alice@home.example "$(sed 's/.*<owner>//; s/<.*//' "$OWNER_FILE")"
tell "What the device's log file has of it, and what the journal never gets, the lines without an end:"
run 'tail -n 3 /var/log/shbroker.log'
