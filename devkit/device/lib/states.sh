#!/usr/bin/env bash
# shellcheck disable=SC2034 # what other parts of the launcher read
# The states of devices that stay: where they are, whose, and who uses them. Sourced by the launcher.
#
# A state is a folder:
#   version    "syscmd-desk state N"
#   lock       locked for as long as a process of the device lives
#   machine/   the device's files, in the places of KEPT_PARTS; "seeded" once it has been started
#   running    name, way and build of the last start, a line each
#   pid        its keeper
#   console    what went wrong on it
#   history    of its shells
#   agent.sock where its agent listens

STATE_FORMAT=1
STATE_FILES=(version lock machine machine.new machine.old running pid console history agent.sock)

# Seconds: what else takes a lock gives it back at once.
LOCK_PATIENCE=2

# states_home: the folder of those that have no other place; a link in it leads to each that has one.
states_home() {
    case ${XDG_STATE_HOME-} in
        /*) echo "$XDG_STATE_HOME/syscmd-desk" ;; # one that is not absolute counts for none
        *)
            [ -n "${HOME-}" ] || die 'there is no HOME to keep states in; XDG_STATE_HOME names another folder'
            echo "$HOME/.local/state/syscmd-desk"
            ;;
    esac
}

is_name() { [[ $1 =~ ^[A-Za-z0-9][A-Za-z0-9._-]{0,63}$ ]]; }

check_name() {
    is_name "$1" ||
        die "a device's name is 1 to 64 letters, digits, '.', '_' and '-', and begins with one of the first two: not $(printf %q "$1")" 2
}

# find_state NAME: leaves the folder of an existing state in `folder`.
find_state() {
    check_name "$1"
    folder=$(states_home)/$1
    [ -e "$folder" ] || [ -L "$folder" ] || die "there is no device $1; device list tells which there are"
    folder=$(readlink -m "$folder")
    check_state
}

# find_running NAME: the same, of a device that runs.
find_running() {
    find_state "$1"
    is_running "$folder" || die "the device $1 does not run; device start $1 starts it"
}

# check_state: that `folder` is a state that this program understands.
check_state() {
    local line=
    [ ! -r "$folder/version" ] || read -r line <"$folder/version" || true
    [[ $line =~ ^'syscmd-desk state '([0-9]+)$ ]] ||
        die "$folder is not the state of a device: its file \"version\" does not say \"syscmd-desk state $STATE_FORMAT\""
    [ "${BASH_REMATCH[1]}" -le "$STATE_FORMAT" ] ||
        die "the state in $folder is of version ${BASH_REMATCH[1]}, and this program knows $STATE_FORMAT: a newer one has made it"
}

# is_running FOLDER
is_running() {
    local status=0
    [ -e "$1/lock" ] || return
    flock --shared --nonblock --conflict-exit-code 75 "$1/lock" true 2>/dev/null || status=$?
    [ "$status" -eq 75 ]
}

# fact FOLDER KEY: what the last start has written down.
fact() { sed -n "s/^$2 //p" "$1/running" 2>/dev/null || true; }

# lock_state: locks `folder` for this process and all that it starts; fails when somebody else has it.
lock_state() {
    { exec {lock}>>"$folder/lock"; } 2>/dev/null || die "cannot write to $folder; whose state is it?"
    flock --wait "$LOCK_PATIENCE" "$lock" && [ "$folder/lock" -ef "/proc/$$/fd/$lock" ]
}

# claim NAME FOLDER: makes the state's folder where there is none, locks it, and leaves it in `folder`; FOLDER
# may be empty. `made` tells whether it is new; fails when it is in use.
claim() {
    local home place
    home=$(states_home)
    place=$home/$1
    folder=$(readlink -m "${2:-$place}")
    made=no
    if [ -n "$2" ] && { [ -e "$place" ] || [ -L "$place" ]; } && [ "$(readlink -m "$place")" != "$folder" ]; then
        die "the device $1 keeps its state in $(readlink -m "$place"), not in $folder; take another name, or device remove $1"
    fi
    [ ! -e "$folder" ] || [ -d "$folder" ] || die "$folder is to be a state's folder, and is none"
    [ -d "$folder" ] || made=yes
    mkdir -p "$home" "$folder" 2>/dev/null || die "cannot make the folder $folder"
    # Of a start that goes on at this moment there may be a lock and nothing else yet.
    [ -z "$(find "$folder" -mindepth 1 ! -name lock -print -quit)" ] || check_state
    lock_state || return
    if [ ! -e "$folder/version" ]; then
        chmod 700 "$folder"
        echo "syscmd-desk state $STATE_FORMAT" >"$folder/version"
    fi
    [ -e "$place" ] || ln -sfn "$folder" "$place"
}

# remove_tree FOLDER: of a device's files, whatever attributes and modes they have.
remove_tree() {
    [ -e "$1" ] || return 0
    chattr -R -f -i "$1" 2>/dev/null || true
    chmod -R u+rwX "$1" 2>/dev/null || true
    rm -rf "$1"
}

# forget_state NAME: removes the locked `folder`, but for what is none of the state's.
forget_state() {
    local file place
    place=$(states_home)/$1
    [ ! -L "$place" ] || rm -f "$place"
    for file in "${STATE_FILES[@]}"; do
        remove_tree "$folder/$file"
    done
    rmdir "$folder" 2>/dev/null || true
}

# recover: of a start that was ended by force, the state is what it was before.
recover() {
    [ -e "$folder/machine" ] || [ ! -e "$folder/machine.old" ] || mv "$folder/machine.old" "$folder/machine"
    remove_tree "$folder/machine.new"
    remove_tree "$folder/machine.old"
}

# replace_machine: by machine.new, which is complete.
replace_machine() {
    [ ! -e "$folder/machine" ] || mv "$folder/machine" "$folder/machine.old"
    mv "$folder/machine.new" "$folder/machine"
    remove_tree "$folder/machine.old"
}
