#!/usr/bin/env bash
# The words in which the demo tells the life of a device. Sourced by it, inside the device.

SESSIONS=/opt/skyhold/etc/local_sessions
OWNER_FILE=/opt/skyhold/etc/registration.conf
# Of a journal entry, in characters.
LONGEST_ENTRY=200
# What was not as expected, a sentence each, with the command line before it.
failures=()
last_command=
# Of the last step, as shown:
transactions=
journal=
# Up to now:
device= # see state()
journal_lines=0

chapter() { printf '\n\n==== %s ====\n' "$1"; }

tell() { printf '\n%s\n' "$*" | wrap "$WIDTH" ''; }

indent() { wrap $((WIDTH - 4)) '  ' | sed 's/^/    /'; }

# Columns of the terminal, or 80.
columns() {
    local columns=
    [ ! -t 1 ] || columns=$(stty size <&1 2>/dev/null | cut -d ' ' -f 2)
    echo $((${columns:-0} > 0 ? columns : 80))
}
WIDTH=$(columns)

# wrap WIDTH HANG: breaks lines at blanks, never in a word; what follows is indented as the line itself,
# and by HANG.
wrap() {
    awk -v width="$1" -v hang="$2" '{
        match($0, /^ */)
        margin = substr($0, 1, RLENGTH) hang
        line = ""
        for (rest = $0; match(rest, /^ *[^ ]+/); rest = substr(rest, RLENGTH + 1)) {
            word = substr(rest, 1, RLENGTH)
            if (line != "" && length(line word) > width) {
                print line
                sub(/^ */, margin, word)
                line = ""
            }
            line = line word
        }
        print line
    }'
}

# run COMMAND-LINE: shows it, then what it prints.
run() {
    last_command=$1
    printf '\n$ %s\n' "$1"
    { eval "$1" 2>&1 || true; } | indent
}

# hash_of PASSWORD: leaves its hash pair in the variable `hash`, for the command lines to come.
hash_of() {
    printf '\n$ %s\n' "hash=\$(broker hash \"$1\"); echo \$hash"
    hash=$(broker hash "$1")
    indent <<<"$hash"
}

# expect WHAT EXPECTED ACTUAL
expect() {
    [ "$2" != "$3" ] || return 0
    failures+=("behind \"$last_command\", $1 should be \"$2\", but it is \"$3\"")
    printf '  !! %s\n' "${failures[-1]}"
}

# expect_account NAME WHAT: "GROUP locked|unlocked E-MAIL" as the daemon has it, empty for none, and
# the same account in the system's user database.
expect_account() {
    local daemon system
    daemon=$(awk -v name="$1" '$1 == "accounts:" && $3 == name { print $4, $5, $6 }' <<<"$device")
    expect "account $1" "$2" "${daemon% }"
    system=$(id -gn "$1" 2>/dev/null) || system=
    expect "group of $1" "${2%% *}" "$system"
}

expect_transaction() { expect_text "a transaction" "$1" "$transactions"; }
expect_log() { expect_text "a log entry" "$1" "$journal"; }
expect_text() {
    case $3 in
        *"$2"*) ;;
        *) expect "$1" "$2" none ;;
    esac
}

# ask COMMAND-LINE CODE RESPONSE: has the plug-in carry it out; shows and checks the answer, then
# what it came to: transactions, changes of the device, journal.
ask() {
    local before=$device first answer entries
    last_command="broker run $1"
    first=$(($(wc -l </var/lib/boxwelld/transcript.jsonl) + 1))
    printf '\n$ broker run %s\n' "$1"
    answer=$(eval "broker run $1 --log-level 7 ${DEMO_RECORDING:+--record '$DEMO_RECORDING'}") || true
    indent <<<"$answer"
    expect 'the answer' "$2, \"$3\"" "${answer%, *}"
    transactions=$(boxwelld transcript --from "$first" | what_matters)
    device=$(state)
    entries=$(read_journal)
    journal=$(tail -n "+$((journal_lines + 1))" <<<"$entries")
    journal_lines=$(wc -l <<<"$entries")
    show 'transactions' "$transactions"
    show 'changes' "$(changes "$before" "$device")"
    show 'journal' "$(shorten <<<"$journal")"
}

