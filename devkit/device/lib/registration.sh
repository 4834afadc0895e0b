#!/usr/bin/env bash
# The owner file, as the registration of the device's first state leaves it. Sourced by what runs inside
# the device.

# The owner's name and remote-access name, a line each: the cloud owner that the daemon has, or else the
# first account of the group admin. Nothing where there is neither.
registered_owner() {
    boxwelld show | awk '
        /^[a-z]/                                    { section = $0; next }
        section == "accounts" && /^  [0-9]/         { name = $2; if ($3 == "admin" && first == "") first = name }
        section == "accounts" && /^ +p2p user/      { p2p[name] = $3 }
        section == "cloud owner" && $1 != "(none)"  { owner = $0; sub(/^ +/, "", owner) }
        END {
            if (owner == "") owner = first
            if (owner != "") print owner "\n" (owner in p2p ? p2p[owner] : owner "-p2p")
        }'
}

# One line without an end.
write_owner_file() {
    local names owner p2p_owner info=/var/lib/device/info agent=/opt/linkhub/etc/linkagent.conf
    names=$(registered_owner)
    [ -n "$names" ] || return 0
    { read -r owner && read -r p2p_owner; } <<<"$names"
    printf '%s' '<?xml version="1.0" encoding="utf-8"?><registration>' \
        "<owner>$owner</owner>" \
        "<model>$(<"$info/Model")</model>" \
        "<firmware_id>$(<"$info/Firmware_Version")</firmware_id>" \
        "<firmware_time>$(<"$info/Firmware_Time")</firmware_time>" \
        "<serial>$(<"$info/Serial")</serial>" \
        "<link_agent_id>$(cut -c 12- "$agent" | cut -d ' ' -f 1)</link_agent_id>" \
        "<p2powner>$p2p_owner</p2powner></registration>" >/opt/skyhold/etc/registration.conf
}
