# shellcheck shell=bash
# Words of device(1), for bash: its options, then a command and its files.

_device_words() {
    local word=${COMP_WORDS[COMP_CWORD]} i
    COMPREPLY=()
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
