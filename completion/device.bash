# shellcheck shell=bash
# Words of device(1), for bash: its options, then a command and its files; or what is for devices that stay.

# Names of the devices that stay.
_device_names() {
    local folder=${XDG_STATE_HOME:-$HOME/.local/state}/syscmd-desk
    [ ! -d "$folder" ] || (cd "$folder" && compgen -f -- "$1")
}

# What stands behind the words start, stop, and so on.
_device_words_of() {
    local word=${COMP_WORDS[COMP_CWORD]} options=--help
    case $1:${COMP_WORDS[COMP_CWORD - 1]} in
        start:--way) mapfile -t COMPREPLY < <(compgen -W 'root userns proot' -- "$word") && return ;;
        start:--build | start:--state) mapfile -t COMPREPLY < <(compgen -d -- "$word") && return ;;
        start:--seed | start:--from) mapfile -t COMPREPLY < <(compgen -f -- "$word") && return ;;
        start:*) options+=' --build --way --seed --no-log-file --quiet --state --from --join' ;;
        stop:*) options+=' --all' ;;
        list:*) options+=' --json' ;;
        log:*) options+=' --follow' ;;
    esac
    if [ "$1" = exec ] && [ "$COMP_CWORD" -gt 2 ]; then
        [[ $word == -* ]] || mapfile -t COMPREPLY < <(compgen -c -f -- "$word" | sort -u)
    elif [ "$1" = snapshot ] && [ "$COMP_CWORD" -gt 2 ]; then
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    elif [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
    elif [ "$1" != list ]; then
        mapfile -t COMPREPLY < <(_device_names "$word")
    fi
}

_device_words() {
    local word=${COMP_WORDS[COMP_CWORD]} own='start stop list shell exec log snapshot remove' i
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ] && [[ $word != -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$own" -- "$word")
        [ -z "$word" ] || mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -c -- "$word")
        return
    fi
    if [[ " $own " == *" ${COMP_WORDS[1]} "* ]]; then
        _device_words_of "${COMP_WORDS[1]}"
        return
    fi
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${COMP_WORDS[i]} in
            --build | --way | --seed) ((i += 1)) ;;
            --no-log-file | --quiet) ;;
            --)
                ((i += 1))
                break
                ;;
            *) break ;;
        esac
    done
    if [ "$i" -gt "$COMP_CWORD" ]; then
        case ${COMP_WORDS[COMP_CWORD - 1]} in
            --way) mapfile -t COMPREPLY < <(compgen -W 'root userns proot' -- "$word") ;;
            --build) mapfile -t COMPREPLY < <(compgen -d -- "$word") ;;
            --seed) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
        esac
    elif [ "$i" -lt "$COMP_CWORD" ]; then
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    elif [ "${COMP_WORDS[COMP_CWORD - 1]}" != -- ] && [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W '--build --way --seed --no-log-file --quiet --help' -- "$word")
    elif [[ $word != -* ]]; then
        mapfile -t COMPREPLY < <(compgen -c -- "$word")
    fi
}

complete -o filenames -F _device_words device
