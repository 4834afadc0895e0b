#!/usr/bin/env bash
# inside.sh SEEN... -- WRITABLE... -- COMMAND [ARG...]
# The device's first process, which the launcher starts in its namespaces or under proot: lays the
# private files over the host's, starts the journal and the management daemon, runs the command and
# reports its status to the keeper. SEEN and WRITABLE: folders of the host that must stay so.
set -Eeuo pipefail
# shellcheck source=devkit/device/lib/tree.sh
. "$DEVICE_HOME/lib/tree.sh"
# shellcheck source=devkit/device/lib/machine.sh
. "$DEVICE_HOME/lib/machine.sh"
# shellcheck source=devkit/device/lib/registration.sh
. "$DEVICE_HOME/lib/registration.sh"

report() {
    echo "$1" >&"$KEEPER_FD"
    exit "$1"
}

# Messages go where the caller's do; the shell's own, about processes that were killed, nowhere.
exec {errors}>&2
# Nobody may be left to hear them; that must not keep the device from its end.
say() { printf 'device: %s\n' "$1" >&"$errors" || true; }

# fail MESSAGE [LOG]: one line, and the last words of the program that failed.
fail() {
    trap - ERR
    say "$1"
    [ ! -s "${2-}" ] || tail -n 5 "$2" | sed 's/^/device:   /' >&"$errors" || true
    report 125
}

# All of it on one tmpfs, which goes away with the namespace.
lay_tree() {
    local tree=/run/.tree mount
    seal || fail 'the machine cannot be made read-only'
    seal_kernel
    lay -t tmpfs -o mode=755 tmpfs /run
    mkdir "$tree"
    fill_tree "$tree"
    lay_kept "$tree"
    lay --bind "$tree/passwd" /etc/passwd
    lay --bind "$tree/group" /etc/group
    lay_tools "$tree"
    lay_devices "$tree"
    # journald wants a control group file system; where none can be mounted, the host's has to do.
    mount -t cgroup2 -o ro cgroup2 /sys/fs/cgroup 2>/dev/null || true
    for mount in "${DEVICE_MOUNTS[@]}"; do
        lay --rbind "$tree/${mount%%:*}" "${mount#*:}"
    done
}

# Over the tree's own, what a device that stays has kept.
lay_kept() {
    local part
    [ -n "$DEVICE_STATE" ] || return 0
    for part in "${KEPT_PARTS[@]}"; do
        mount --bind "$(part_of "$1" "$part")" "$1/$part"
    done
}

lay_tools() {
    mkdir "$1/work"
    if ! mount -t overlay -o "lowerdir=/usr/bin,upperdir=$1/bin,workdir=$1/work" overlay /usr/bin 2>/dev/null; then
        mount --bind /usr/bin "$1$REAL_TOOLS"
        link_tools "$1"
        lay --bind "$1/bin" /usr/bin
    fi
}

# start NAME SOCKET COMMAND...: in a session of its own, where a terminal's signals do not reach it, and for
# as long as this process lives; leaves the process in `started`.
start() {
    local name=$1 socket=$2 log=/run/.$1.log end=$((SECONDS + 20))
    shift 2
    (
        exec {errors}>&- {KEEPER_FD}>&-
        [ -z "$DEVICE_STATE" ] || exec {AGENT_FD}>&-
        exec setpriv --pdeathsig KILL setsid "$@"
    ) </dev/null >"$log" 2>&1 &
    started=$!
    echo "$started" >"/run/.$name.pid"
    until [ -S "$socket" ]; do
        kill -0 "$started" 2>/dev/null || fail "$name ended before it opened $socket" "$log"
        [ "$SECONDS" -lt "$end" ] || fail "$name did not open $socket within 20 s" "$log"
        sleep 0.01
    done
}

start_journal() {
    # Nothing of the caller's environment is meant for the journal.
    start systemd-journald /run/systemd/journal/socket env -i "PATH=$PATH" /lib/systemd/systemd-journald
    journal=$started
    journalctl --sync >/run/.sync.log 2>&1 || fail 'systemd-journald does not answer' /run/.sync.log
    export DEVICE_JOURNAL=/run/log/journal
}

start_daemon() {
    unset "${!BOXWELLD_@}"
    start boxwelld /run/boxwelld.sock bash "$DEVICE_HOME/lib/keep_daemon.sh"
    daemon=$started
    ! is_seeded || return 0
    boxwelld seed "$DEVICE_SEED" >/run/.seed.log 2>&1 || fail "boxwelld refused $DEVICE_SEED" /run/.seed.log
}

# Whether the device has been before.
is_seeded() { [ -n "$DEVICE_STATE" ] && [ -e "$DEVICE_STATE/machine/seeded" ]; }

# The daemon ends as it would on a device, so that what a sanitizer has found in it is seen, and in one
# that failed before. That a test has ended or killed it is none of the launcher's business.
stop_daemon() {
    local status=0
    kill -TERM "$daemon" 2>/dev/null || true
    wait "$daemon" || status=$?
    [ "$status" -eq 0 ] || fail "boxwelld ended with status $status" /run/.boxwelld.log
}

# What is kept of the journal is complete.
stop_journal() {
    journalctl --sync || true
    kill -TERM "$journal" 2>/dev/null || return 0
    wait "$journal" || true
}

# What programs need that run under proot. A leak check traces its process, as proot does already;
# and a sanitizer does not want to come second to what is preloaded.
adapt_to_proot() {
    export LD_PRELOAD="/run/.proot-sockets.so${LD_PRELOAD:+:$LD_PRELOAD}"
    export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0:verify_asan_link_order=0"
}

# A closed pipe ends the command, and not what ends the device. Neither trap is inherited.
trap : PIPE
trap 'fail "the device cannot be made: line $LINENO of $0"' ERR
directory=$PWD
seen=()
while [ "$1" != -- ]; do
    seen+=("$1")
    shift
done
shift
while [ "$1" != -- ]; do
    [ "$DEVICE_WAY" = proot ] || leave_writable "$1"
    shift
done
shift
for path in "${seen[@]}"; do keep "$path"; done
if [ "$DEVICE_WAY" = proot ]; then adapt_to_proot; else lay_tree; fi
forget_kept
cd "$directory"
PATH=$DEVICE_BUILD:$PATH
start_journal
start_daemon
if ! is_seeded; then
    write_owner_file
    [ -z "$DEVICE_STATE" ] || : >"$DEVICE_STATE/machine/seeded"
fi

# Ctrl-C is the command's; what it makes of it is its status.
trap : INT
trap - ERR
set +e
exec 2>/dev/null
(
    exec 2>&"$errors" {errors}>&- {KEEPER_FD}>&-
    unset DEVICE_HOME DEVICE_BUILD DEVICE_SEED DEVICE_LOG_FILE DEVICE_STATE KEEPER_FD
    exec "$@"
)
status=$?
if [ "$status" -gt 128 ] && signal=$(kill -l "$status"); then
    case $signal in INT | PIPE) ;; *) say "the command ended by SIG$signal" ;; esac
fi
set -e
stop_daemon
[ -z "$DEVICE_STATE" ] || stop_journal
report "$status"
