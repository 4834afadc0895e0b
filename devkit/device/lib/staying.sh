#!/usr/bin/env bash
# The commands for devices that stay, each a function. Sourced by the launcher.
# shellcheck disable=SC2153 # DEVICE_HOME is the launcher's

DEFAULT_NAME=desk

# Seconds until a device that was asked to end is ended by force.
STOP_PATIENCE=60

# take_names MOST ARG...: at most MOST names and files, and no options, into `names`.
take_names() {
    local most=$1 word
    shift
    names=()
    for word; do
        case $word in
            --) ;;
            -*) die "unknown option $word" 2 ;;
            *) names+=("$word") ;;
        esac
    done
    [ ${#names[@]} -le "$most" ] || die "unexpected argument ${names[most]}" 2
}

# client FOLDER: the program that talks to the device's agent.
client() {
    local program
    for program in "$(fact "$1" build)/device-exec" "$(readlink -m "$DEVICE_BUILD")/device-exec"; do
        [ ! -x "$program" ] || {
            echo "$program"
            return
        }
    done
    die "neither $(fact "$1" build) nor $(readlink -m "$DEVICE_BUILD") holds device-exec; ./dev build makes it"
}

# on_device COMMAND...: runs it on the device of `folder`, in this process's place, with the caller's
# environment but for the daemon's variables and the build's programs first.
on_device() {
    local program
    program=$(client "$folder")
    unset "${!BOXWELLD_@}"
    PATH=$(fact "$folder" build):$PATH exec "$program" "$folder" run "$@"
}

device_stop() {
    local name folder
    if [ "$*" = --all ]; then
        for name in $(list_names); do
            folder=$(readlink -m "$(states_home)/$name")
            ! is_running "$folder" || stop "$name"
        done
        return
    fi
    take_names 1 "$@"
    [ ${#names[@]} -eq 1 ] || die 'stop needs a NAME, or --all' 2
    find_running "${names[0]}"
    stop "${names[0]}"
}

# stop NAME: ends the device on `folder`, and returns when nothing of it is left.
stop() {
    local pid
    "$(client "$folder")" "$folder" stop 2>/dev/null || true
    flock --wait "$STOP_PATIENCE" "$folder/lock" true && return
    pid=$(<"$folder/pid")
    [ "$(cat "/proc/$pid/comm" 2>/dev/null)" != device-keeper ] || kill -TERM "$pid"
    flock --wait "$STOP_PATIENCE" "$folder/lock" true ||
        die "the device $1 does not end: something still locks $folder/lock"
    printf 'device: %s did not end within %s s, and was ended by force\n' "$1" "$STOP_PATIENCE" >&2
}

# list_names: of the states in their home.
list_names() {
    local place
    for place in "$(states_home)"/*; do
        ! is_name "${place##*/}" || [ ! -e "$place/version" ] || echo "${place##*/}"
    done
}

device_list() {
    local name folder way pid runs json=no separator='' rows
    [ $# -eq 0 ] || [ "$*" = --json ] || die 'list takes --json alone' 2
    [ $# -eq 0 ] || json=yes
    rows=$(list_names)
    [ "$json" = no ] || printf '['
    [ "$json" = yes ] || [ -z "$rows" ] || printf '%-16s %-8s %-7s %s\n' NAME IS WAY STATE
    for name in $rows; do
        folder=$(readlink -m "$(states_home)/$name")
        way=$(fact "$folder" way)
        pid=null runs=stopped
        if is_running "$folder"; then
            runs=running
            pid=$(cat "$folder/pid" 2>/dev/null || echo null)
        fi
        if [ "$json" = yes ]; then
            printf '%s\n  {"name": "%s", "is": "%s", "way": "%s", "keeper": %s, "state": %s}' \
                "$separator" "$name" "$runs" "$way" "$pid" "$(json_text "$folder")"
            separator=,
        else
            printf '%-16s %-8s %-7s %s\n' "$name" "$runs" "$way" "$folder"
        fi
    done
    [ "$json" = no ] || printf '%s]\n' "${rows:+$'\n'}"
}

json_text() { python3 -ISc 'import json, sys; print(json.dumps(sys.argv[1]), end="")' "$1"; }

device_shell() {
    local folder
    take_names 1 "$@"
    find_running "${names[0]-$DEFAULT_NAME}"
    HISTFILE=$folder/history on_device bash --rcfile "$DEVICE_HOME/lib/shell.rc" -i
}

device_exec() {
    local folder name=${1-}
    case $name in '' | -*) die 'exec needs a NAME, and a COMMAND behind it' 2 ;; esac
    shift
    [ "${1-}" != -- ] || shift
    [ $# -gt 0 ] || die "exec needs a COMMAND to run on $name" 2
    find_running "$name"
    on_device "$@"
}

device_log() {
    local folder file follow=() arguments=()
    for word; do
        if [ "$word" = --follow ]; then follow=(-F); else arguments+=("$word"); fi
    done
    take_names 1 "${arguments[@]}"
    find_state "${names[0]-$DEFAULT_NAME}"
    file=$folder/machine/log/shbroker.log
    [ -e "$file" ] || die "the device ${names[0]-$DEFAULT_NAME} has no log file; its journal tells the same"
    if [ ${#follow[@]} -gt 0 ] && is_running "$folder"; then
        exec tail -n +1 -F --pid="$(<"$folder/pid")" "$file"
    fi
    exec cat "$file"
}

device_snapshot() {
    local folder writer own_root
    take_names 2 "$@"
    [ ${#names[@]} -eq 2 ] || die 'snapshot needs a NAME and a FILE' 2
    find_state "${names[0]}"
    writer=(python3 -IS "$DEVICE_HOME/snapshot" write "$folder/machine")
    if is_running "$folder"; then
        writer=("$(client "$folder")" "$folder" run "$DEVICE_HOME/between-operations.sh" "${writer[@]}")
    else
        lock_state || die "the device ${names[0]} is being started; try again"
        recover
        find_own_root
        writer=("${own_root[@]}" "${writer[@]}")
    fi
    exec python3 -IS "$DEVICE_HOME/snapshot" save "${names[1]}" "${writer[@]}"
}

device_remove() {
    local folder
    take_names 1 "$@"
    [ ${#names[@]} -eq 1 ] || die 'remove needs a NAME' 2
    find_state "${names[0]}"
    { ! is_running "$folder" && lock_state; } ||
        die "the device ${names[0]} runs; device stop ${names[0]} ends it"
    forget_state "${names[0]}"
}
