# shellcheck shell=bash
# Words of broker(1), for bash.

_broker_words() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} options
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W 'run script replay hash state watch check explain story' -- "$word")
        return
    fi
    case $before in
        --log-level)
            mapfile -t COMPREPLY < <(compgen -W '0 1 2 3 4 5 6 7' -- "$word")
            return
            ;;
        --profile)
            mapfile -t COMPREPLY < <(compgen -W 'armhf armhf-strict desk' -- "$word")
            return
            ;;
        --plugin | --record | --output | --against)
            mapfile -t COMPREPLY < <(compgen -f -- "$word")
            return
            ;;
        --as | --fail) return ;;
    esac
    case ${COMP_WORDS[1]} in
        run) options='--as --log-level --plugin --record --json --fail --help' ;;
        script) options='--plugin --record --json --help' ;;
        replay) options='--against --json --help' ;;
        hash) options='--plugin --help' ;;
        state | watch) options='--json --help' ;;
        check) options='--json --profile --help' ;;
        explain) options='--follow --json --help' ;;
        story) options='--output --help' ;;
        *) return ;;
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
    elif [[ ${COMP_WORDS[1]} == @(script|replay|check|explain|story) ]]; then
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    elif [ "$COMP_CWORD" -eq 2 ] && [ "${COMP_WORDS[1]}" = run ]; then
        mapfile -t COMPREPLY < <(compgen -W 'adduser addremoteuser deleteuser updateuser upgradeusertosso
            unregister initlocalsession' -- "$word")
    fi
}

complete -o filenames -F _broker_words broker
