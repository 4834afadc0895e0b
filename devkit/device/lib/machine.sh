#!/usr/bin/env bash
# What the device sees of the machine, in namespaces: all of it, read-only but for the caller's own
# folders. Sourced by what runs inside the device.

# The folders that the caller's command may write to, and all that is mounted below them.
writable=()

# The folders that must stay to be seen, each with a descriptor that leads to it.
declare -A kept=()

# leave_writable FOLDER: a mount of its own keeps its attributes when the one around it is sealed.
leave_writable() {
    ! is_writable "$1" || return 0
    mount --rbind "$1" "$1"
    writable+=("$1")
}

is_writable() {
    local folder
    for folder in "${writable[@]}"; do
        case $1 in "$folder" | "$folder"/*) return 0 ;; esac
    done
    return 1
}

# seal: makes every mount read-only that is not a caller's folder, each by itself, since a mount's
# attributes are not those of the ones below it.
seal() {
    local mounts mount place options
    mapfile -t mounts </proc/self/mountinfo
    for mount in "${mounts[@]}"; do
        read -r _ _ _ _ place options _ <<<"$mount"
        printf -v place %b "$place" # a blank is \040
        # The device's own /proc has its processes, which are to be written to; see seal_kernel.
        if [ "$place" = /proc ] || [ "${options%%,*}" = ro ] || is_writable "$place"; then continue; fi
        # Below another mount, where nobody can reach it, it needs no seal.
        make_read_only "$place" "$options" 2>/dev/null || ! mountpoint -q "$place" ||
            make_read_only "$place" "$options" || return
    done
}

# make_read_only MOUNT OPTIONS: with its other options, which a user namespace may not drop. Named
# with a source, or mount would add those that fstab has.
make_read_only() {
    mount --no-mtab --internal-only -o "remount,bind,ro${2#r[ow]}" none "$1"
}

# What of /proc is not about processes but sets the machine's kernel.
seal_kernel() {
    local path
    for path in /proc/{bus,fs,irq,sys,sysrq-trigger}; do
        [ ! -e "$path" ] || mount --no-mtab -o bind,ro "$path" "$path"
    done
}

keep() {
    local descriptor
    exec {descriptor}<"$1"
    kept[$1]=$descriptor
}

forget_kept() {
    local path descriptor
    for path in "${!kept[@]}"; do
        descriptor=${kept[$path]}
        exec {descriptor}<&-
    done
}

# lay MOUNT-ARGUMENTS... PLACE: mounts, then shows again what that has hidden and must be seen.
lay() {
    local place=${*: -1} path
    mount "$@"
    for path in "${!kept[@]}"; do
        case $path in "$place"/?*)
            mkdir -p "$path"
            # By descriptor: the path now names the empty folder.
            mount --no-canonicalize --rbind "/proc/self/fd/${kept[$path]}" "$path"
            ;;
        esac
    done
}

# lay_devices TREE: no disk, no memory; terminals of its own, and the one it was started from.
lay_devices() {
    local dev=$1/dev name
    mkdir -p "$dev"/{pts,shm}
    for name in null zero full random urandom tty; do
        : >"$dev/$name"
        mount --bind "/dev/$name" "$dev/$name"
    done
    mount -t devpts -o newinstance,ptmxmode=666,mode=620 devpts "$dev/pts"
    ln -s pts/ptmx "$dev/ptmx"
    ln -s /proc/self/fd "$dev/fd"
    ln -s /proc/self/fd/0 "$dev/stdin"
    ln -s /proc/self/fd/1 "$dev/stdout"
    ln -s /proc/self/fd/2 "$dev/stderr"
    ln -s /run/systemd/journal/dev-log "$dev/log"
    lay --rbind "$dev" /dev
}