show() {
    [ -n "$2" ] || return 0
    printf '  %s\n' "$1"
    indent <<<"$2"
}

# Of a transaction: the request behind a >, the reply behind a <, without the envelope and the tags
# that every one of its kind has.
what_matters() {
    [ "$DEMO_WHOLE" = no ] || exec cat
    awk '
        function flush(mark) { if (text != "") print mark text; text = "" }
        /^--- /   { flush("<"); reply = 0; next }
        /<\?xml/  { if (reply++) flush(">"); next }
        /<\/?xs:(mxl|transaction|qualifier|page|criterion)/ || /^ *<\/[^>]*>$/ { next }
        { sub(/^ */, " "); gsub(/<!\[CDATA\[|\]\]>/, ""); text = text $0 }
        END { flush("<") }'
}

# The beginning of a long entry.
shorten() {
    [ "$DEMO_WHOLE" = no ] || exec cat
    awk -v most="$LONGEST_ENTRY" 'length > most { $0 = substr($0, 1, most) "..." } { print }'
}

# The lines of people in the user database.
accounts() { getent passwd | awk -F: '$3 > 1000 && $3 < 65534'; }

# What of the device an operation may change, a fact a line.
state() {
    accounts | sed 's/^/passwd: /'
    boxwelld show | awk '
        /^[a-z]/ { section = $0; next }
        { detail = /^   / && section == "accounts"; gsub(/ +/, " "); sub(/^ /, "") }
        detail { print "account " account ": " $0; next }
        section == "accounts" { account = $2 }
        { print section ": " $0 }'
    [ ! -e "$OWNER_FILE" ] || sed 's/></>\n</g' "$OWNER_FILE" | sed '/^<[a-z]/!d; s/^/owner file: /'
    [ ! -e /opt/skyhold/etc/.sso_upgraded ] || echo 'flag .sso_upgraded'
    sessions
    sed 's/^/event: /' /var/lib/device/events.jsonl 2>/dev/null || true
}

# Each session's mode, attribute, user and name.
sessions() {
    local session
    for session in "$SESSIONS"/*; do
        [ -e "$session" ] || continue
        echo "session $(stat -c %A "$session") $(attribute "$session")$(<"$session") ${session##*/}"
    done
}

attribute() {
    case $(lsattr "$1" 2>/dev/null) in
        ????i*) echo 'immutable ' ;;
        *) echo '' ;;
    esac
}

# changes BEFORE AFTER: the lines that went and came.
changes() {
    [ "$1" != "$2" ] || return 0
    diff <(printf '%s\n' "$1") <(printf '%s\n' "$2") | sed -n 's/^< */- /p; s/^> */+ /p'
}

# "PRIORITY FUNCTION MESSAGE" of each entry of the broker's.
read_journal() {
    journalctl --sync
    journalctl --directory "$DEVICE_JOURNAL" --quiet --no-pager --all CATEGORY=shbroker \
        --output verbose --output-fields PRIORITY,CODE_FUNC,MESSAGE | awk '
        function flush() { if (message != "") print priority, function_name, message; message = "" }
        /^[^ ]/           { flush() }
        /^    PRIORITY=/  { priority = substr($0, 14) }
        /^    CODE_FUNC=/ { function_name = substr($0, 15) }
        /^    MESSAGE=/   { message = substr($0, 13) }
        END { flush() }'
}

# The line by which the demo tells and its caller's exit status learns how it went.
the_end() {
    if [ ${#failures[@]} -ne 0 ]; then
        printf '\ndemo: %d things are not as they should be:\n' ${#failures[@]}
        printf '  %s\n' "${failures[@]}"
        exit 1
    fi
    printf '\ndemo: all went as it should\n'
}

device=$(state)
