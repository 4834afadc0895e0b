#!/usr/bin/env bash
# Which lines of what ships the tests have run; fails when one is neither run nor marked, with a reason
# beside it: GCOV_EXCL_LINE.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."

BUILD=${1:?usage: coverage.sh BUILD}
options=(--root . --object-directory "$BUILD" --filter syscmd/ --filter common/ --filter liblst/)
# Branches that the compiler made, for exceptions and unreachable code, are not the source's.
options+=(--exclude-unreachable-branches --exclude-throw-branches)
gcovr "${options[@]}" --txt --fail-under-line 100 --print-summary "${@:2}"
