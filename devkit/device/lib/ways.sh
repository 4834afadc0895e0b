#!/usr/bin/env bash
# The ways to a private device, the strongest first. Sourced by the launcher.

# What enters private namespaces. --kill-child: their processes die with unshare.
NAMESPACES=(unshare --mount --pid --fork --kill-child --mount-proc)
USER_NAMESPACE=(--user --map-root-user --cgroup)

about() {
    case $1 in
        root) echo 'namespaces of root: everything works' ;;
        userns) echo 'a user namespace: everything but pinning, since the immutable attribute needs root' ;;
        proot) echo 'proot: slower, and no pinning, since the immutable attribute needs root' ;;
    esac
}

# works WAY: tries what the way consists of.
works() {
    case $1 in
        root) [ "$(id -u)" -eq 0 ] && namespaces_work ;;
        userns) namespaces_work "${USER_NAMESPACE[@]}" ;;
        proot) proot -v -1 -b /etc/group:/etc/passwd cat /etc/passwd >/dev/null ;;
        *) return 1 ;;
    esac
}

namespaces_work() {
    "${NAMESPACES[@]}" "$@" bash -ec '
        mount --make-rprivate /
        mount -t tmpfs tmpfs /run
        mount --bind /etc/group /etc/passwd'
}

strongest_way() {
    local way
    for way in root userns proot; do
        if works "$way" 2>/dev/null; then
            echo "$way"
            return
        fi
    done
    return 1
}

# enter WAY KEEP... -- COMMAND...: becomes the device.
enter() {
    local way=$1
    shift
    case $way in
        root) exec "$KEEPER" "${NAMESPACES[@]}" "$DEVICE_HOME/inside.sh" "$@" ;;
        userns) exec "$KEEPER" "${NAMESPACES[@]}" "${USER_NAMESPACE[@]}" "$DEVICE_HOME/inside.sh" "$@" ;;
        proot) enter_proot "$@" ;;
    esac
}

# The private tree lies in a short path of the host (a socket's path has 108 bytes), which the
# keeper removes.
enter_proot() {
    local tree mount path binds=()
    tree=$(mktemp -d /tmp/bw.XXXXXX)
    remove=(--remove "$tree")
    # Until the keeper takes over.
    trap 'rm -rf "${remove[@]}"' EXIT
    fill_tree "$tree"
    link_tools "$tree"
    install -m 755 "$DEVICE_HOME/files/journalctl" "$tree/bin/journalctl"
    mkdir "$tree/proot"
    binds=(-b "$tree/passwd:/etc/passwd" -b "$tree/group:/etc/group" -b "$tree/bin:/usr/bin"
        -b "/usr/bin:$REAL_TOOLS")
    for mount in "${DEVICE_MOUNTS[@]}"; do
        binds+=(-b "$tree/$mount")
    done
    for path in "$@"; do
        [ "$path" != -- ] || break
        mkdir -p "$(place_in_tree "$tree" "$path")"
        binds+=(-b "$path:$path")
    done
    bind_control_groups
    export DEVICE_TREE=$tree PROOT_TMP_DIR=$tree/proot
    exec "$KEEPER" --proot "${remove[@]}" proot -0 -v -1 "${binds[@]}" "$DEVICE_HOME/inside.sh" "$@"
}

# journald ends when /sys/fs/cgroup is no control group file system. Where the host has none, a
# tmpfs with a folder named systemd passes for the oldest kind of them.
bind_control_groups() {
    local folder
    case $(stat -f -c %T /sys/fs/cgroup) in cgroup2fs | tmpfs) return ;; esac
    folder=$(mktemp -d /dev/shm/bw.XXXXXX)
    mkdir "$folder/systemd"
    remove+=(--remove "$folder")
    binds+=(-b "$folder:/sys/fs/cgroup")
}
