#!/usr/bin/env bash
# shellcheck disable=SC2016 # command lines are expanded when they are run
chapter 'Users of remote access'
tell 'Added twice, the second time the daemon refuses; to the cloud both times it is done.'
ask 'addremoteuser zoe-p2p --as alice@home.example' CODE_SUCCEED success
ask 'addremoteuser zoe-p2p --as alice@home.example' CODE_SUCCEED success
expect_transaction 'User already present'
expect 'remote users' zoe-p2p "$(boxwelld show | sed -n '/^remote/,/^cloud/{s/^ *\(zoe.*\)/\1/p}')"
