#!/usr/bin/env bash
# abi_test.sh REPOSITORY LIBRARY: the library is as it is described; described otherwise, that is told.
set -u
abi=$1/tools/abi.sh
described=$1/abi/amd64.xml
library=$2
failures=0
work=$(mktemp -d /tmp/abi.XXXXXX)
trap 'rm -rf "$work"' EXIT

# check STATUS TEXT [SED-SCRIPT]: of the comparison with a description that sed has changed.
check() {
    local said status=0
    sed "${3-}" "$described" >"$work/old.xml"
    [ -z "${3-}" ] || ! cmp -s "$described" "$work/old.xml" || said='nothing to change'
    said=${said-}$("$abi" "$work/old.xml" "$library" 2>&1) || status=$?
    [ "$status" -ne "$1" ] || [[ $said != *"$2"* ]] || return 0
    failures=$((failures + 1))
    printf '%s: expected %s and "%s", got %s and\n%s\n' "${3-}" "$1" "$2" "$status" "$said"
}

check 0 ''
check 3 'only additions; update the file: ./dev abi --update' \
    "/elf-symbol name='lstFree'/d; /function-decl name='lstFree'/,/function-decl>/d"
while IFS=! read -r text script; do
    check 1 "$text" "$script"
done <<'TABLE'
[D] 'function void lstFreed(char**)'!s/'lstFree'/'lstFreed'/g
type size changed from 64 to 32!/name='ulockF'/,/return/s/<parameter type-id='95e97e5e'/<parameter type-id='b59d7dce'/
size of symbol changed from 8 to 4!s/\(name='MAX_LOG_LEVEL' size=\)'4'/\1'8'/
type size changed from 1184 to 1216!s/size-in-bits='1216'/size-in-bits='1184'/
method virtual const std::string& ITransaction::getRangeEnd() const', virtual at voffset 30/30!/vtable-offset='30'/,/member-function>/d
changed from 'typedef std::string' to 'const std::string&'!/name='getGuid'/,/return/s/<return .*/<return type-id='4a30a7f0'\/>/
from value '7' to '6'!s/\(name='CODE_NOREPLY' value=\)'6'/\1'7'/
TABLE

objcopy --strip-debug "$library" "$work/stripped.so"
library=$work/stripped.so
check 2 "abi.sh: the debug information of $library tells of 0 of its 67 exports"
exit $((failures > 0))
