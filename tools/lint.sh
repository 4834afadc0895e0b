#!/usr/bin/env bash
# Every check that needs no device; exits non-zero when one of them finds something.
# shellcheck disable=SC2317 # the checks are called by name
set -uo pipefail
cd "$(dirname "$(readlink -f "$0")")/.." || exit

JOBS=${JOBS:-$(nproc)}

failed=0
check() {
    local title=$1
    shift
    printf 'lint: %s\n' "$title"
    "$@" || {
        failed=1
        printf 'lint: %s: FAILED\n' "$title"
    }
}

sources() { git ls-files --cached --others --exclude-standard -- '*.h' '*.cpp' '*.c'; }
scripts() {
    git ls-files --cached --others --exclude-standard | while read -r file; do
        if [ -f "$file" ] && head -n 1 "$file" 2>/dev/null | grep -qaE '^#!.*\b(ba)?sh\b'; then
            echo "$file"
        fi
    done
}

# Completions have no first line that names a shell.
check_scripts() { { scripts && git ls-files -- '*.bash'; } | xargs shellcheck; }

layout() { sources | xargs clang-format --dry-run --Werror; }

warnings() { cmake --preset "$1" -DSYSCMD_WERROR=ON >/dev/null && cmake --build --preset "$1" --parallel "$JOBS"; }

# What ships and the devkit; the tables of the tests cost it minutes and hold no logic.
tidy() {
    sources | grep -E '^(syscmd|common|liblst|devkit)/.*\.(cpp|c)$' | xargs -P "$JOBS" -n 4 clang-tidy --quiet -p build/clang \
        --warnings-as-errors='*' 2> >(grep -vE 'warnings? (generated|treated)|^Suppressed|^Use -header' >&2)
}

# g++'s analyzer, of the strict build, which holds the other. It loses sight of memory that an array holds: leaks
# are for LeakSanitizer, valgrind and the fault loop to find.
analyzer() {
    local flags
    flags=$(pkg-config --cflags glib-2.0 libsystemd)
    # shellcheck disable=SC2086 # one word a flag
    sources | grep -E '^(syscmd|common|liblst)/.*\.cpp$' | xargs -P "$JOBS" -I{} g++ -std=c++20 -D_GNU_SOURCE -DSYSCMD_STRICT '-DSYSCMD_VERSION=""' -I. \
        $flags -O1 -fanalyzer -Wno-analyzer-malloc-leak -Werror -S -o /dev/null {}
}

# Arrows point one way: syscmd -> common -> liblst -> the C library; nothing that ships needs devkit.
arrows() {
    ! git grep --untracked -nE '#include "(common|syscmd|devkit|tests)/' -- liblst &&
        ! git grep --untracked -nE '#include "(syscmd|devkit|tests)/' -- common &&
        ! git grep --untracked -nE '#include "(devkit|tests)/' -- syscmd
}

check 'layout (clang-format)' layout
check 'shell scripts (shellcheck)' check_scripts
check 'includes point one way' arrows
check 'planted faults apply' tools/mutants --check
check 'warnings of g++' warnings release
check 'warnings of clang' warnings clang
check 'analyzer of g++' analyzer
check 'clang-tidy and the analyzer of clang' tidy
exit $failed
