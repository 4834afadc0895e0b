#!/usr/bin/env bash
# Which Debian packages a command needs, and their installation. Sourced by ./dev, which has quietly().

# groups_of_build PRESET: a word a group; armhf has the tests, since its own are built with it.
groups_of_build() {
    case $1 in
        release | strict) echo plug-in desk ;;
        bench | debug | tsan) echo plug-in desk tests ;;
        coverage) echo plug-in desk tests coverage ;;
        clang | fuzz) echo plug-in desk tests clang ;;
        armhf*) echo plug-in desk tests armhf ;;
        *) die "no preset $1; cmake --list-presets tells what there is" ;;
    esac
}

# packages_of all|GROUP...: a package a line.
packages_of() {
    awk -v asked=" $* " '
        /^\[/ { group = substr($1, 2, length($1) - 2); known = known " " group " "; next }
        { sub(/#.*/, "") }
        NF && (asked == " all " || index(asked, " " group " ")) { print $1 }
        END {
            count = split(asked, groups, " ")
            for (i = 1; i <= count; i++)
                if (groups[i] != "all" && !index(known, " " groups[i] " ")) {
                    print "no group " groups[i] " in tools/debian-packages.txt" >"/dev/stderr"
                    exit 1
                }
        }' tools/debian-packages.txt
}

is_installed() { [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

# install_packages SUDO PACKAGE...
install_packages() {
    local sudo=$1
    shift
    # shellcheck disable=SC2086 # empty, or one word
    $sudo apt-get -qq update &&
        $sudo env DEBIAN_FRONTEND=noninteractive apt-get -qq install -y --no-install-recommends "$@"
}

# need all|GROUP...: installs what is missing of them, as root or with sudo.
need() {
    local names name missing=() sudo=
    names=$(packages_of "$@") || exit
    for name in $names; do
        is_installed "$name" || missing+=("$name")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || die "these packages are missing; install them as root: ${missing[*]}"
        sudo=sudo
        sudo -v # asks for a password, if it must, while somebody sees it
    fi
    quietly install "installing ${#missing[@]} packages and what they need" install_packages "$sudo" "${missing[@]}"
}
