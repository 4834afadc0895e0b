#!/usr/bin/env bash
# What every device is made with: options, the build's programs, the way, the folders that it sees. Sourced
# by the launcher.
# shellcheck disable=SC2034 # what other parts of the launcher read

DEVICE_BUILD=$DEVICE_HOME/programs # where it is installed
[ -d "$DEVICE_BUILD" ] || DEVICE_BUILD=$DEVICE_HOME/../../build
DEVICE_SEED=$DEVICE_HOME/seed.json
DEVICE_LOG_FILE=yes
DEVICE_WAY=${DEVICE_WAY-}
DEVICE_STATE= # of a device that stays: the folder of its state
quiet=no
given=' ' # the options, each between blanks

# What starts the keeper, if it is not to take this process's place.
STARTER=()

die() {
    printf 'device: %s\n' "$1" >&2
    exit "${2:-125}"
}

argument() { [ $# -ge 2 ] || die "$1 needs an argument" 2; }

# take_option ARG...: takes the first one if it is an option that every device has; `taken` tells how many
# words that were.
take_option() {
    taken=1
    case $1 in
        --build | --way | --seed)
            argument "$@"
            declare -g "DEVICE_$(tr "[:lower:]" "[:upper:]" <<<"${1#--}")=$2"
            taken=2
            ;;
        --no-log-file) DEVICE_LOG_FILE=no ;;
        --quiet) quiet=yes ;;
        *)
            taken=0
            return
            ;;
    esac
    given+="$1 "
}

# check_build PROGRAM...: that the build folder holds them, and the seed is there.
check_build() {
    local name
    DEVICE_BUILD=$(readlink -m "$DEVICE_BUILD")
    DEVICE_SEED=$(readlink -m "$DEVICE_SEED")
    [ -r "$DEVICE_SEED" ] || die "cannot read the seed ${DEVICE_SEED:-file}"
    for name in "$@"; do
        [ -x "$DEVICE_BUILD/$name" ] || die "$DEVICE_BUILD holds no $name; ./dev build makes it"
    done
    KEEPER=$DEVICE_BUILD/device-keeper
}

choose_way() {
    local reason
    case $DEVICE_WAY in
        '') DEVICE_WAY=$(strongest_way) || die 'neither namespaces nor proot work here' ;;
        root | userns | proot)
            reason=$(works "$DEVICE_WAY" 2>&1) || die "--way $DEVICE_WAY does not work here: ${reason:-it needs root}"
            ;;
        *) die "--way is root, userns or proot, not $DEVICE_WAY" 2 ;;
    esac
}

# launch COMMAND [ARG...]: becomes a device that runs it.
launch() {
    local path writable=() seen=()
    # The caller's folders, to which the command may write: the folder of a build named out is a part of
    # one that takes coverage data.
    for path in /tmp "${TMPDIR:-/tmp}" "$DEVICE_BUILD" "$PWD" "${DEVICE_STATE:-/tmp}"; do
        path=$(readlink -m "$path")
        [ "$path" != "$DEVICE_HOME/programs" ] || continue # nobody builds there
        [ ! -e "${path%/*}/CMakeCache.txt" ] || path=${path%/*}
        [ ! -d "$path" ] || [ "$path" = / ] || writable+=("$path")
    done
    # What the command may need and the device's own folders would hide.
    for path in "$DEVICE_HOME/../.." "$(dirname "$DEVICE_SEED")" "${HOME:-/}" "${writable[@]}" \
        "$(dirname "$(command -v "$1" || echo /)")"; do
        path=$(readlink -m "$path")
        ! is_hidden "$path" || [ ! -d "$path" ] || seen+=("$path")
    done
    export DEVICE_HOME DEVICE_BUILD DEVICE_SEED DEVICE_LOG_FILE DEVICE_WAY DEVICE_STATE
    enter "$DEVICE_WAY" "${seen[@]}" -- "${writable[@]}" -- "$@"
}
