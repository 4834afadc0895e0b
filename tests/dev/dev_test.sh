#!/usr/bin/env bash
# dev_test.sh REPOSITORY: what ./dev makes of its arguments, with stand-ins for the tools that it calls.
# shellcheck disable=SC2016 # a stand-in's text is expanded when it runs
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
cp "$repository"/tools/{lint.sh,packages.sh,quietly.sh,debian-packages.txt} tools

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
    echo "$? $text" | sed -E 's/ [0-9]+ (packages|s$)/ N \1/g'
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
check 'bench --device' '1 dev: bench --device takes --save alone: --check' "$(dev bench --device --check)"
check 'bench --plot' '1 dev: bench --plot takes no arguments: x' "$(dev bench --way proot --plot x)"
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

# What each command installs on a machine that has nothing, and where the output of it goes.
stand_in dpkg-query 'exit 1'
stand_in sudo 'exec "$@"'
stand_in apt-get '[[ $* != *install* ]] || echo "$*" >>installed; echo "apt-get output"'
installs() { # COMMAND...: those of the asked packages that are telling
    rm -f installed
    ./dev "$@" >stdout 2>stderr
    grep -oE '\b(cmake|proot|googletest|valgrind|clang|clang-tidy|g\+\+-arm-linux-gnueabihf|gcovr|lintian|mmdebstrap)( |$)' installed |
        tr -d ' ' | LC_ALL=C sort -u | paste -sd ' '
}
check 'the demo installs' 'cmake proot' "$(installs demo)"
check 'and tells' 'dev: installing N packages and what they need ... N s
dev: building release ... N s' "$(sed -E 's/ [0-9]+ (packages|s$)/ N \1/g' stderr | head -n 2)"
check 'and nothing of it on standard output' '' "$(grep -e apt-get -e cmake stdout)"
check 'its log' 'apt-get output' "$(tail -n 1 build/log/install.log)"
check 'a build installs' 'cmake proot' "$(installs build)"
check 'the tests install' 'cmake googletest proot valgrind' "$(installs build debug)"
check 'ARM installs' 'cmake g++-arm-linux-gnueabihf googletest proot valgrind' "$(stand_in armhf-sysroot.sh true; mv stand-ins/armhf-sysroot.sh tools; installs build armhf)"
check 'lint installs' 'clang clang-tidy cmake googletest proot valgrind' "$(installs lint)"
check 'coverage installs' 'cmake gcovr googletest proot valgrind' "$(installs build coverage)"
check 'setup installs' 'clang clang-tidy cmake g++-arm-linux-gnueabihf gcovr googletest lintian mmdebstrap proot valgrind' "$(installs setup)"
check 'an unknown build' '1 dev: no preset fast; cmake --list-presets tells what there is' "$(dev build fast)"

# What a failure quotes, and its status.
stand_in apt-get 'echo first; echo "E: Unable to locate package proot"; echo last; exit 100'
check 'nothing to install from' '100 dev: installing N packages and what they need ... failed
    E: Unable to locate package proot
    last
dev: installing N packages and what they need failed; all of its output is in build/log/install.log' "$(dev demo)"
stand_in dpkg-query 'printf installed'
stand_in cmake '[[ $1 != --build ]] || { seq 100; exit 3; }'
check 'a build that does not tell why' "3 dev: building release ... failed
$(seq -f '    %g' 71 100)
dev: building release failed; all of its output is in build/log/build-release.log" "$(dev build)"
stand_in cmake '[[ $1 != --build ]] || { echo "[1/9] one"; echo "FAILED: b.o"; seq 100; exit 1; }'
check 'a build that tells' "1 dev: building release ... failed
    FAILED: b.o
$(seq -f '    %g' 29)
dev: building release failed; all of its output is in build/log/build-release.log" "$(dev build)"

# A run of the benchmarks that is to be the committed one: its table takes the last one's place.
stand_in cmake 'true'
mkdir -p devkit/device docs
stand_in ../devkit/device/device 'printf "%s\n" "$*" "case  ratio  " "sort  1.2" "3 of 4 goals met" "saved"'
page() { printf '%s\n' '```' typed '```' '## The last run' 'Where:' '```' "$@" '```' text '## Missed' '```' kept '```'; }
page old table >docs/performance.md
check 'a run of the benchmarks' 'case  ratio  ' "$(./dev bench sort 2>/dev/null | sed -n 2p)"
check 'is not saved' "$(page old table)" "$(cat docs/performance.md)"
check 'one that is to be saved' '--quiet --build build/bench/out -- build/bench/out/bench --committed docs/performance/ratios.tsv --save' \
    "$(./dev bench --save 2>/dev/null | sed -n 1p)"
check 'is' "$(page 'case  ratio' 'sort  1.2' '3 of 4 goals met')" "$(cat docs/performance.md)"

# A vendor configures by a preset, with a compiler that may warn of something else.
check 'presets that make warnings errors' '' "$(grep -e Werror -e WERROR CMakePresets.json)"
exit $((failures > 0))
