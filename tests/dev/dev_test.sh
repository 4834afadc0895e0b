#!/usr/bin/env bash
# dev_test.sh REPOSITORY: what ./dev makes of its arguments, with stand-ins for the tools that it calls.
set -u
repository=$1
failures=0

check() { # WHAT EXPECTED ACTUAL
    [ "$2" != "$3" ] || return 0
    failures=$((failures + 1))
    printf '%s: expected\n%s\ngot\n%s\n' "$1" "$2" "$3"
}

work=$(mktemp -d /tmp/dev.XXXXXX)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit
mkdir tools stand-ins
cp "$repository"/{dev,CMakePresets.json} .
cp "$repository"/tools/{lint.sh,debian-packages.txt} tools

stand_in() { # NAME SHELL-TEXT
    printf '#!/bin/bash\n%s\n' "$2" >"stand-ins/$1"
    chmod +x "stand-ins/$1"
}
cmake=$(command -v cmake)
stand_in cmake "case \$1 in --list-presets) exec $cmake -S $repository --list-presets ;; esac; echo \"cmake \$*\""
stand_in xargs 'cat >/dev/null; echo "xargs $*"'
stand_in git 'echo liblst/a.cpp'
stand_in pkg-config 'true'
stand_in nproc 'echo 77'
stand_in dpkg-query 'printf installed'
PATH=$work/stand-ins:$PATH

# The status and what was said.
dev() {
    local text
    text=$(./dev "$@" 2>&1)
    echo "$? $text"
}
builds() {
    mkdir -p build/{armhf,armhf-sysroot,bench/out,debug,release}
    touch build/libsyscmd.so build/armhf/libsyscmd.so
}
left() { find build -mindepth 1 -maxdepth 1 -printf '%f\n' 2>&1 | sort | paste -sd ' '; }

for command in setup size lint help; do
    check "$command" "1 dev: $command takes no arguments: x --y" "$(dev $command x --y)"
done

check abi '1 dev: abi takes --update alone: --update x' "$(dev abi --update x)"
check desk '1 dev: desk takes one name: x y' "$(dev desk --way proot x y)"

builds
check 'an unknown build' "1 dev: no preset armhf-sysroot; cmake --list-presets tells what there is" \
    "$(dev clean armhf-sysroot)"
check 'no name of a build' "1 dev: no preset ; cmake --list-presets tells what there is" "$(dev clean '')"
check 'two builds' '1 dev: clean takes one preset: armhf debug' "$(dev clean armhf debug)"
check 'nothing is cleaned' 'armhf armhf-sysroot bench debug libsyscmd.so release' "$(left)"
check 'clean armhf' '0 ' "$(dev clean armhf)"
check 'one build is cleaned' 'armhf-sysroot bench debug libsyscmd.so release' "$(left)"
check 'clean release' '0 ' "$(dev clean release)"
check 'its programs are cleaned too' 'armhf-sysroot bench debug' "$(left)"
check 'clean release, again' '0 ' "$(dev clean release)"
check 'clean' '0 ' "$(dev clean)"
check 'all is cleaned' "find: ‘build’: No such file or directory" "$(LC_ALL=C.UTF-8 left)"

# Each tool that takes a number of jobs, and the number.
job_numbers() { grep -oE '^[a-z]+ |(-P|--parallel) [0-9]+' | paste -sd ' ' | grep -oE '[a-z]+  (-P|--parallel) [0-9]+' | sort; }
check 'lint with JOBS' "cmake  --parallel 3
cmake  --parallel 3
xargs  -P 3
xargs  -P 3" "$(JOBS=3 ./dev lint 2>&1 | job_numbers)"
check 'lint without' "cmake  --parallel 77
cmake  --parallel 77
xargs  -P 77
xargs  -P 77" "$(env -u JOBS ./dev lint 2>&1 | job_numbers)"

# A vendor configures by a preset, with a compiler that may warn of something else.
check 'presets that make warnings errors' '' "$(grep -e Werror -e WERROR CMakePresets.json)"
exit $((failures > 0))
