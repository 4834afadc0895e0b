#!/usr/bin/env bash
# shellcheck disable=SC2016 # command lines are expanded when they are run
chapter 'Accounts of cloud users'
tell 'The owner adds zoe. Her password arrives as a pair of hashes; the account is made locked.'
hash_of 'first password'
ask 'adduser zoe $hash zoe@example.com --as alice' CODE_SUCCEED success
expect_account zoe 'sky-hold locked zoe@example.com'
expect_transaction "$(base64 -d <<<"${hash:?}" | cut -d : -f 2-)"

tell 'Only the owner may do that: to a member of the cloud group the operation does not exist, and' \
    'everyone else is refused: a locked member, a local user, one without credentials.'
ask 'adduser kim $hash kim@example.com --as bob' CODE_FAILED 'operation unknown'
ask 'adduser kim $hash kim@example.com --as carol' CODE_FAILED 'access denied'
expect_log 'ACCESS DENIED for SYS: operation=adduser login=carol is_owner=0 is_sh=0'
ask 'adduser kim $hash kim@example.com --as dave' CODE_FAILED 'access denied'
ask 'adduser kim $hash kim@example.com' CODE_FAILED 'access denied'
expect_account kim ''

tell 'Added again, zoe is replaced: the old account goes, one with the new hashes comes.'
hash_of 'second password'
ask 'adduser zoe $hash zoe@example.com --as alice' CODE_SUCCEED success
expect_account zoe 'sky-hold locked zoe@example.com'
expect_transaction '<xs:delete'

tell 'But a local user of that name is left alone, and the daemon refuses a second one.'
ask 'adduser dave $hash dave@example.com --as alice' CODE_FAILED 'AddUser failed'
expect_account dave 'share unlocked'
expect_log 'user already exists'
