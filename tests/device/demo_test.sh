#!/usr/bin/env bash
# demo_test.sh DEMO BUILD: the demo is to be read, and what it shows can be typed.
# shellcheck disable=SC2016,SC2317 # compared as they are; called by name
set -u
demo=$1 build=$2
launcher=$(dirname "$demo")/device
failures=0

check() { # WHAT EXPECTED ACTUAL
    [ "$2" != "$3" ] || return 0
    failures=$((failures + 1))
    printf '%s: expected\n%s\ngot\n%s\n' "$1" "$2" "$3"
}

# too_wide COLUMNS FILE: the lines that could have been broken at a blank.
too_wide() { awk -v most="$1" 'length > most && /[^ ] +[^ ]/' "$2"; }

commands() { sed -n 's/^\$ //p' "$1"; }

works() { "$launcher" --quiet --build "$build" --way "$1" true 2>/dev/null; }

work=$(mktemp -d /tmp/demo.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit

check 'an option without its argument' '2 demo: --way needs an argument' \
    "$(text=$("$demo" --way 2>&1); echo "$? $text")"
check 'an unknown argument' '2 demo: unknown argument fast' "$(text=$("$demo" fast 2>&1); echo "$? $text")"

"$demo" --build "$build" >short 2>&1
check 'status of the short one' 0 $?
check 'its last line' 'demo: all went as it should' "$(tail -n 1 short)"
check 'its width' '' "$(too_wide 80 short)"
check 'its commands' 'getent passwd alice bob
hash=$(broker hash "first password"); echo $hash
broker run adduser zoe $hash zoe@example.com --as alice' "$(commands short)"
check 'it fits two screens' yes "$([ "$(wc -l <short)" -le 80 ] && echo yes)"

check 'as a page' '0 demo: the same as a page: page.html' \
    "$(text=$("$demo" --build "$build" --html page.html 2>&1); echo "$? $(tail -n 1 <<<"$text")")"
check 'the page tells what it is of' 1 "$(grep -c '"file":"demo.jsonl"' page.html)"
check 'the page has the command' 1 "$(grep -c '"zoe@example.com"' page.html)"

"$demo" --full --build "$build" >plain 2>&1
check 'its status' 0 $?
check 'its last line' 'demo: all went as it should' "$(tail -n 1 plain)"
check 'its width' '' "$(too_wide 80 plain)"
check 'of transactions, what matters' 0 "$(grep -c '^    <xs:mxl ' plain)"

# On a fresh device, where nothing of the demo's own is to be found.
commands plain >typed
check 'commands in it' yes "$([ "$(wc -l <typed)" -ge 30 ] && echo yes)"
check 'commands that cannot be typed' '' "$("$launcher" --quiet --build "$build" bash -u typed 2>&1 |
    grep -E 'typed: line|No such file|unknown command')"

# On a terminal, and where nothing can be pinned.
way=userns
works $way || way=proot
if works $way; then
    script -qec "stty cols 120; $demo --build $build --way $way --full --whole" /dev/null | tr -d '\r' >full
    check 'the status of the whole one' 0 "${PIPESTATUS[0]}"
    check 'its width on a terminal' ' some over 80' "$(too_wide 120 full) $([ -n "$(too_wide 80 full)" ] && echo some over 80)"
    check 'whole transactions' "$(grep -c '^    --- ' full)" "$(grep -c '^    </xs:mxl>' full | awk '{ print $1 / 2 }')"
    check 'whole entries' '' "$(grep '\.\.\.$' full)"
    check 'a session that is not pinned' '' "$(grep -iE 'is pinned|pinned session' full)"
fi
exit $((failures > 0))
