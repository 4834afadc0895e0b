#!/usr/bin/env bash
# shellcheck disable=SC2016 # command lines are expanded when they are run
chapter 'Single sign-on'
tell 'Bob moves to single sign-on: his account takes the name of his e-mail address and keeps its' \
    'password; the device is marked as upgraded.'
ask 'upgradeusertosso bob bob@example.com "" --as bob' CODE_SUCCEED success
expect_account bob ''
expect_account bob@example.com 'sky-hold unlocked bob@example.com'
