#!/usr/bin/env bash
# One pass of all operations under valgrind, on a private device, with the optimised plug-in; fails when
# valgrind finds an error or a leak, or a command does not succeed.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."

# shellcheck disable=SC2016 # what the device's shell expands
devkit/device/device --quiet --build build -- bash -ec '
    touch /var/log/shbroker.log
    hashes=$(broker hash secret)
    valgrind --quiet --error-exitcode=9 --leak-check=full --errors-for-leak-kinds=definite,possible \
        broker script - <<COMMANDS
adduser zoe $hashes zoe@example.com --as alice --log-level 7
adduser zoe $hashes zoe@example.com --as alice
addremoteuser zoe --as alice --log-level 7
initlocalsession bob token 0 --as bob --log-level 7
initlocalsession bob other 1 --as bob
updateuser bob $hashes dave bob-p2p --as bob --log-level 7
upgradeusertosso alice alice@example.com "" --as alice --log-level 7
deleteuser zoe zoe --as alice@example.com --log-level 7
unregister --log-level 7
COMMANDS'
echo 'valgrind: no error, no leak'
