# shellcheck shell=bash
# Words of ./dev, for bash; to be sourced, from anywhere.

_dev_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

_dev_presets() { cmake -S "$_dev_root" --list-presets 2>/dev/null | sed -n 's/^  "\([^"]*\)".*/\1/p'; }

_dev_words() {
    local word=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]} words=''
    if [ "$COMP_CWORD" -eq 1 ]; then
        words=$("$_dev_root/dev" help | sed -n 's/^  \([a-z][a-z]*\) .*/\1/p')
    else
        case ${COMP_WORDS[COMP_CWORD - 1]} in
            --way) words='root userns proot' ;;
            --target) words=armhf ;;
            --seed | --only | --build) ;;
            *)
                case $command in
                    build | clean) words=$(_dev_presets) ;;
                    package) words=armhf ;;
                    test) words='--all --target --way' ;;
                    demo) words='--way --full --whole --html' ;;
                    abi) words=--update ;;
                    bench) words='--save --device --plot --recording --desk --accounts --commands --way' ;;
                    desk) words=--way ;;
                    soak) words='--seed --only --way' ;;
                    fuzz) [ "$COMP_CWORD" -ne 2 ] || words="all $(ls "$_dev_root/tests/fuzz/corpus")" ;;
                esac
                ;;
        esac
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word" | sort -u)
}

complete -F _dev_words dev ./dev
