#!/usr/bin/env bash
# shellcheck disable=SC2016 # command lines are expanded when they are run
chapter 'The owner gets another name'
tell 'The account is renamed, and the owner file is written anew, with what the device tells of itself.'
hash_of 'password of alice'
ask 'updateuser alice $hash alice@home.example alice-p2p --as alice' CODE_SUCCEED success
expect_account alice@home.example 'admin unlocked alice@home.example'
expect 'the owner' alice@home.example "$(sed 's/.*<owner>//; s/<.*//' "$OWNER_FILE")"
tell 'From now on the new name is the owner, and the old one nobody.'
ask 'deleteuser zoe zoe --as alice' CODE_FAILED 'access denied'
