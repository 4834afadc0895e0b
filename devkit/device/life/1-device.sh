#!/usr/bin/env bash
# shellcheck disable=SC2016 # command lines are expanded when they are run
chapter 'The device'
tell 'Accounts, files, tools, a journal and the management daemon of its own. Alice is its owner in' \
    'the cloud. Bob and carol are in the cloud group sky-hold, but carol is locked. Dave is a local' \
    'user of another group.'
tell 'Under each command for the plug-in stands what it sent, what it changed and what it logged (with' \
    '--log-level 7).'
run 'boxwelld show | tr -s " "'
run 'getent passwd alice bob carol dave'
run 'sed "s/></>\n</g" /opt/skyhold/etc/registration.conf'
run 'for key in Model Firmware_Version Serial; do boxwellinfo $key; done'
expect_account alice 'admin unlocked alice@example.com'
expect_account carol 'sky-hold locked carol@example.com'
expect_account dave 'share unlocked'
