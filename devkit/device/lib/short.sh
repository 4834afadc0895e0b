#!/usr/bin/env bash
# shellcheck disable=SC2016 # command lines are expanded when they are run
# One command. Sourced by the demo.
tell 'A private device: its own accounts, files, journal and management daemon. Alice is its owner in the' \
    'cloud; bob is a member. The plug-in is the real one.'
run 'getent passwd alice bob'
tell 'The cloud asks for an account: zoe, with the hashes of her password. Below the answer stands what the' \
    'plug-in and the daemon said to each other, what changed on the device, and what the journal has.'
hash_of 'first password'
ask 'adduser zoe $hash zoe@example.com --as alice' CODE_SUCCEED success
expect_account zoe 'sky-hold locked zoe@example.com'
expect_transaction '<xs:add'
tell 'The whole life of a device, all seven operations and what goes wrong with them: the same with --full.'
