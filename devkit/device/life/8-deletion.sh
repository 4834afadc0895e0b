#!/usr/bin/env bash
# shellcheck disable=SC2016 # command lines are expanded when they are run
chapter 'Accounts go'
tell 'A member of the cloud group may delete an account; its remote user goes with it.'
ask 'deleteuser zoe@home.example zoe-p2p --as bob@example.com' CODE_SUCCEED success
expect_account zoe@home.example ''
tell 'Deleting an unknown name fails, but not when it is an e-mail address: such a user is gone either' \
    'way.'
ask 'deleteuser nobody-here nobody-here --as bob@example.com' CODE_FAILED 'DeleteUser failed'
ask 'deleteuser gone@example.com gone --as bob@example.com' CODE_SUCCEED success
