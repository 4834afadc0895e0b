#!/usr/bin/env bash
# between-operations.sh COMMAND...: runs it on a device while no command of the broker's and no change of the
# daemon's is under way; such a one waits for its end.
set -euo pipefail
exec {lock}</run/.device
flock --wait 20 "$lock" || {
    echo 'device: an operation on the device has not ended within 20 s' >&2
    exit 1
}
journalctl --sync
exec "$@"
