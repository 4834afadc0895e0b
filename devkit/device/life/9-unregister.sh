#!/usr/bin/env bash
# shellcheck disable=SC2016 # command lines are expanded when they are run
chapter 'The device leaves its owner'
tell 'Anybody may ask for it, without credentials. The daemon forgets the cloud owner; the owner file' \
    'stays as it is, and the answer is that there is none.'
ask 'unregister' CODE_NOREPLY 'system command failed'
expect 'the cloud owner' '(none)' "$(boxwelld show | awk '/^cloud owner/ {getline; print $1}')"
expect 'the owner' alice@home.example "$(sed 's/.*<owner>//; s/<.*//' "$OWNER_FILE")"
tell 'The log file has every statement, also those that the journal never gets: a line without an end.'
run 'grep -o "[A-Z]*:add_account.cpp:474 .*@example.com" /var/log/shbroker.log'
expect_text 'the log file' 'username=zoe, syshash=' "$(</var/log/shbroker.log)"
