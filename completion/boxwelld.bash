# shellcheck shell=bash
# Words of boxwelld(8), for bash.

_boxwelld_words() {
    local word=${COMP_WORDS[COMP_CWORD]} common='--state --passwd --group --help' command='' own='' i
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${COMP_WORDS[i]} in
            --state | --passwd | --group) ((i += 1)) ;;
            -*) ;;
            *)
                command=${COMP_WORDS[i]}
                break
                ;;
        esac
    done
    case ${COMP_WORDS[COMP_CWORD - 1]} in
        --state | --passwd | --group | --socket)
            mapfile -t COMPREPLY < <(compgen -f -- "$word")
            return
            ;;
        --client-timeout | --from | --for | --skip | --count | --seed | --rate | --kinds) return ;;
    esac
    case $command in
        '') own='serve seed show transcript order chaos send revive' ;;
        send) own=--socket ;;
        serve) own='--socket --client-timeout' ;;
        show) own=--json ;;
        transcript) own='--from --json' ;;
        chaos) own='--seed --rate --kinds --count' ;;
        order) own='--for --skip --count --json' ;;
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$own $common" -- "$word")
    elif [[ $command == @(seed|send) ]]; then
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    elif [ "$command" = order ] && [ "$i" -eq $((COMP_CWORD - 1)) ]; then
        mapfile -t COMPREPLY < <(compgen -W 'refuse refuse-bare reply no-reply cut delay hang fail die list clear' -- "$word")
    elif [ "$command" = chaos ] && [ "$i" -eq $((COMP_CWORD - 1)) ]; then
        mapfile -t COMPREPLY < <(compgen -W off -- "$word")
    elif [ -z "$command" ]; then
        mapfile -t COMPREPLY < <(compgen -W "$own" -- "$word")
    fi
}

complete -o filenames -F _boxwelld_words boxwelld
