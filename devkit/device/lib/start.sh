#!/usr/bin/env bash
# How a device that stays is started. Sourced by the launcher.
# shellcheck disable=SC2034,SC2153,SC2154 # what it shares with other parts of the launcher

# What every command on the device has as the device has it.
OWN_VARIABLES=(DEVICE_NAME DEVICE_WAY DEVICE_JOURNAL)
OWN_UNDER_PROOT=(DEVICE_TREE PROOT_LOADER LD_PRELOAD ASAN_OPTIONS)

say() { [ "$quiet" = yes ] || printf 'device: %s\n' "$1" >&2; }

device_start() {
    local name=$DEFAULT_NAME state='' from='' join=no names=()
    while [ $# -gt 0 ]; do
        take_option "$@"
        case $1 in
            --state | --from)
                argument "$@"
                [ -n "$2" ] || die "$1 needs a name" 2
                declare "${1#--}=$2"
                taken=2
                ;;
            --join) join=yes taken=1 ;;
            *) [ "$taken" -gt 0 ] || { names+=("$1") && taken=1; } ;;
        esac
        shift "$taken"
    done
    take_names 1 "${names[@]}"
    name=${names[0]-$name}
    check_name "$name"
    [ -z "$from" ] || [[ $given != *' --seed '* ]] || die '--seed and --from both tell what to begin with' 2
    if [ "$join" = yes ] && folder=$(readlink -m "$(states_home)/$name") && is_running "$folder"; then
        return
    fi
    expect_own_machine
    check_build boxwelld device-keeper device-agent device-exec
    choose_way
    claim "$name" "$state" ||
        die "the state in $folder is in use by the device $(fact "$folder" name); device stop ends one, --state names another folder"
    begin "$name" "$from"
}

# expect_own_machine: that the build's programs and plug-in are for the machine that this shell runs on.
expect_own_machine() {
    local file own theirs
    own=$(machine_of "$BASH")
    for file in "$DEVICE_BUILD"/{libsyscmd.so,boxwelld}; do
        theirs=$own
        [ ! -r "$file" ] || theirs=$(machine_of "$file")
        [ "$theirs" = "$own" ] ||
            die "$(readlink -m "$file") is for $theirs, and this machine is $own; --build is a folder of what is made for it (./dev build makes build/)"
    done
}

# machine_of FILE: by the head of an ELF file.
machine_of() {
    local head
    read -r -d '' -a head < <(od -An -v -tx1 -N20 "$1") || true
    case "${head[*]:0:5} ${head[*]:18:2}" in
        '7f 45 4c 46 02 3e 00') echo '64-bit x86' ;;
        '7f 45 4c 46 01 03 00') echo '32-bit x86' ;;
        '7f 45 4c 46 01 28 00') echo '32-bit ARM' ;;
        '7f 45 4c 46 02 b7 00') echo '64-bit ARM' ;;
        '7f 45 4c 46 '*) echo "a machine of the number ${head[*]:18:2}" ;;
        *) echo 'no machine, being no ELF file' ;;
    esac
}

# begin NAME FROM: starts a device on the claimed state.
begin() {
    local status=0
    recover
    prepare "$2" || {
        [ "$made" = no ] || forget_state "$1"
        exit 125
    }
    rm -f "$folder/pid"
    printf '%s\n' "name $1" "way $DEVICE_WAY" "build $DEVICE_BUILD" >"$folder/running"
    # A failing command in it must end the subshell, as it does not behind || or if.
    set +e
    (
        set -e
        export DEVICE_NAME=$1
        DEVICE_STATE=$folder
        STARTER=("$DEVICE_BUILD/device-agent" start "$folder")
        own=("${OWN_VARIABLES[@]}")
        [ "$DEVICE_WAY" != proot ] || own+=("${OWN_UNDER_PROOT[@]}")
        launch "$DEVICE_BUILD/device-agent" serve "${own[@]}"
    ) </dev/null >"$folder/console" 2>&1
    status=$?
    set -e
    if [ "$status" -ne 0 ]; then
        cat "$folder/console" >&2
        [ "$made" = no ] || forget_state "$1"
        exit "$status"
    fi
    say "$(about "$DEVICE_WAY")"
    say "$1 runs until device stop $1; its state is in $folder"
}

# prepare FROM: the state to begin with: the snapshot's, the one that is there, or a new one.
prepare() {
    if [ -n "$1" ]; then
        python3 -IS "$DEVICE_HOME/snapshot" read "$1" "$folder/machine.new" || {
            remove_tree "$folder/machine.new"
            return 1
        }
        replace_machine
    elif [ ! -e "$folder/machine" ]; then
        mkdir "$folder/machine.new" && fill_kept "$folder/machine.new" && replace_machine
    elif [ -e "$folder/machine/seeded" ] && [[ $given = *' --seed '* || $given = *' --no-log-file '* ]]; then
        die "$folder holds a state already: --seed and --no-log-file are for a new one (boxwelld seed FILE changes the accounts)" 2
    fi
}
