#!/usr/bin/env bash
# What the plug-in offers to others, as a file that a tool compares.
set -euo pipefail

usage() {
    cat <<'TXT'
usage: abi.sh [--update] DESCRIPTION LIBRARY

Compares the library's exports and their types, read from its debug information, with the description of
them that is kept in a file, and prints abidiff's report of what has changed. Exit status: 0 nothing, 1 a
change of what is described, 3 additions, by which the description is out of date, 2 a failure. With
--update it writes the description.
TXT
}

die() {
    printf 'abi.sh: %s\n' "$*" >&2
    exit 2
}

# Of the C++ library's types and of FILE the names will do: which of their members a source file happens to use
# would be in the description. Only under the label that libabigail gives to its own list of private types are
# these kept by name; otherwise they are left out, and with them what a virtual function returns.
private_types() {
    local library label
    library=$(ldd "$(command -v abidw)" | awk '/libabigail/ { print $3 }')
    label=$(LC_ALL=C grep -aom1 'Artificial private types [a-z ]*' "$library") || die "no label in $library"
    printf '[suppress_type]\n  label = %s\n  name_regexp = ^(std::|__gnu_cxx::|_IO_FILE$)\n  drop = yes\n' "$label"
}

# describe LIBRARY: without what another folder or a moved line would change. Where the linker optimises, as for the
# device, libabigail finds a variable's type but not that it is the symbol's.
describe() {
    abidw --suppressions "$work/private" --exported-interfaces-only --drop-undefined-syms --no-elf-needed \
        --no-corpus-path --no-comp-dir-path --no-show-locs --no-parameter-names --no-write-default-sizes \
        --type-id-style hash "$1" |
        sed "s|path='[./]*|path='|
            s|^\(    <var-decl name='\([^']*\)' type-id='[^']*'\) \(visibility='default'\)/>|\1 mangled-name='\2' \3 elf-symbol-id='\2'/>|"
}

# An export that has a symbol alone, as without debug information, would compare equal with any other of its name.
check_whole() {
    local named described
    named=$(grep -c '<elf-symbol ' "$1") || die "$library exports nothing"
    described=$(grep -cE '<(function|var)-decl .*elf-symbol-id=' "$1") || true
    [ "$named" -eq "$described" ] ||
        die "the debug information of $library tells of $described of its $named exports"
}

# compare OPTION...: the report in $work/report; false when there is a difference.
compare() {
    local status=0
    abidiff "$@" "$description" "$work/now" >"$work/report" || status=$?
    [ $((status & 3)) -eq 0 ] || die "abidiff has failed: $(cat "$work/report")"
    return "$status"
}

report() {
    cat "$work/report"
    printf 'abi.sh: %s: %s\n' "$description" "$1"
}

update=no
if [ "${1-}" = --update ]; then
    update=yes
    shift
fi
if [ $# -ne 2 ]; then
    usage >&2
    exit 2
fi
description=$1
library=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
private_types >"$work/private"
describe "$library" >"$work/now"
check_whole "$work/now"
if [ "$update" = yes ]; then
    cp "$work/now" "$description"
elif ! compare --no-added-syms || ! compare --no-added-syms --harmless; then
    report 'INCOMPATIBLE change: what was built against the plug-in before may fail; undo it, or change the contract'
    exit 1
elif ! compare; then
    report 'compatible: only additions; update the file: ./dev abi --update'
    exit 3
fi
