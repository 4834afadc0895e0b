#!/usr/bin/env bash
# The ways to a private device, the strongest first. Sourced by the launcher.

# What enters private namespaces. --kill-child: their processes die with unshare.
NAMESPACES=(unshare --mount --pid --fork --kill-child --mount-proc)
USER_NAMESPACE=(--user --map-root-user --cgroup)

about() {
    case $1 in
        root) echo 'namespaces of root: everything works' ;;
        userns) echo 'a user namespace: everything but pinning, since the immutable attribute needs root' ;;
        proot) echo "proot: slower, and no pinning, since the immutable attribute needs root$(unprotected)" ;;
    esac
}

# Under proot the caller's rights are all that keeps the machine's files.
unprotected() { [ "$(id -u)" -ne 0 ] || echo '; run by root, it can write to the whole machine'; }

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
        mount --no-mtab -o remount,bind,ro none /run
        mount -t devpts -o newinstance devpts /run
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

# find_own_root: leaves in `own_root` what runs a command as the root that a device of this caller's has.
find_own_root() {
    own_root=()
    if [ "$(id -u)" -eq 0 ]; then return; fi
    own_root=(unshare "${USER_NAMESPACE[@]:0:2}")
    "${own_root[@]}" true 2>/dev/null || own_root=(proot -0 -v -1)
}

# enter WAY SEEN... -- WRITABLE... -- COMMAND...: becomes the device.
enter() {
    local way=$1
    shift
    case $way in
        root) exec "${STARTER[@]}" "$KEEPER" "${NAMESPACES[@]}" "$DEVICE_HOME/inside.sh" "$@" ;;
        userns) exec "${STARTER[@]}" "$KEEPER" "${NAMESPACES[@]}" "${USER_NAMESPACE[@]}" "$DEVICE_HOME/inside.sh" "$@" ;;
        proot) enter_proot "$@" ;;
    esac
}

# The private tree lies in a short path of the host (a socket's path has 108 bytes), which the
# keeper removes.
enter_proot() {
    local tree mount path folders=() binds=() removes=()
    sweep
    # Until the keeper takes over.
    trap 'rm -rf "${folders[@]}"' EXIT
    make_folder /tmp
    tree=${folders[0]}
    fill_tree "$tree"
    link_tools "$tree"
    install -m 755 "$DEVICE_HOME/files/journalctl" "$tree/bin/journalctl"
    cp "$DEVICE_BUILD/libproot-sockets.so" "$tree/run/.proot-sockets.so"
    copy_loader "$tree/loader"
    binds=(-b "$(part_of "$tree" passwd):/etc/passwd" -b "$(part_of "$tree" group):/etc/group"
        -b "$tree/bin:/usr/bin" -b "/usr/bin:$REAL_TOOLS")
    for mount in "${DEVICE_MOUNTS[@]}" run/log/journal:/run/log/journal; do
        binds+=(-b "$(part_of "$tree" "${mount%%:*}"):${mount#*:}")
    done
    for path in "$@"; do
        [ "$path" != -- ] || break
        mkdir -p "$(place_in_tree "$tree" "$path")"
        binds+=(-b "$path:$path")
    done
    bind_control_groups
    for path in "${folders[@]}"; do
        removes+=(--remove "$path")
    done
    export DEVICE_TREE=$tree PROOT_LOADER=$tree/loader
    # What proot traces does not end with proot, as what is in namespaces ends with them.
    exec "${STARTER[@]}" "$KEEPER" --proot "${removes[@]}" proot -0 -v -1 "${binds[@]}" \
        setpriv --pdeathsig KILL "$DEVICE_HOME/inside.sh" "$@"
}

# copy_loader FILE: proot writes the program that starts others into the temporary folder, and leaves it
# there when it is killed, unless it is told of one.
copy_loader() {
    # shellcheck disable=SC2016 # proot is the parent of what runs under it, and names the file so
    proot -v -1 sh -c 'cp /tmp/prooted-"$PPID"-* "$1"' sh "$1"
}

# make_folder WHERE: adds a new folder to `folders`, locked for as long as a process of the device
# lives, since all inherit the descriptor.
make_folder() {
    local folder lock
    folder=$(mktemp -d "$1/bw.XXXXXX")
    folders+=("$folder")
    exec {lock}<"$folder"
    flock "$lock"
}

# Removes the folders of devices whose processes, the keeper's too, were all killed at once.
sweep() {
    local folder
    find /tmp /dev/shm -maxdepth 1 -name 'bw.??????' -user "$(id -u)" -mmin +1 2>/dev/null |
        while read -r folder; do
            ! flock --nonblock "$folder" true || { chmod -R u+rwx "$folder" && rm -rf "$folder"; }
        done
}

# journald ends when /sys/fs/cgroup is no control group file system. Where the host has none, a
# tmpfs with a folder named systemd passes for the oldest kind of them.
bind_control_groups() {
    case $(stat -f -c %T /sys/fs/cgroup) in cgroup2fs | tmpfs) return ;; esac
    make_folder /dev/shm
    mkdir "${folders[1]}/systemd"
    binds+=(-b "${folders[1]}:/sys/fs/cgroup")
}
