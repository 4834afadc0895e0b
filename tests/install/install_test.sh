#!/usr/bin/env bash
# install_test.sh SOURCES BUILD OUT C_FLAGS CXX_FLAGS: what is installed serves those who build on it, with
# nothing else of the sources in sight.
set -euo pipefail
sources=$1 build=$2 out=$3 c_flags=$4 cxx_flags=$5
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
prefix=$folder/usr failures=0

fail() {
    printf 'install: %s\n' "$*"
    failures=$((failures + 1))
}
# expect TITLE EXPECTED COMMAND...: what it prints, on both streams
expect() {
    local title=$1 expected=$2 actual
    shift 2
    actual=$("$@" 2>&1) || true
    [ "$actual" = "$expected" ] || fail "$title: '$actual', not '$expected'"
}

cmake --install "$build" --prefix "$prefix" --component dev >/dev/null
expect 'the component dev has no plug-in' '' find "$prefix" -name libsyscmd.so
cmake --install "$build" --prefix "$prefix" --component plugin >/dev/null
plugin=$(find "$prefix" -name libsyscmd.so)
headers=$prefix/include/syscmd
pkgconfig=$(dirname "$(find "$prefix" -name liblst.pc)")

# ---- paths, version -----------------------------------------------------------------------------
expect 'paths of the machine that built it' '' grep -rlIF -e "$sources" -e "$build" "$prefix"
expect 'library paths' '' bash -c "readelf -d '$plugin' | grep -E 'RPATH|RUNPATH'"
version=$(PKG_CONFIG_PATH=$pkgconfig pkg-config --modversion syscmd)
expect 'the version in the plug-in' "syscmd $version" bash -c "strings -a '$plugin' | grep '^syscmd [0-9]' | sort -u"
expect 'what is missing of liblst.a but the C library' '' \
    bash -c "nm -u '$(dirname "$pkgconfig")/liblst.a' | grep -oE ' U (_Z.*(St|gnu_cxx|n[aw]|d[al]).*|__(cxa|gxx)_.*)'"

# ---- headers: each alone, all together, in both languages, beside a host's macros ----------------
flags=(-Wall -Wextra -Wpedantic -Wshadow -Werror -fsyntax-only -I"$headers")
for_c='liblst/liblst.h liblst/export.h common/hash.h common/mxl_templates.h common/mxl/bwdclient.h'
all=$(cd "$headers" && find . -name '*.h' | sed 's|^\./||' | sort)
hostile='#include <openssl/md4.h>
#include <stdio.h>
#define printf host_printf'
# compile COMPILER LANGUAGE STANDARD BEFORE HEADER...
compile() {
    local compiler=$1 language=$2 standard=$3 before=$4
    shift 4
    { printf '%s\n' "$before" && printf '#include <%s>\n' "$@" && echo 'int main(void) { return 0; }'; } |
        "$compiler" -x "$language" -std="$standard" "${flags[@]}" - ||
        fail "$compiler -std=$standard: $*"
}
for header in $for_c; do compile gcc c c11 '' "$header"; done
# Beside the macro each alone, too: <cstdio>, where a header includes it, takes the macro away.
for header in $all; do
    compile g++ c++ c++11 '' "$header"
    compile g++ c++ c++11 "$hostile" "$header"
done
for before in '' "$hostile"; do
    # shellcheck disable=SC2086 # one word a header
    {
        for compiler in gcc clang; do compile $compiler c c11 "$before" $for_c; done
        for compiler in g++ clang++; do
            for standard in 11 14 17 20; do compile $compiler c++ c++$standard "$before" $all; done
        done
    }
done

# ---- the examples --------------------------------------------------------------------------------
cp -r "$sources/examples" "$folder/examples"
(cmake -S "$folder/examples" -B "$folder/built" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_C_FLAGS="$c_flags -Wall -Wextra -Werror" \
    -DCMAKE_CXX_FLAGS="$cxx_flags -Wall -Wextra -Werror" && cmake --build "$folder/built") >"$folder/log" 2>&1 ||
    { cat "$folder/log" && exit 1; }
expect 'library paths of the example' '' bash -c "readelf -d '$folder/built/libwhoami.so' | grep -E 'RPATH|RUNPATH'"
# shellcheck disable=SC2046,SC2086 # one word a flag
gcc $c_flags "$folder/examples/settings.c" -o "$folder/settings" \
    $(PKG_CONFIG_PATH=$pkgconfig pkg-config --cflags --libs liblst)
printf 'colour = blue\ncolour = red\n# size = 1\n' >"$folder/conf"
for settings in "$folder/settings" "$folder/built/settings"; do
    expect 'a setting' blue "$settings" "$folder/conf" colour
    expect 'a default' 2 "$settings" "$folder/conf" size 2
    expect 'no file' "$folder/none: No such file or directory" "$settings" "$folder/none" size
done
expect 'lock files' '' find "$folder" -name '*.lock'

expect 'the plug-in of the example' 'CODE_SUCCEED, "owner of a device of alice"
CODE_SUCCEED, "member of a device of alice"
CODE_SUCCEED, "stranger of a device of alice"
CODE_FAILED, "unknown"
CODE_ERR_NOTIMPL, "unknown operation"
INFO:whoami.cpp: alice is owner' "$sources/devkit/device/device" --quiet --build "$out" -- bash -c "
    run() { broker run \"\$@\" --log-level 7 --plugin '$folder/built/libwhoami.so' | sed 's/, [0-9.]* ms\$//'; }
    for login in alice bob mallory '<b>'; do run whoami --as \"\$login:secret\"; done
    run other
    journalctl -o cat | grep -m 1 whoami | sed 's/cpp:[0-9]*:/cpp:/'"

# ---- the tutorial shows them as they are -----------------------------------------------------------
for file in settings.c whoami.cpp CMakeLists.txt; do
    expect "docs/plugin-tutorial.md: $file" '' diff "$sources/examples/$file" \
        <(awk -v name="$file" '/^```$/ { on = 0 } on { print } $0 ~ "^```[a-z+]+ " name "$" { on = 1 }' "$sources/docs/plugin-tutorial.md")
done

[ "$failures" -eq 0 ]
