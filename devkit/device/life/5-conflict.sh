#!/usr/bin/env bash
# shellcheck disable=SC2016 # command lines are expanded when they are run
chapter 'A name that is taken'
tell 'Zoe is renamed too, and her remote-access name is dave, as a local user is already called. That' \
    'one is moved out of the way, and the device raises an event about it.'
ask 'updateuser zoe $hash zoe@home.example dave --as alice@home.example' CODE_SUCCEED success
expect_account zoe@home.example 'sky-hold locked zoe@home.example'
expect_account dave ''
moved=$(accounts | sed -n 's/^\(dave[0-9a-f]\{4\}\):.*/\1/p')
expect_account "$moved" 'share unlocked'
expect_text 'an event' "user=\\\"dave\\\" newuser=\\\"$moved\\\" clouduser=\\\"zoe@home.example\\\"" \
    "$(</var/lib/device/events.jsonl)"
