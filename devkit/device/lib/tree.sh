#!/usr/bin/env bash
# The device's private files. Sourced by the launcher and by what runs inside the device.

# FOLDER:PLACE - a folder of the private tree and where it stands in the device; /run is the last.
DEVICE_MOUNTS=(opt:/opt log:/var/log lib:/var/lib shm:/dev/shm run:/run)

# Where the host's tools are when /usr/bin is a folder of links to them.
REAL_TOOLS=/run/.tools

# What of the private tree a device that stays keeps, in the folder "machine" of its state.
KEPT_PARTS=(passwd group opt log lib run/log/journal)

# fill_kept TREE: makes those of the private files that may be kept.
fill_kept() {
    local tree=$1 files=$DEVICE_HOME/files
    mkdir -p "$tree"/{opt/skyhold/etc,opt/linkhub/etc,log,lib/boxwelld,lib/device,run/log/journal}
    chmod 755 "$tree"
    # The host's system users and groups; people are the daemon's affair.
    awk -F: '$3 < 1000 || $3 == 65534' /etc/passwd >"$tree/passwd"
    awk -F: '($3 < 1000 || $3 == 65534) && $1 !~ /^(admin|sky-hold|share)$/' /etc/group >"$tree/group"
    cp -R "$files/info" "$tree/lib/device/info"
    cp "$files/linkagent.conf" "$tree/opt/linkhub/etc/linkagent.conf"
    [ "$DEVICE_LOG_FILE" = no ] || : >"$tree/log/shbroker.log"
}

# fill_tree TREE: makes the private files in the empty folder TREE.
fill_tree() {
    local tree=$1 files=$DEVICE_HOME/files
    fill_kept "$tree"
    mkdir -p "$tree"/{shm,bin} "$tree"/run/{.tools,systemd/journal,systemd/journald.conf.d}
    chmod 1777 "$tree/shm"
    cp "$files/journald.conf" "$tree/run/systemd/journald.conf.d/device.conf"
    install -m 755 "$files/boxwellinfo" "$files/event_push" "$tree/bin"
    : >"$tree/run/.device" # what tells boxwelld and broker that they are on a device
}

# link_tools TREE: fills TREE/bin with links to the host's tools, where they cannot be overlaid.
link_tools() {
    find /usr/bin -mindepth 1 -maxdepth 1 -printf "$REAL_TOOLS/%f\0" |
        xargs -0 ln -s -t "$1/bin"
}

# is_hidden PATH: whether a folder of the device hides PATH of the host.
is_hidden() {
    local mount
    for mount in "${DEVICE_MOUNTS[@]}"; do
        case $1 in "${mount#*:}"/?*) return 0 ;; esac
    done
    return 1
}

# part_of TREE PART: the host's folder or file that is this part of the device.
part_of() {
    local part
    for part in "${KEPT_PARTS[@]}"; do
        [ -z "$DEVICE_STATE" ] || [ "$part" != "$2" ] || {
            echo "$DEVICE_STATE/machine/$2"
            return
        }
    done
    echo "$1/$2"
}

# place_in_tree TREE PATH: where the hidden PATH is in the private tree.
place_in_tree() {
    local mount place
    for mount in "${DEVICE_MOUNTS[@]}"; do
        place=${mount#*:}
        case $2 in "$place"/?*) echo "$(part_of "$1" "${mount%%:*}")${2#"$place"}" ;; esac
    done
}
