#!/usr/bin/env bash
# What `device --help` and `device COMMAND --help` say. Sourced by the launcher.

forms() {
    cat <<'TXT'
device [OPTION...] [--] [COMMAND [ARG...]]
device start [NAME] [OPTION...]
device stop NAME|--all
device list [--json]
device shell [NAME]
device exec NAME [--] COMMAND [ARG...]
device log [NAME] [--follow]
device snapshot NAME FILE
device remove NAME
TXT
}

options() {
    cat <<'TXT'
  --build DIR     where boxwelld, broker and libsyscmd.so are (default: those installed with it, or build/
                  of the repository)
  --way WAY       root, userns or proot (default: $DEVICE_WAY, or the strongest that works here)
  --seed FILE     the device's accounts (default: seed.json beside this script)
  --no-log-file   without /var/log/shbroker.log
  --quiet         do not tell the way
TXT
}

start_options() {
    cat <<'TXT'
  --state FOLDER  where its state is kept (default: $XDG_STATE_HOME/syscmd-desk/NAME, or the same in
                  ~/.local/state)
  --from FILE     begin with what a snapshot holds, in the place of the state that there is
  --join          be content with a device that runs already
TXT
}

usage() {
    printf 'usage: '
    forms | sed '2,$s/^/       /'
    cat <<'TXT'

Runs COMMAND (default: bash) on a private device: its own accounts, files, tools, journal and
management daemon. Nothing of the host changes and nothing stays behind. The exit status is
COMMAND's, or 125 when the device cannot be made.

TXT
    options
    cat <<'TXT'

A device that is started stays, beside the terminal, until it is stopped, and begins the next time with
what it held. NAME is desk where it is left out. The exit status of shell and exec is the command's, of
what could not be done 125. A COMMAND that has the name of one of these words stands behind --.

TXT
    start_options
}

# usage_of WORD
usage_of() {
    forms | sed -n "s/^device $1 /usage: &/p"
    echo
    [ "$1" != start ] || { start_options && options; }
}
